#include "ios/thread_buffer.h"

#include <QtGlobal>

#include <memory>
#include <new>
#include <pthread.h>
#include <vector>

// Neither the language's thread-local storage nor Qt's: with either, a loaded library ends
// the process when memory runs out at a thread's first use of it.

namespace {

typedef std::vector<char> buffer;

void freeBuffer(void *stored)
{
    delete static_cast<buffer *>(stored);
}

// Where each thread finds its buffer.
class buffer_key
{
public:
    buffer_key() : m_isValid(pthread_key_create(&m_key, freeBuffer) == 0) {}

    // When the library is unloaded. The buffers of other threads stay behind, since their
    // ends can no longer call into it.
    ~buffer_key()
    {
        if (!m_isValid)
            return;
        freeBuffer(pthread_getspecific(m_key));
        pthread_key_delete(m_key);
        m_isValid = false;
    }

    buffer &ofThread();

private:
    Q_DISABLE_COPY(buffer_key)

    pthread_key_t m_key;
    bool m_isValid;
};

buffer &buffer_key::ofThread()
{
    if (!m_isValid)
        throw std::bad_alloc();
    if (void *const stored = pthread_getspecific(m_key))
        return *static_cast<buffer *>(stored);
    std::unique_ptr<buffer> fresh(new buffer());
    if (pthread_setspecific(m_key, fresh.get()) != 0)
        throw std::bad_alloc();
    return *fresh.release();
}

} // namespace

char *threadBuffer(std::size_t bytes)
{
    static buffer_key key;
    buffer &pixels = key.ofThread();
    if (pixels.size() < bytes)
        pixels.resize(bytes);
    return pixels.data();
}
