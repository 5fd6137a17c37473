#ifndef PHOTOLIB_ENGINE_ALBUM_TREE_H
#define PHOTOLIB_ENGINE_ALBUM_TREE_H

#include "catalog/catalog.h"

#include <map>
#include <vector>

/// The albums and folders of a library as they lie in each other: those of a folder by id.
///
/// A damaged library may have any number of folders within folders, or a folder within itself: more
/// than 64 levels are not looked into at once.
class AlbumTree
{
public:
    /// `catalog` must outlive the object.
    explicit AlbumTree(const Catalog &catalog);

    struct Line {
        const Album *album;
        int depth; ///< how many folders it lies in; at most 64
    };

    /// All albums and folders, each once, a folder before what is in it.
    std::vector<Line> lines() const;

    /// The ids of the photos and videos of `album`, in its order; of a folder those of all albums
    /// in it, however deep, each once.
    std::vector<qint64> assetsOf(const Album &album) const;

    /// The folders that `album` lies in, from the outermost, and `album` itself; of a ring of
    /// folders each once.
    std::vector<const Album *> lineTo(const Album &album) const;

    /// The titles of the folders that `album` lies in, from the outermost, and its own:
    /// "Trips/Rome". In UTF-8 as far as the titles are, and not safe to show.
    QByteArray pathOf(const Album &album) const;

private:
    const Catalog &m_catalog;
    std::multimap<qint64, const Album *> m_children; // by the folder's id
};

/// The folders that `album` lies in, from the outermost; at most 64, and each once.
std::vector<const Album *> foldersAround(const Album &album, const Catalog &catalog);

#endif // PHOTOLIB_ENGINE_ALBUM_TREE_H
