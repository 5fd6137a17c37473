#include "host/host_log.h"
#include "ios/photo_manager.h"

int photo_manager::albumCnt()
{
    return m_listAlbumIDs.size();
}

QList<quint64> photo_manager::albumIDs()
{
    return m_listAlbumIDs;
}

bool photo_manager::getAlbum(const quint64 &, albumItem *)
{
    Log("PHOTOLIB", 2, "Can not get album");
    return false;
}
