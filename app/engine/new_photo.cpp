#include "engine/new_photo.h"

#include "base/error.h"
#include "engine/type_codes.h"

#include <QFileInfo>
#include <QImageReader>
#include <QStringList>

namespace {

bool isVideo(const QFileInfo &file)
{
    static const QStringList suffixes = {QStringLiteral("mov"), QStringLiteral("mp4"),
                                         QStringLiteral("m4v"), QStringLiteral("avi"),
                                         QStringLiteral("3gp")};
    return suffixes.contains(file.suffix().toLower());
}

} // namespace

photoItem newPhoto(const QString &file)
{
    const QFileInfo info(file);
    if (!info.exists())
        throw Error(file + QStringLiteral(": no such file"));
    if (!info.isFile())
        throw Error(file + QStringLiteral(": not a regular file"));
    photoItem photo;
    photo.name = info.fileName();
    photo.path = info.absoluteFilePath();
    photo.fileSize = static_cast<quint64>(info.size());
    photo.modifyDate = info.lastModified();
    photo.createDate = info.birthTime().isValid() ? info.birthTime() : info.lastModified();
    photo.type = isVideo(info) ? videoType : photoType;
    const QSize size = QImageReader(info.absoluteFilePath()).size();
    if (size.isValid()) { // which it is of the pictures that Qt reads
        photo.width = size.width();
        photo.height = size.height();
    }
    return photo;
}
