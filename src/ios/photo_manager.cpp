#include "ios/photo_manager.h"

#include "host/device_files.h"
#include "ios/synthetic_albums.h"

QMap<int, photo_manager::AlbumKindProp> photo_manager::m_mapAlbumKind2Type;
QByteArray photo_manager::m_photoLibUUID;

namespace {

void freeModel(CameraDB *model)
{
    qDeleteAll(model->albums);
    // Videos and panoramas are the same records once more.
    qDeleteAll(model->assets);
    delete model;
}

} // namespace

photo_manager::photo_manager(IIPod *iPod)
    : m_pIPod(iPod), m_pVDev(nullptr), m_pThmbFile(nullptr), m_thmbType(), m_pCameraDB(nullptr),
      m_mutex(QMutex::NonRecursive), m_recMutex(QMutex::Recursive), m_semParse(1), m_bCancel(false)
{
    if (m_mapAlbumKind2Type.isEmpty())
        fillStatics();
    // Setting the time zone keeps the reading of the clock, nothing is converted; and no text is
    // parsed, for Qt's locale does not survive memory running out at its first use.
    m_refDate = QDateTime(QDate(2001, 1, 1), QTime(0, 0));
    m_refDate.setTimeSpec(Qt::UTC);
}

photo_manager::~photo_manager()
{
    if (m_pCameraDB)
        freeModel(m_pCameraDB);
    if (m_pVDev) {
        vDevClose(m_pVDev);
        m_pVDev = nullptr;
    }
}

void photo_manager::fillStatics()
{
    const double version = 8.0;
    const AlbumKindProp cameraRoll = {1, QString::fromLatin1("Camera Roll"), version};
    const AlbumKindProp onDevice = {4, QString::fromLatin1("Album in Device"), version};
    const AlbumKindProp custom = {6, QString::fromLatin1("Cus Album"), version};
    QMap<int, AlbumKindProp> kinds;
    kinds.insert(cameraRollKind, cameraRoll);
    kinds.insert(userAlbumKind, onDevice);
    kinds.insert(customAlbumKind, custom);

    // Hosts know the Photo Library by these very bytes.
    QByteArray uuid(15, '\0');
    uuid.append('\x64');

    // Both or, when memory runs out above, neither: a filled table is never filled again.
    m_photoLibUUID = uuid;
    m_mapAlbumKind2Type = kinds;
}

// A cancel comes from another thread: the plain flag is written whole, and no other
// memory is ordered by it.
void photo_manager::setCancel(bool cancel)
{
#if defined(__GNUC__)
    __atomic_store_n(&m_bCancel, cancel, __ATOMIC_RELAXED);
#else
    m_bCancel = cancel;
#endif
}

void photo_manager::cancleParse()
{
    setCancel(true);
    m_semParse.acquire(1);
    m_semParse.release(1);
}
