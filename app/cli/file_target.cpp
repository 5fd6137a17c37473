#include "cli/file_target.h"

#include "base/atomic_file.h"
#include "base/error.h"
#include "cli/output.h"
#include "engine/library_session.h"

#include <system_error>

namespace {

QByteArray nameOf(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

} // namespace

FileTarget::FileTarget(const LibrarySession &session, const QByteArray &folder)
    : m_ensured(session.folderOutside(folder)), m_folder(openFolder(folder))
{
}

void FileTarget::requireReplaceable(const QByteArray &path) const
{
    if (!isStandardOutput())
        ::requireReplaceable(m_folder.get(), nameOf(path), path);
}

void FileTarget::write(const QByteArray &path, const QByteArray &bytes)
{
    write(path, [&bytes](const ByteSink &sink) { sink(bytes.constData(), bytes.size()); });
}

void FileTarget::write(const QByteArray &path,
                       const std::function<void(const ByteSink &sink)> &write)
{
    if (isStandardOutput()) {
        m_kept.clear();
        write([this](const char *bytes, qint64 count) { m_kept.append(bytes, int(count)); });
        return;
    }
    requireReplaceable(path);
    try {
        replaceFile(m_folder.get(), nameOf(path), write);
    } catch (const std::system_error &error) {
        throw Error(path.toStdString(), error.code().message());
    }
}

void FileTarget::finish(Output &output) const
{
    output.write(m_kept);
}
