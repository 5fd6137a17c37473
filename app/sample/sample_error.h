#ifndef PHOTOLIB_SAMPLE_SAMPLE_ERROR_H
#define PHOTOLIB_SAMPLE_SAMPLE_ERROR_H

#include "sample/sample_options.h"

#include <QString>

#include <new>
#include <stdexcept>

namespace sample {

/// Why a sample cannot be written, as one line for the user. Thrown inside this folder only;
/// the functions that others call turn it into their result, by written().
class SampleError : public std::runtime_error
{
public:
    explicit SampleError(const QString &message) : std::runtime_error(message.toStdString()) {}
};

/// Tells how many assets are written, before the next one. Throws when another thread wants no
/// more.
inline void tellWritten(const SampleWatch &watch, int written)
{
    if (watch.written)
        *watch.written = written;
    if (watch.isCancelled && *watch.isCancelled)
        throw SampleError(QStringLiteral("interrupted"));
}

/// Whether `write` wrote the sample `dir`; if it threw instead, `*error` has the cause.
template <typename Write>
bool written(const QString &dir, QString *error, const Write &write)
{
    try {
        write();
        return true;
    } catch (const SampleError &failure) {
        *error = QString::fromUtf8(failure.what());
    } catch (const std::bad_alloc &) {
        *error = QStringLiteral("cannot write %1: out of memory").arg(dir);
    }
    return false;
}

} // namespace sample

#endif // PHOTOLIB_SAMPLE_SAMPLE_ERROR_H
