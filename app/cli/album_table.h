#ifndef PHOTOLIB_CLI_ALBUM_TABLE_H
#define PHOTOLIB_CLI_ALBUM_TABLE_H

#include <QSet>
#include <QString>
#include <QStringList>

class Output;
class photo_manager_int;

/// The title of an album, safe to show.
QString albumNameText(const QString &name);

/// The plug-in's code in `albumItem::type` in words; "unknown" for another one.
QString albumKindText(qint32 type);

/// The cells of the listed album `id`: id, name, kind and how many of its photos are among
/// `photos`. Of an album that the plug-in does not show, what it tells all the same.
QStringList albumRow(photo_manager_int &library, quint64 id, const QSet<quint64> &photos);

/// Writes the albums in display order. Throws Error like `output`.
void writeAlbumTable(photo_manager_int &library, Output &output);

#endif // PHOTOLIB_CLI_ALBUM_TABLE_H
