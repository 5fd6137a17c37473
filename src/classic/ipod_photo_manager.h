#ifndef PHOTOLIB_CLASSIC_IPOD_PHOTO_MANAGER_H
#define PHOTOLIB_CLASSIC_IPOD_PHOTO_MANAGER_H

#include "boundary/photo_manager_int.h"
#include "photolib_export.h"

class IIPod;
class iitdb;
class iphotolib;
struct itdb_photo;

/// The photo library of a classic iPod: a read-only view of the photo database that the
/// host's device database library reads. Keys are the database's 32-bit identifiers;
/// only the low 32 bits of a key passed in count.
///
/// Without locks: one thread at a time. The last photo database is not released with
/// the object: it stays the host's, which may share it with other readers of the device.
class iPodPhotoManager : public photo_manager_int
{
public:
    /// Makes an unparsed library of `iPod`, which is not owned.
    PHOTOLIB_EXPORT explicit iPodPhotoManager(IIPod *iPod);
    PHOTOLIB_EXPORT ~iPodPhotoManager();

    PHOTOLIB_EXPORT bool parseLib();
    PHOTOLIB_EXPORT void cancleParse();
    PHOTOLIB_EXPORT QString getUUID();
    PHOTOLIB_EXPORT int photoCnt();
    PHOTOLIB_EXPORT QList<quint64> photoIDs();
    PHOTOLIB_EXPORT bool getPhoto(const quint64 &id, photoItem *item);
    PHOTOLIB_EXPORT int getPhotoThumbnail(const quint64 &id, QByteArray &data);
    PHOTOLIB_EXPORT int getSourcePhoto(const quint64 &id, QByteArray &data);
    PHOTOLIB_EXPORT int albumCnt();
    PHOTOLIB_EXPORT QList<quint64> albumIDs();
    PHOTOLIB_EXPORT bool getAlbum(const quint64 &id, albumItem *item);
    PHOTOLIB_EXPORT int addPhoto2Album(photoItem *photo, const quint64 &albumId);
    PHOTOLIB_EXPORT int addPhoto2Album(photoItem *photo, albumItem *album);
    PHOTOLIB_EXPORT int addAlbum(albumItem *album);
    PHOTOLIB_EXPORT int rmAlbum(const quint64 &id);
    PHOTOLIB_EXPORT int updateAlbum(albumItem *album);

private:
    Q_DISABLE_COPY(iPodPhotoManager)

    typedef const itdb_photo *(*variant_choice)(const QList<itdb_photo> &variants);

    int getVariant(const quint64 &id, variant_choice choose, QByteArray &data);

    /// Reads the stored image `entry` from the iPod's disk and has the host decode it
    /// into `out`; `out` is untouched when its file is missing or too short.
    void getThumb(const itdb_photo &entry, QByteArray &out);

    IIPod *m_pIPod;         ///< not owned
    iitdb *m_pPhotoDB;      ///< released by the next parse
    iphotolib *m_pPhotoLib; ///< owned by `m_pPhotoDB`
};

#endif // PHOTOLIB_CLASSIC_IPOD_PHOTO_MANAGER_H
