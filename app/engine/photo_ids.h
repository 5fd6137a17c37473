#ifndef PHOTOLIB_ENGINE_PHOTO_IDS_H
#define PHOTOLIB_ENGINE_PHOTO_IDS_H

#include <QList>
#include <QSet>
#include <QtGlobal>

#include <optional>
#include <string>
#include <vector>

class LibrarySession;
class albumItem;
class photo_manager_int;

/// Whether `text` is made of decimal digits: an id, or too large to be one.
bool isNumber(const std::string &text);

/// The photo or video with the id `text`. Throws Error when the library has none.
quint64 knownPhotoId(const std::string &text, LibrarySession &session);

/// The photos and videos with the ids `texts`: each once, where it is named first. Throws Error
/// for the first that the library does not have.
QList<quint64> knownPhotoIds(const std::vector<std::string> &texts, LibrarySession &session);

/// The album with the id `text`. Throws Error when the library lists none.
quint64 knownAlbumId(const std::string &text, LibrarySession &session);

/// The ids of all photos and videos.
QSet<quint64> allPhotoIds(photo_manager_int &library);

/// The photos and videos of `album` that are in `all`, in album order and as often as they
/// are in it. An album may hold others, which the library does not take for photos.
QList<quint64> listedPhotoIds(const albumItem &album, const QSet<quint64> &all);

/// The photos and videos to work on: those of the album with the id `album`, in album order
/// and as often as they are in it, or, when it is empty, all of the library. Throws
/// Error for an album that is not known or not shown.
QList<quint64> chosenPhotoIds(LibrarySession &session, const std::optional<std::string> &album);

#endif // PHOTOLIB_ENGINE_PHOTO_IDS_H
