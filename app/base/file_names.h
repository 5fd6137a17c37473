#ifndef PHOTOLIB_BASE_FILE_NAMES_H
#define PHOTOLIB_BASE_FILE_NAMES_H

#include <QByteArray>
#include <QString>

/// A file's name made of `name`, which a device may have chosen: one name in UTF-8, never
/// hidden, "." or "..", and none that looks like an option; not too long for a disk even with
/// a number, without what other systems' disks refuse, and without anything that a terminal
/// takes for a command. The extension is kept. "unnamed" when nothing is left.
QByteArray safeFileName(const QString &name);

/// The same, as long as `name` is, and never with a dot at the end, which memory cards drop.
QByteArray safeName(const QString &name);

constexpr int longestOnDisks = 255; ///< bytes of a name

/// The start of what `safeName` makes of `name`, no longer than disks take.
QByteArray safeFolderName(const QString &name);

/// As much of the start of `utf8` as fits into `bytes`: whole characters as a person sees them, an
/// accent with its letter; of one that alone is longer, whole code points. Bytes that are not UTF-8
/// count as characters of their own.
QByteArray cutName(const QByteArray &utf8, int bytes);

/// "IMG_0001.JPG" without its extension: "IMG_0001".
QByteArray nameStem(const QByteArray &name);

/// The `number`th name like `name`: "IMG_0001 (2).JPG" for 2, and `name` itself for 1.
QByteArray numberedName(const QByteArray &name, int number);

/// What `name` is compared by, so that names are the same that some disk cannot tell
/// apart: regardless of case and of how accents are put together.
QString comparedName(const QByteArray &name);

#endif // PHOTOLIB_BASE_FILE_NAMES_H
