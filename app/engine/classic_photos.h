#ifndef PHOTOLIB_ENGINE_CLASSIC_PHOTOS_H
#define PHOTOLIB_ENGINE_CLASSIC_PHOTOS_H

#include "classic/photo_database.h"
#include "devices/device_file_system.h"
#include "engine/classic_variants.h"

#include <QDateTime>

#include <optional>

class LibrarySession;
class photoItem;

// A photo of a classic iPod: stored in several sizes, each a picture of its own in a file of
// many, and maybe in full resolution as a file of its own. The plug-in tells neither, so what
// the program shows of them comes from the database.

/// What the database tells of the photo `id`; null when it has none, as in an iOS device.
const ClassicPhoto *classicPhoto(const LibrarySession &session, quint64 id);

/// "320 x 240", without padding; empty when it is not known.
QString variantDimensionsText(const StoredPicture &variant);

/// A file that the database names in colon-separated form, as its path below the device's
/// root and safe to show: "Photos/Thumbs/F1019_1.ithmb". Empty for no file.
QString classicFileText(const QString &name);

/// The name of the file of `item`, of an iOS device or a classic iPod, which has names for
/// full-resolution files only: empty without one. As it was written, so not safe to show.
QString fileName(const LibrarySession &session, const photoItem &item);

/// Whether the database names a full-resolution file.
bool hasOriginal(const ClassicPhoto &photo);

/// Looks at the full-resolution file, which the database names. Returns false and fills
/// `*error` when it is no regular file of the device.
bool findOriginal(LibrarySession &session, const ClassicPhoto &photo, QByteArray *path,
                  FileInfo *info, FileError *error);

/// Why the plug-in, which does not say, gives nothing for `variant`: with the file's name.
FileError variantFailure(LibrarySession &session, const StoredPicture &variant);

/// When the photo `item` of a classic iPod was taken, by the iPod's own clock, whose time zone
/// nobody knows: the date and time in UTC are those that the iPod shows. Invalid when the database
/// does not tell.
QDateTime takenDate(const photoItem &item);

/// When this computer's clock shows what the iPod's showed at `taken`, for the times of files: who
/// lists them sees the iPod's date and time. In nanoseconds since 1970-01-01 UTC; none for an
/// invalid date.
std::optional<qint64> fileTimeOf(const QDateTime &taken);

/// What tells `item`, of an iOS device or a classic iPod, from others in a message.
QString labelText(const LibrarySession &session, const photoItem &item);

#endif // PHOTOLIB_ENGINE_CLASSIC_PHOTOS_H
