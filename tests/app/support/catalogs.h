#ifndef PHOTOLIB_TESTS_APP_CATALOGS_H
#define PHOTOLIB_TESTS_APP_CATALOGS_H

#include "catalog/catalog.h"

/// An album, or a folder, for a catalog that is made by hand.
inline Album album(qint64 id, const QByteArray &title, std::vector<qint64> assets = {})
{
    Album album;
    album.id = id;
    album.title = title;
    album.assets = std::move(assets);
    return album;
}

inline Album folder(qint64 id, const QByteArray &title)
{
    Album folder = album(id, title);
    folder.kind = AlbumKind::Folder;
    return folder;
}

inline Album within(qint64 parent, Album album)
{
    album.parent = parent;
    return album;
}

/// Seconds from 2001-01-01 00:00 to the time of a day of 2019-07, both in UTC.
inline double july2019(int day, int hour = 0, int minute = 0, double second = 0)
{
    constexpr double toJuly2019 = 583632000;
    return toJuly2019 + (((day - 1) * 24.0 + hour) * 60 + minute) * 60 + second;
}

#endif // PHOTOLIB_TESTS_APP_CATALOGS_H
