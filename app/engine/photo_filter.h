#ifndef PHOTOLIB_ENGINE_PHOTO_FILTER_H
#define PHOTOLIB_ENGINE_PHOTO_FILTER_H

#include "catalog/catalog.h"
#include "engine/id_ranges.h"
#include "engine/library_date.h"
#include "engine/photo_order.h"

#include <functional>

class LibrarySession;

/// Which photos and videos of a library to list, and in which order. All that it asks for holds for
/// each of them; at first it asks for all that are neither in the trash nor copies in shared
/// albums.
struct PhotoFilter {
    enum class Trash { LeftOut, Included, Only };
    enum class Hidden { Included, LeftOut, Only };

    /// Only these; without a value, any. The library must have those that are named one by one,
    /// which may also be in the trash or copies in shared albums. No range may be reversed.
    std::optional<std::vector<IdRange>> ids;

    std::optional<std::string> album; ///< what `chosenAlbum` takes
    std::optional<AssetKind> kind;
    AssetTypes types; ///< at least one of these; none for any
    Trash trash = Trash::LeftOut;
    Hidden hidden = Hidden::Included;
    bool shared = false; ///< copies in shared albums, too
    bool favorite = false;
    bool edited = false;
    bool missing = false; ///< the device does not have the file

    std::optional<DateSpan> from; ///< taken in it or later
    std::optional<DateSpan> to;   ///< taken in it or earlier

    std::vector<std::string> keywords; ///< all of them, as `chosenNames` takes them
    std::vector<std::string> people;   ///< likewise
    std::optional<qint64> largerThan;  ///< bytes of the original

    std::optional<PhotoOrder> order; ///< without a value, the album's own, or by id without album
    bool isReversed = false;
    std::optional<quint64> limit; ///< only so many, the first ones
};

/// The photos and videos of `session` that `filter` asks for, in its order. Valid as long as the
/// session. Throws Error for an id, album, keyword or person that the library does not have, for an
/// album whose photos it does not tell, and when the device is gone.
std::vector<const Asset *> chosenPhotos(LibrarySession &session, const PhotoFilter &filter);

/// The same of a catalog, for which `isMissing` tells whether the device lacks the file of a photo;
/// it is asked last. `device` names the device in errors.
std::vector<const Asset *> chosenPhotos(const Catalog &catalog, const PhotoFilter &filter,
                                        const std::string &device,
                                        const std::function<bool(const Asset &)> &isMissing);

#endif // PHOTOLIB_ENGINE_PHOTO_FILTER_H
