#ifndef PHOTOLIB_ENGINE_PHOTO_IDS_H
#define PHOTOLIB_ENGINE_PHOTO_IDS_H

#include <QList>
#include <QSet>
#include <QtGlobal>

#include <string>

class LibrarySession;
class albumItem;
class photo_manager_int;

/// Whether `text` is made of decimal digits: an id, or too large to be one.
bool isNumber(const std::string &text);

/// The photo or video with the id `text`. Throws Error when the library has none.
quint64 knownPhotoId(const std::string &text, LibrarySession &session);

/// The ids of all photos and videos that the plug-in lists.
QSet<quint64> allPhotoIds(photo_manager_int &library);

/// The photos and videos of `album` that are in `all`, in album order and as often as they
/// are in it. An album may hold others, which the library does not take for photos.
QList<quint64> listedPhotoIds(const albumItem &album, const QSet<quint64> &all);

#endif // PHOTOLIB_ENGINE_PHOTO_IDS_H
