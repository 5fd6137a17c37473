#ifndef PHOTOLIB_BOUNDARY_PHOTO_RECORDS_H
#define PHOTOLIB_BOUNDARY_PHOTO_RECORDS_H

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QtGlobal>

/// One photo or video as the host sees it: a value, filled by the plug-in in
/// `photo_manager_int::getPhoto` and by the host for `addPhoto2Album`. Copies share
/// their texts and bytes until one of them is changed.
class photoItem
{
public:
    quint64 id = 0;         ///< the key that every photo operation takes
    QByteArray uuid;        ///< identifier of the asset, as the device has it: the 36 letters of a
                            ///< uuid, or its 16 bytes; 16 bytes for a photo added in memory
    QString name;           ///< file name
    qint32 type = 3;        ///< 2 for a video, 3 for a photo
    QString path;           ///< source file below the device's media root, no leading "/"; for a
                            ///< photo added in memory a file of the host computer
    QString thumbPath;      ///< for a video, the device path of the still that stands for it
    qint32 orientation = 0; ///< orientation code as the device stores it
    qint32 height = 0;      ///< pixels
    qint32 width = 0;       ///< pixels
    qint32 duration = 0;    ///< whole seconds of a video, 0 for a photo
    quint64 fileSize = 0;   ///< bytes of the source file
    QDateTime createDate;   ///< when the asset was made; 2001-01-01 for assets of a device up to
                            ///< iOS 13 but those added in memory
    QDateTime modifyDate;   ///< when the asset was last modified
    qint64 trashedDate = 0; ///< when it went to the trash, in whole seconds since 2001-01-01 UTC;
                            ///< 0 if it did not
    QString avalancheUUID;  ///< the burst group that the asset belongs to
    double sortToken = 0.0; ///< the device's sort key
};

/// One album as the host sees it: a value, filled by the plug-in in
/// `photo_manager_int::getAlbum` and by the host for the album edits.
class albumItem
{
public:
    quint64 id = 0;          ///< the key that every album operation takes
    QByteArray uuid;         ///< identifier, as that of a photo; null for synthetic albums but the
                             ///< Photo Library
    QString name;            ///< title
    qint32 type = 0;         ///< 1 camera roll, 2 panoramas, 3 videos, 4 on the device, 5 photo
                             ///< library, 6 user album
    QList<quint64> photoIDs; ///< keys of the album's photos, in album order
};

#endif // PHOTOLIB_BOUNDARY_PHOTO_RECORDS_H
