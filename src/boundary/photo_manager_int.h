#ifndef PHOTOLIB_BOUNDARY_PHOTO_MANAGER_INT_H
#define PHOTOLIB_BOUNDARY_PHOTO_MANAGER_INT_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

class albumItem;
class photoItem;

/// The photo library of one connected device.
///
/// `getPhotolib` makes the object. The host calls `parseLib` once, on any thread, and
/// then queries and edits. Hosts bind to the order of the virtual operations, so it
/// never changes.
///
/// Keys are unsigned 64-bit numbers that the library gives out. Records that a caller
/// passes in stay the caller's. No operation throws.
///
/// Threads: `cancleParse` may be called while another thread parses; nothing else may,
/// and one library is parsed at a time in a process, for parses share the cancel flag and
/// the temporary folder. For iOS devices `getPhoto`, `getAlbum` and the album edits may
/// run on several threads at a time. The list and count queries and the thumbnail requests
/// take no lock and must not run beside an edit, which may free records; the thumbnail
/// requests of one object belong on one thread at a time. For classic iPods all calls do.
class photo_manager_int
{
public:
    /// Reads the device's photo library into memory. Returns true on success. A failure
    /// is logged, but for an object made without a device. After a failure the photos of
    /// an earlier parse are gone; a device that became blocked during the parse leaves
    /// the photos just read and no albums.
    virtual bool parseLib() = 0;

    /// Asks a running `parseLib` to stop, and returns once it has ended; at once when
    /// none runs. Does nothing for classic iPods. The copying of an iOS database is
    /// stopped by the free function `cancleParse` alone; call that one first.
    virtual void cancleParse() = 0;

    /// The identifier of the device's photo library; empty when nothing is parsed, and
    /// for classic iPods.
    virtual QString getUUID() = 0;

    /// The number of photos and videos; 0 before a successful parse.
    virtual int photoCnt() = 0;

    /// The keys of all photos and videos; empty before a successful parse.
    virtual QList<quint64> photoIDs() = 0;

    /// Fills `*item` for the photo or video `id`. Returns false for an unknown key or a
    /// null `item`, and leaves `*item` alone. Returns false also when an iOS device's file
    /// is gone: then `thumbPath`, `fileSize`, the dates, `avalancheUUID` and `sortToken`
    /// are as they were and the other fields are filled. For classic iPods `name`, `uuid`,
    /// `fileSize` and the fields behind `modifyDate` are never written.
    virtual bool getPhoto(const quint64 &id, photoItem *item) = 0;

    /// Puts the thumbnail of `id` into `data`: for an iOS device the bytes of a JPEG file,
    /// which replace what `data` held, or else those of a BMP file with 24 bits a pixel,
    /// which are appended to it; for a classic iPod what the host's `unpackiThmb` makes of
    /// its smallest variant. Returns 0 when done or when there is nothing to do, as for an
    /// unknown key, and always for a classic iPod, or -1 after a log line and, without one,
    /// when memory runs out; `data` is untouched unless there is an image. An empty JPEG
    /// file empties `data`, with the result 0. The first request that needs it opens an iOS
    /// device's packed thumbnail file, which is never closed.
    virtual int getPhotoThumbnail(const quint64 &id, QByteArray &data) = 0;

    /// Puts the stored image of `id` into `data` for a classic iPod: its largest
    /// variant. Leaves `data` untouched for an iOS device, whose host reads the file
    /// at `photoItem::path` itself. Always returns 0.
    virtual int getSourcePhoto(const quint64 &id, QByteArray &data) = 0;

    /// The number of albums shown to the host; 0 before a successful parse.
    virtual int albumCnt() = 0;

    /// The keys of those albums in display order.
    virtual QList<quint64> albumIDs() = 0;

    /// Fills `*item` for the album `id`. The photos of an iOS device's own album are
    /// appended to `item->photoIDs`, those of a synthetic one (Camera Roll, Video, Panorama,
    /// Photo Library) replace what it held. Photos that have left the library are dropped
    /// from the device's album for good. Returns false after a log line for an album that is
    /// not listed and for a null `item`, with `*item` untouched, and for an album of a kind
    /// that is not shown, with `id`, `uuid` and, where it has a title, `name` filled. When
    /// memory runs out, false without a log line, and some fields may be filled.
    virtual bool getAlbum(const quint64 &id, albumItem *item) = 0;

    // The five edits below change only the library in memory, never the device. They return
    // 0 and change nothing for classic iPods, which are read-only. Before a successful parse
    // each returns -1. When memory runs out they return -1, and what was done stays done.

    /// Adds `*photo` to the album `albumId`. A photo with the id 0 is new: it joins the
    /// library, and `photo->id` and `photo->uuid` are set. A photo that joins a listed album
    /// is appended to that album, unless it is a synthetic one, and to the Photo Library,
    /// both also when it is in them already; an unlisted album changes nothing more. Returns
    /// 0, or -1 after a log line without a library or for a null `photo`.
    virtual int addPhoto2Album(photoItem *photo, const quint64 &albumId) = 0;

    /// The same for the album `album->id`, and appends the photo's key to
    /// `album->photoIDs`. Returns 0 or -1; -1 without a log line for a null `album` and for
    /// the id 0.
    virtual int addPhoto2Album(photoItem *photo, albumItem *album) = 0;

    /// Creates an album with `album->name` and `album->photoIDs`, at the end of the list,
    /// and sets `album->id`, `album->uuid` (16 bytes) and `album->type`. Keys of no photo
    /// are dropped when the album is next fetched. Returns the low 32 bits of the new key,
    /// or -1 after a log line without a library or for a null `album`.
    virtual int addAlbum(albumItem *album) = 0;

    /// Takes the album `id` out of the list shown to the host; its key is not given out
    /// again. Returns 0, also when it was not listed, or -1 without a library and, after a
    /// log line, for the Photo Library.
    virtual int rmAlbum(const quint64 &id) = 0;

    /// Renames the album `album->id` to `album->name` and takes out the photos that
    /// `album->photoIDs` lacks; photos that only `album->photoIDs` has are not added. For
    /// the Photo Library the photos leave the library itself, and the name is ignored. The
    /// other synthetic albums and unlisted ones stay as they are. Returns 0, or -1 after a
    /// log line without a library or for a null `album`.
    virtual int updateAlbum(albumItem *album) = 0;

    // Last, so that the operations above keep slots 1 to 16.
    virtual ~photo_manager_int() {}
};

#endif // PHOTOLIB_BOUNDARY_PHOTO_MANAGER_INT_H
