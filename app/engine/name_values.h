#ifndef PHOTOLIB_ENGINE_NAME_VALUES_H
#define PHOTOLIB_ENGINE_NAME_VALUES_H

#include "engine/album_tree.h"
#include "engine/name_template.h"
#include "engine/photo_filter.h"

class LibrarySession;

/// Finds what the fields of name templates stand for.
class NameValuesOf
{
public:
    /// Of the photos that `filter` chose: an album that it names is the album of all that are in
    /// it. Throws Error for an album that the library does not have. `session` must outlive the
    /// object.
    NameValuesOf(LibrarySession &session, const PhotoFilter &filter);

    /// Those for `asset`, which `fileName` is the name of the own file of.
    NameValues operator()(const Asset &asset, const QByteArray &fileName) const;

private:
    const Album *albumOf(const Asset &asset) const;

    const Catalog &m_catalog;
    const AlbumTree m_tree;
    const Album *m_chosen = nullptr;
    QByteArray m_device;
};

#endif // PHOTOLIB_ENGINE_NAME_VALUES_H
