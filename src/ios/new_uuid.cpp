// Qt 4 has no other generator than qrand, which Qt 5.15 would have us replace.
#define QT_NO_DEPRECATED_WARNINGS

#include "ios/photo_manager.h"
#include "ios/uuid_text.h"

#include <QMutexLocker>

#include <cstring>

namespace {

const int uuidBytes = 16;
const int uuidTextBytes = 36;

void appendLowByteFirst(QByteArray *bytes, quint32 value)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes->append(static_cast<char>((value >> shift) & 0xff));
}

QByteArray candidate()
{
    const quint32 high = static_cast<quint32>(qrand());
    const quint32 low = static_cast<quint32>(qrand());
    QByteArray uuid(8, '\0');
    appendLowByteFirst(&uuid, low);
    appendLowByteFirst(&uuid, high);
    return uuid;
}

QByteArray textOf(const QByteArray &uuid)
{
    char text[40];
    std::memset(text, 0, sizeof text);
    convterHexFormat(uuid.constData(), text);
    return QByteArray(text, uuidTextBytes);
}

} // namespace

QByteArray photo_manager::makeNewUID()
{
    const QMutexLocker locker(&m_mutex);
    // The generator belongs to the thread, which may never have seeded it. A second uuid in
    // the same second meets the first one's draws again, and passes over them as used.
    qsrand(static_cast<uint>(QDateTime::currentMSecsSinceEpoch() / 1000));
    while (m_pCameraDB) {
        QByteArray uuid = candidate();
        // The device's database holds uuids as bytes or as text.
        if (m_mapUsedUUID.contains(uuid) || m_mapUsedUUID.contains(textOf(uuid)))
            continue;
        m_mapUsedUUID.insert(uuid, true);
        return uuid;
    }
    return QByteArray(uuidBytes, 'a');
}
