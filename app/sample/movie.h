#ifndef PHOTOLIB_SAMPLE_MOVIE_H
#define PHOTOLIB_SAMPLE_MOVIE_H

#include <QByteArrayList>
#include <QSize>

namespace sample {

/// Units of a second in which a movie counts time.
constexpr quint32 movieTimeScale = 600;

/// A QuickTime movie with one Motion JPEG track.
struct Movie {
    QByteArrayList frames; ///< JPEG files of one size; at least one
    QSize size;            ///< of the frames
    quint32 ticks = 0;     ///< how long it runs, at least one tick a frame
    qint64 createdAt = 0;  ///< seconds since 2001-01-01 00:00:00 UTC
};

/// The whole movie file.
QByteArray quickTimeFile(const Movie &movie);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_MOVIE_H
