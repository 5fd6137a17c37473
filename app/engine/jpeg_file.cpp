#include "engine/jpeg_file.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/qt_messages.h"
#include "engine/picture_format.h"

#include <QIODevice>
#include <QImage>

#include <exception>
#include <new>

namespace {

// Hands on what Qt writes. No exception may pass the JPEG library, which is C: what the sink throws
// is kept, and a failure ends the writing.
class SinkDevice : public QIODevice
{
public:
    SinkDevice(const CancelToken &cancel, const ByteSink &sink) : m_cancel(cancel), m_sink(sink)
    {
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }

    const std::exception_ptr &failure() const { return m_failure; }

protected:
    qint64 readData(char *, qint64) override { return -1; }

    qint64 writeData(const char *bytes, qint64 count) override
    {
        if (m_failure || m_cancel.isCancelled())
            return -1;
        try {
            m_sink(bytes, count);
        } catch (...) {
            m_failure = std::current_exception();
            return -1;
        }
        return count;
    }

private:
    const CancelToken &m_cancel;
    const ByteSink &m_sink;
    std::exception_ptr m_failure;
};

} // namespace

void writeJpeg(const QImage &picture, const CancelToken &cancel, const ByteSink &sink)
{
    const QtMessages messages; // of a file that is not completed
    SinkDevice device(cancel, sink);
    const bool isComplete = picture.save(&device, jpegFormat().name, jpegQuality);
    if (device.failure())
        std::rethrow_exception(device.failure());
    if (!isComplete && cancel.isCancelled())
        throw Error(Error::Cancelled, "interrupted");
    if (!isComplete)
        throw std::bad_alloc(); // nothing else can be wrong with an image
}
