#ifndef PHOTOLIB_ENGINE_ALBUM_LIST_H
#define PHOTOLIB_ENGINE_ALBUM_LIST_H

#include <QSet>
#include <QString>
#include <QVector>

class photo_manager_int;

/// An album for a list, its texts safe to show.
struct ListedAlbum {
    quint64 id = 0;
    bool isShown = false; ///< otherwise the rest is what the plug-in tells all the same
    QString name;
    QString kind; ///< as `albumKindText` has it
    int photos = 0;
};

/// The title of an album, safe to show.
QString albumNameText(const QString &name);

/// The plug-in's code in `albumItem::type` in words; "unknown" for another one.
QString albumKindText(qint32 type);

/// The album `id`, which the library lists, with how many of its photos are among `photos`.
ListedAlbum listedAlbum(photo_manager_int &library, quint64 id, const QSet<quint64> &photos);

/// All albums in display order.
QVector<ListedAlbum> listedAlbums(photo_manager_int &library);

#endif // PHOTOLIB_ENGINE_ALBUM_LIST_H
