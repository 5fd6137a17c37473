#ifndef PHOTOLIB_ENGINE_PHOTO_TEXT_H
#define PHOTOLIB_ENGINE_PHOTO_TEXT_H

#include "engine/type_codes.h"

#include <QDateTime>
#include <QString>

class photoItem;
struct FileError;

/// A name or path from the plug-in as the person who gave it wrote it: the plug-in reads
/// names as Latin-1 though devices write UTF-8. Not safe to show.
QString writtenName(const QString &name);

/// `writtenName`, safe to show.
QString nameText(const QString &name);

/// "photo" or "video".
QString kindText(const photoItem &item);

/// "4032 x 3024"; empty when the device does not know.
QString dimensionsText(const photoItem &item);

/// "2020-01-31T10:20:30Z"; empty for an invalid date.
QString isoText(const QDateTime &date);

/// "2020-01-31T10:20:30": a time in UTC that stands for one of an unknown time zone; empty for an
/// invalid date.
QString isoTextWithoutZone(const QDateTime &date);

/// "2020-01-31 10:20:30", UTC; empty for an invalid date.
QString dateText(const QDateTime &date);

/// "0:07" or "1:02:03".
QString durationText(qint64 seconds);

/// The cause of a failure on the device for a message: "missing on the device", say.
QString failureText(const FileError &error);

/// What tells the item from others in a message: its path, or its id when it has none.
QString labelText(const photoItem &item);

/// Whether the item belongs to a burst, whose group `avalancheUUID` names.
bool isInBurst(const photoItem &item);

#endif // PHOTOLIB_ENGINE_PHOTO_TEXT_H
