#ifndef PHOTOLIB_CAMERADB_CAMERA_DB_H
#define PHOTOLIB_CAMERADB_CAMERA_DB_H

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QtGlobal>

class IIPod;

/// The in-memory model of an iOS device's Photos.sqlite.
///
/// Records are keyed by the database's primary key, a signed 32-bit number widened by
/// sign extension. Dates are whole seconds since 2001-01-01 00:00:00 UTC. Texts were read
/// as Latin-1, but as UTF-8 an album's title and, from the table ZASSET, an asset's
/// directory and file name. Uuids are the stored bytes, unchanged.
///
/// The maps point to records and own none: whoever owns the model deletes the albums
/// through `albums` and the assets through `assets` (`videos` and `panoramas` point to
/// the same records), and then the model. The structures are plain data without
/// locks.

struct _Camera_DB;

/// One photo or video.
typedef struct _Camera_Data {
    struct _Camera_DB *db; ///< the model that holds it
    quint64 pk;            ///< key
    qint32 kind;           ///< 0 photo, 1 video; the host's type code for photos added in memory
    qint32 kindSubtype;    ///< 1 marks a panorama
    QString name;          ///< display name, a copy of the file name
    QByteArray uuid;
    qint32 createDate; ///< 0 when read from the table ZGENERICASSET
    qint32 width;      ///< pixels
    qint32 height;     ///< pixels
    qint32 reserved1;
    qint32 reserved2;
    qint32 reserved3;
    qint32 thumbnailIndex; ///< slot in the device's thumbnail files; -1 for photos added in memory
    qint32 orientation;    ///< as stored
    QString directory;     ///< folder of the full-size file on the device
    QString fileName;      ///< name of the full-size file
    qint32 duration;       ///< whole seconds, rounded half up
    qint32 modificationDate; ///< made pairwise distinct among photos
    qint64 trashedDate;      ///< not 0 for an asset in the device's trash
    qint64 originalFileSize; ///< bytes; 0 when unknown
    QString avalancheUUID;   ///< burst group; "0" when it belongs to none
    double sortToken;        ///< order within a burst group
} Camera_Data;

/// One album.
typedef struct _Camera_Album {
    quint64 pk;  ///< key
    qint32 kind; ///< 2, 1000, or 1001 to 1599; 1550 for albums made in memory
    qint32 reserved1;
    qint32 reserved2;
    QString title; ///< null when the database has none
    QByteArray uuid;
    qint32 reserved3;
    qint32 trashedState;      ///< not 0 for an album in the trash
    QList<quint64> assetKeys; ///< members in the order of the join table, duplicates kept
} Camera_Album;

/// The whole model.
typedef struct _Camera_DB {
    QMap<quint64, Camera_Album *> albums;
    QMap<quint64, Camera_Data *> assets;    ///< every photo and video
    QMap<quint64, Camera_Data *> videos;    ///< the videos of `assets`
    QMap<quint64, Camera_Data *> panoramas; ///< the photos of `assets` whose `kindSubtype` is 1
    IIPod *device;                          ///< not owned
    QByteArray uuid;                        ///< identifier of the library; empty until read
    qint32 maxAssetPk;                      ///< highest asset key met or given out
    qint32 maxAlbumPk;                      ///< highest album key met or given out
    bool hasKindSubtype;                    ///< the database knows the column ZKINDSUBTYPE
    bool hasAssetTable;                     ///< the assets come from the table ZASSET
} CameraDB;

#endif // PHOTOLIB_CAMERADB_CAMERA_DB_H
