#ifndef PHOTOLIB_SAMPLE_RAW_FILE_H
#define PHOTOLIB_SAMPLE_RAW_FILE_H

#include <QByteArray>
#include <QImage>

namespace sample {

/// A DNG file of what a sensor without colours saw of `picture`: a TIFF with one strip of bytes.
QByteArray rawFile(const QImage &picture);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_RAW_FILE_H
