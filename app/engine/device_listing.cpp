#include "engine/device_listing.h"

#include <algorithm>

const DeviceListing::Folder &DeviceListing::folder(const QByteArray &path)
{
    const auto known = m_folders.constFind(path);
    if (known != m_folders.constEnd())
        return *known;
    Folder folder;
    m_files.list(path, &folder.names, &folder.error);
    return *m_folders.insert(path, folder);
}

bool DeviceListing::has(const QByteArray &path, FileError *error)
{
    const int slash = path.lastIndexOf('/');
    const Folder &listed = folder(slash < 0 ? QByteArray() : path.left(slash));
    if (listed.error.kind != FileError::None) {
        *error = listed.error;
        return false;
    }
    if (std::binary_search(listed.names.begin(), listed.names.end(), path.mid(slash + 1)))
        return true;
    *error = {FileError::NotFound, QStringLiteral("no such file")};
    return false;
}
