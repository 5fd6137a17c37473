#include "cameradb/camera_db_parse.h"
#include "host/device_files.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "host/iipod.h"
#include "ios/library_merge.h"
#include "ios/photo_manager.h"
#include "ios/sync_plist.h"

namespace {

// Holds the binary semaphore that `cancleParse` waits for.
class parse_guard
{
public:
    explicit parse_guard(QSemaphore &semaphore) : m_semaphore(semaphore) { m_semaphore.acquire(1); }
    ~parse_guard() { m_semaphore.release(1); }

private:
    Q_DISABLE_COPY(parse_guard)

    QSemaphore &m_semaphore;
};

} // namespace

bool photo_manager::parseLib()
{
    setCancel(false);
    if (!m_pIPod)
        return false;

    const parse_guard guard(m_semParse);
    // The model of an earlier parse is not freed and its lists are added to, for hosts
    // that parse again while views of the first parse are open.
    m_pCameraDB = cameraDBParse(m_pIPod);
    if (!m_pCameraDB || m_pIPod->isAccessBlocked() || !mergeLibrary()) {
        Log("PHOTOLIB", 2, "Can not parse photo lib");
        return false;
    }
    // A library without its identifier is still a library.
    withoutThrowing(false, [this] {
        readLibraryUuid();
        return true;
    });
    return true;
}

// False when memory runs out.
bool photo_manager::mergeLibrary()
{
    return withoutThrowing(false, [this] {
        buildView();
        return true;
    });
}

void photo_manager::buildView()
{
    const library_merge::view view = {m_mapUsedUUID, m_mapAlbum2Photos, m_listAlbumIDs};
    library_merge merge(*m_pCameraDB, view);
    merge.collectUsedUuids(m_photoLibUUID);
    merge.listSyntheticAlbums();
    merge.mergeAlbums();
    merge.mergeLooseAssets();
}

void photo_manager::readLibraryUuid()
{
    if (!m_pVDev) {
        // The local encoding, unlike the copy's UTF-8: hosts name their devices by it.
        m_pVDev = vDevOpen(VDevDevice, m_pIPod->devicePath().toLocal8Bit().constData());
    }
    if (!m_pVDev)
        return;
    const QByteArray uuid = readSyncPlist(m_pVDev);
    if (!uuid.isNull())
        m_libraryUUID = uuid;
}
