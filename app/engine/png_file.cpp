#include "engine/png_file.h"

#include "base/cancel_token.h"
#include "base/error.h"

#include <QIODevice>
#include <QImage>
#include <QImageWriter>

#include <exception>
#include <new>

namespace {

// Passes on to a sink what is written, until that throws: no exception may pass the writer of the
// image, which is C in part.
class SinkDevice : public QIODevice
{
public:
    SinkDevice(const CancelToken &cancel, const ByteSink &sink) : m_cancel(cancel), m_sink(sink)
    {
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }

    void throwFailure() const
    {
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

protected:
    qint64 readData(char *, qint64) override { return -1; }

    qint64 writeData(const char *bytes, qint64 count) override
    {
        if (m_failure)
            return -1;
        try {
            if (m_cancel.isCancelled())
                throw Error(Error::Cancelled, "interrupted");
            m_sink(bytes, count);
            return count;
        } catch (...) {
            m_failure = std::current_exception();
            return -1;
        }
    }

private:
    const CancelToken &m_cancel;
    const ByteSink &m_sink;
    std::exception_ptr m_failure;
};

} // namespace

void writePng(const QImage &picture, const CancelToken &cancel, const ByteSink &sink)
{
    SinkDevice device(cancel, sink);
    QImageWriter writer(&device, "png");
    const bool isWritten = writer.write(picture);
    device.throwFailure();
    if (!isWritten)
        throw std::bad_alloc(); // nothing else can be wrong with an image
}
