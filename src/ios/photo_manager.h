#ifndef PHOTOLIB_IOS_PHOTO_MANAGER_H
#define PHOTOLIB_IOS_PHOTO_MANAGER_H

#include "boundary/photo_manager_int.h"
#include "cameradb/camera_db.h"
#include "photolib_export.h"

#include <QDateTime>
#include <QMap>
#include <QMutex>
#include <QSemaphore>

class IIPod;
struct VDev;
struct VFile;

/// The layout of one kind of packed thumbnail file (.ithmb).
struct ThumbType {
    qint32 dataSize;  ///< bytes of pixels in one record, without its trailer: two a pixel, or
                      ///< four where they are 57,600
    qint32 rowPixels; ///< pixels from one stored row to the next; may exceed `width`
    qint32 height;    ///< rows of the frame
    qint32 width;     ///< columns of the frame
};

/// One record of a packed thumbnail file, as it was read.
struct PhotoThumb {
    void *data;             ///< `ThumbType::dataSize` bytes of pixels, not aligned; not owned
    unsigned char info[28]; ///< the trailer: seven 32-bit numbers, the lowest byte first
};

/// The photo library of an iOS device: a model of its Photos.sqlite in memory, which
/// the album edits change.
///
/// The object owns the model and the device handle; the device outlives it. Threads as
/// for `photo_manager_int`; constructors must not run concurrently, since the first
/// one fills the static table.
class photo_manager : public photo_manager_int
{
public:
    /// How an album kind of the device's database is shown to the host.
    struct AlbumKindProp {
        qint32 type;    ///< type code for `albumItem::type`
        QString name;   ///< display name of an album without a title
        double version; ///< 8.0 in every row; nothing reads it
    };

    /// Makes an unparsed library of `iPod`, which is not owned. Without one, `parseLib`
    /// returns false.
    PHOTOLIB_EXPORT explicit photo_manager(IIPod *iPod);

    /// Frees the model with its records and closes the device handle. The thumbnail
    /// file stays open: it lives as long as the device.
    PHOTOLIB_EXPORT ~photo_manager();

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
    Q_DISABLE_COPY(photo_manager)

    /// Replaces `out` by the ready JPEG file of `asset`, which must not be null. Returns
    /// false, with `out` untouched, when the device has none that can be read whole.
    bool checkV2Thumbnail(const Camera_Data *asset, QByteArray &out);

    /// Opens the first packed thumbnail file that the device has and fills `*type` with its
    /// layout, of two bytes a pixel whatever the records hold. Returns null, with `*type`
    /// untouched, when it has none. The caller owns the file.
    VFile *decideThmbFile(ThumbType *type);

    /// Writes the pixels of the record `*thumb`, laid out as `*type` says, to `out` as the
    /// rows of a 24-bit BMP image, the bottom one first. What fills a row up to a multiple
    /// of 4 bytes is left as it is. The caller makes sure that the picture which the trailer
    /// describes lies inside the pixels, and that `out` has room for it; nothing is written
    /// when its width or height is 0 or less. Uses no state of the manager: any thread.
    void convertThmb2BMP(PhotoThumb *thumb, ThumbType *type, unsigned char *out);

    /// Makes a uuid that the library does not use yet, 8 zero bytes and 8 random ones, and
    /// counts it as used. Without a parsed library 16 times the letter a, not counted. May
    /// be called on any thread; seeds that thread's `qrand`.
    QByteArray makeNewUID();

    static void fillStatics();
    void setCancel(bool cancel);
    bool mergeLibrary();
    void buildView();
    void readLibraryUuid();
    bool getSyntheticAlbum(quint64 id, albumItem *album);
    bool getDeviceAlbum(quint64 id, Camera_Album *record, albumItem *album);
    bool readThumbnail(const Camera_Data &asset, PhotoThumb *thumb, ThumbType *type);
    bool findOwnRecord(const Camera_Data &asset, PhotoThumb *thumb, ThumbType *type);
    bool appendImage(PhotoThumb *thumb, ThumbType *type, QByteArray &out);
    void addToLibrary(photoItem *photo);
    qint32 nextAlbumKey() const;
    void keepInLibrary(const QList<quint64> &photos);
    void updateDeviceAlbum(const albumItem &album);

    static QMap<int, AlbumKindProp> m_mapAlbumKind2Type; ///< by album kind of the database
    static QByteArray m_photoLibUUID;                    ///< uuid of the Photo Library album

    IIPod *m_pIPod;        ///< not owned
    VDev *m_pVDev;         ///< the device's file system; owned; null until a parse opens it
    VFile *m_pThmbFile;    ///< the thumbnail file in use; never closed
    ThumbType m_thmbType;  ///< its layout; meaningless while there is none. Of four bytes a pixel
                           ///< from the first record on that shows it by its asset's uuid
    CameraDB *m_pCameraDB; ///< owned with its records; null until parsed
    QMap<QByteArray, bool> m_mapUsedUUID;            ///< a set of uuids; the value is always true
    QMap<quint64, QList<quint64>> m_mapAlbum2Photos; ///< members of the synthetic albums
    QList<quint64> m_listAlbumIDs;                   ///< the albums as the host sees them
    QMutex m_mutex;           ///< held while a uuid is made; taken after `m_recMutex`
    QMutex m_recMutex;        ///< recursive; held while records are read or edited
    QByteArray m_libraryUUID; ///< from the sync property list; empty when it has none
    QDateTime m_refDate;      ///< 2001-01-01 00:00:00 UTC
    QSemaphore m_semParse;    ///< binary; held while parsing
    bool m_bCancel;           ///< a cancel came since the last parse began; nothing polls it
};

#endif // PHOTOLIB_IOS_PHOTO_MANAGER_H
