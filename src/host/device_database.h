#ifndef PHOTOLIB_HOST_DEVICE_DATABASE_H
#define PHOTOLIB_HOST_DEVICE_DATABASE_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

class IIPod;

/// The device database library: the host's reader of a classic iPod's photo database,
/// and the unpacker of its thumbnail files. The host defines everything here that has
/// no body; the plug-in calls it from the thread that uses the manager. Nothing here
/// may throw.

/// One stored image variant of an item.
struct itdb_photo {
    qint32 offset = 0; ///< first byte of the image in its file
    qint32 size = 0;   ///< bytes of the image
    QString fileName;  ///< colon-separated, below the Photos folder: ":Thumbs:F1019_1.ithmb"

    // The plug-in only passes these on, to `unpackiThmb`.
    qint32 formatId = 0;          ///< names the pixel format
    qint32 width = 0;             ///< pixels, left padding included
    qint32 height = 0;            ///< pixels, top padding included
    qint32 horizontalPadding = 0; ///< pixels
    qint32 verticalPadding = 0;   ///< pixels
};

/// One item of the database.
struct itdb_trk {
    enum { TextCount = 27 };

    quint32 timeStamp = 0;    ///< seconds since 1970-01-01 UTC
    QList<itdb_photo> thumbs; ///< the stored variants, in the database's order
    QString texts[TextCount]; ///< the item's text fields; the plug-in reads none of them
};

/// One album of the database.
struct itdb_pl {
    QString name;
    QList<quint32> photoIDs; ///< member items, in album order
};

/// The photo library inside a parsed photo database, which owns it.
class iphotolib
{
public:
    /// The identifiers of all items, in the database's order.
    virtual QList<quint32> photoIDs() = 0;

    /// The identifiers of all albums, in the database's order.
    virtual QList<quint32> albumIDs() = 0;

    /// Fills `*album` for the album `*id`. Returns 0, or another value and leaves
    /// `*album` alone when there is no such album.
    virtual int getAlbum(const quint32 *id, itdb_pl *album) = 0;

    /// Fills `*item` for the item `*id`. Returns 0, or another value and leaves
    /// `*item` alone when there is no such item.
    virtual int getPhoto(const quint32 *id, itdb_trk *item) = 0;

    // Last, so that the operations above keep the first four slots.
    virtual ~iphotolib() {}
};

/// The photo database of one device, from `getPhotoDBInt`.
class iitdb
{
public:
    /// Reads the database. Returns 0 on success.
    virtual int parse() = 0;

    /// The library of a database that `parse` has read; owned by the database.
    virtual iphotolib *photoLib() = 0;

    // Last, so that the operations above keep the first two slots.
    virtual ~iitdb() {}
};

/// The photo database of `iPod`, for `releaseITunesDBInt`; null when it has none.
iitdb *getPhotoDBInt(IIPod *iPod);

/// Frees a database from `getPhotoDBInt`; `*db` may be null. May set `*db` to null. The
/// last database of a manager is not released: a host that wants it back frees it when it
/// lets the device go.
void releaseITunesDBInt(iitdb **db);

/// Decodes `raw`, the stored bytes of the image that `photo` describes, into `out` as
/// an image file's bytes. On failure `out` is left as it was. Returns 0 on success;
/// the plug-in looks at `out` only.
int unpackiThmb(IIPod *iPod, QByteArray &raw, const itdb_photo &photo, QByteArray &out);

#endif // PHOTOLIB_HOST_DEVICE_DATABASE_H
