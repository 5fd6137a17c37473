#ifndef PHOTOLIB_ENGINE_LIBRARY_IDS_H
#define PHOTOLIB_ENGINE_LIBRARY_IDS_H

#include <QList>
#include <QSet>
#include <QtGlobal>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

class LibrarySession;
class albumItem;
class photo_manager_int;

/// Whether `text` is made of decimal digits: an id, or too large to be one.
bool isNumber(const std::string &text);

/// The photo or video with the id `text`. Throws Error when the library has none.
quint64 knownPhotoId(const std::string &text, LibrarySession &session);

/// The album with the id `text`. Throws Error when the library lists none.
quint64 knownAlbumId(const std::string &text, LibrarySession &session);

/// Adds the option --album ID to `command`. The result is filled with a number while the
/// command line is parsed and stays empty without the option.
std::shared_ptr<std::optional<std::string>> addAlbumOption(CLI::App &command);

/// The ids of all photos and videos.
QSet<quint64> allPhotoIds(photo_manager_int &library);

/// The photos and videos of `album` that are in `all`, in album order and as often as they
/// are in it. An album may hold others, which the library does not take for photos.
QList<quint64> listedPhotoIds(const albumItem &album, const QSet<quint64> &all);

/// The photos and videos to work on: those of the album with the id `album`, in album order
/// and as often as they are in it, or, when it is empty, all of the library. Throws
/// Error for an album that is not known or not shown.
QList<quint64> chosenPhotoIds(LibrarySession &session, const std::optional<std::string> &album);

/// What a command was given that takes a device and ids.
struct DeviceAndIds {
    std::optional<std::string> device;
    std::vector<std::string> ids; ///< numbers, as often as they were given
};

/// Tells the arguments `[DEVICE] ID...` or `ID... [DEVICE]` apart: the first or the last one
/// is the device when it is no number. Throws CLI::ValidationError for another one that is
/// no number.
DeviceAndIds splitDeviceAndIds(const std::vector<std::string> &arguments);

#endif // PHOTOLIB_ENGINE_LIBRARY_IDS_H
