#include "ios/thumbnail_trailer.h"

#include <QtEndian>

namespace {

// Seven numbers: the first four are a uuid's bytes.
const int uuidBytes = 16;
const int widthOffset = 16;
const int heightOffset = 20;

const int uuidLetters = 36;

// The bytes of a uuid in either form; null where it has none of them.
QByteArray bytesOf(const QByteArray &uuid)
{
    if (uuid.size() == uuidBytes)
        return uuid;
    // The hyphens are passed over.
    const QByteArray bytes = uuid.size() == uuidLetters ? QByteArray::fromHex(uuid) : QByteArray();
    return bytes.size() == uuidBytes ? bytes : QByteArray();
}

bool isWithin(qint32 size, qint32 most)
{
    return size > 0 && size <= most;
}

} // namespace

qint32 pictureWidth(const unsigned char *info)
{
    return qFromLittleEndian<qint32>(info + widthOffset);
}

qint32 pictureHeight(const unsigned char *info)
{
    return qFromLittleEndian<qint32>(info + heightOffset);
}

trailer_claim trailerClaim(const unsigned char *info, const ThumbType &type, const QByteArray &uuid)
{
    // Files grow by records that are all zero.
    const QByteArray nobody(uuidBytes, '\0');
    const QByteArray named(reinterpret_cast<const char *>(info), uuidBytes);
    const QByteArray own = bytesOf(uuid);
    if (named != nobody && !own.isNull())
        return named == own ? OwnTrailer : ForeignTrailer;
    return isWithin(pictureWidth(info), type.width) && isWithin(pictureHeight(info), type.height)
               ? UnnamedTrailer
               : ForeignTrailer;
}
