#include "devices/encoded_names.h"

#include <algorithm>

namespace {

// The other name under which to look after `error`; empty when there is none.
QByteArray otherName(const QByteArray &path, const FileError &error)
{
    return error.kind == FileError::NotFound ? undoneEncoding(path) : QByteArray();
}

} // namespace

QByteArray undoneEncoding(const QByteArray &name)
{
    const bool isAscii = std::all_of(name.begin(), name.end(),
                                     [](char byte) { return static_cast<uchar>(byte) < 0x80; });
    if (isAscii)
        return QByteArray();
    const QString text = QString::fromUtf8(name);
    const bool isLatin1 = std::all_of(text.begin(), text.end(),
                                      [](QChar letter) { return letter.unicode() <= 0xff; });
    if (!isLatin1 || text.toUtf8() != name)
        return QByteArray();
    return text.toLatin1();
}

std::unique_ptr<DeviceFile> openDeviceFile(DeviceFileSystem &files, const QByteArray &path,
                                           FileError *error)
{
    std::unique_ptr<DeviceFile> file = files.open(path, error);
    if (file)
        return file;
    const QByteArray other = otherName(path, *error);
    FileError otherError;
    if (!other.isEmpty())
        file = files.open(other, &otherError);
    if (!file && !otherError.isMissing() && otherError.kind != FileError::None)
        *error = otherError;
    return file;
}

bool deviceFileInfo(DeviceFileSystem &files, const QByteArray &path, FileInfo *info,
                    FileError *error)
{
    if (files.info(path, info, error))
        return true;
    const QByteArray other = otherName(path, *error);
    FileError otherError;
    if (!other.isEmpty() && files.info(other, info, &otherError))
        return true;
    if (!otherError.isMissing() && otherError.kind != FileError::None)
        *error = otherError;
    return false;
}
