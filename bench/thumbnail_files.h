#ifndef PHOTOLIB_BENCH_THUMBNAIL_FILES_H
#define PHOTOLIB_BENCH_THUMBNAIL_FILES_H

#include "ios/photo_manager.h"

#include <string>
#include <vector>

/// One kind of packed thumbnail file.
struct ThumbnailFormat {
    const char *file; ///< below the thumbnail folder
    ThumbType type;

    std::size_t recordBytes() const;
    /// Of the BMP image of a picture that fills the frame, without and with headers.
    std::size_t imageBytes() const;
    std::size_t resultBytes() const;
};

/// The eight that devices have.
const std::vector<ThumbnailFormat> &thumbnailFormats();

/// A record with noise for pixels and a picture that fills its frame.
std::vector<unsigned char> makeRecord(const ThumbnailFormat &format, unsigned seed);

/// Writes the thumbnail file of `count` such records into a device's folder `root`.
void writeThumbnails(const std::string &root, const ThumbnailFormat &format, int count);

#endif // PHOTOLIB_BENCH_THUMBNAIL_FILES_H
