#include "engine/stored_batch.h"

#include <utility>

StoredBatch::StoredBatch(std::vector<WrittenFile> files)
    : m_files(std::move(files)), m_done(std::async(std::launch::async, [this] { storeAll(); }))
{
}

StoredBatch::~StoredBatch()
{
    end();
}

bool StoredBatch::waitFor(std::chrono::milliseconds time) const
{
    return m_done.wait_for(time) == std::future_status::ready;
}

void StoredBatch::storeAll()
{
    for (std::size_t i = 0; i < m_files.size() && !m_isEnding; ++i)
        m_files[i].copy.file->waitUntilWritten();
    try {
        for (; m_stored < m_files.size() && !m_isEnding; ++m_stored)
            m_files[m_stored].copy.file->store();
    } catch (...) {
        m_failure = std::current_exception();
    }
}

std::exception_ptr StoredBatch::finish()
{
    m_done.wait();
    m_files.resize(m_stored);
    return m_failure;
}
