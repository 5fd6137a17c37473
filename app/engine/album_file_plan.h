#ifndef PHOTOLIB_ENGINE_ALBUM_FILE_PLAN_H
#define PHOTOLIB_ENGINE_ALBUM_FILE_PLAN_H

#include "catalog/catalog.h"

#include <QByteArray>

#include <map>
#include <vector>

/// The files of photos and videos in an export: paths below its folder, by the id of the photo, in
/// the order in which an album is to have them.
using ExportedFiles = std::map<qint64, std::vector<QByteArray>>;

/// A file that an album is to have.
struct PlannedAlbumFile {
    QByteArray number; ///< of the photo in the album, "001": its files share it
    QByteArray target; ///< path of the exported file
};

/// An album that has exported files.
struct PlannedAlbum {
    QByteArray path;                     ///< "Albums/Trips/Rome": safe names
    std::vector<PlannedAlbumFile> files; ///< in the album's order
    bool wasCut = false;                 ///< whether a title is too long for a disk
};

/// The albums of `catalog` with files in `files`, by id. No two have the same path, nor such ones
/// that some disk cannot tell apart: later ones get a number.
std::vector<PlannedAlbum> plannedAlbums(const Catalog &catalog, const ExportedFiles &files);

/// The name of `file` in its album: "001 IMG_0001.JPG", or "001 IMG_0001 (2).JPG" as the second of
/// that name; cut to what a disk takes, with the extension kept.
QByteArray albumFileName(const PlannedAlbumFile &file, int number);

/// How many of `albums` and of the files in them have a name that is too long for a disk.
int cutNames(const std::vector<PlannedAlbum> &albums);

#endif // PHOTOLIB_ENGINE_ALBUM_FILE_PLAN_H
