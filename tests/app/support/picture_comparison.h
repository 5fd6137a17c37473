#ifndef PHOTOLIB_TESTS_APP_PICTURE_COMPARISON_H
#define PHOTOLIB_TESTS_APP_PICTURE_COMPARISON_H

#include <QImage>

#include <ostream>

/// How far the values of red, green and blue, each from 0 to 255, are off in a picture.
struct PictureLoss {
    double mean; ///< over all pixels, of the channel with the greatest mean
    int most;    ///< of any channel of any pixel
};

inline std::ostream &operator<<(std::ostream &stream, const PictureLoss &loss)
{
    return stream << "a mean loss of " << loss.mean << " and at most " << loss.most;
}

/// Compares two pictures of the same size.
PictureLoss lossBetween(const QImage &expected, const QImage &actual);

/// A picture with a colour of its own in each corner and smooth transitions between them;
/// the four colours go round by `turns` corners, so that pictures differ.
QImage smoothPicture(const QSize &size, int turns = 0);

/// A picture in greys that grow to the right, as in a real one, with noise that shows each row
/// or column in a wrong place. The same for the same size.
QImage noisyPicture(const QSize &size);

#endif // PHOTOLIB_TESTS_APP_PICTURE_COMPARISON_H
