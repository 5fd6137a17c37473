#ifndef PHOTOLIB_SAMPLE_SAMPLE_ERROR_H
#define PHOTOLIB_SAMPLE_SAMPLE_ERROR_H

#include <QString>
#include <stdexcept>

namespace sample {

/// Why a sample cannot be written, as one line for the user. Thrown inside this folder only;
/// writeSample turns it into its result.
class SampleError : public std::runtime_error
{
public:
    explicit SampleError(const QString &message) : std::runtime_error(message.toStdString()) {}
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_SAMPLE_ERROR_H
