#include "engine/library_ids.h"

#include "base/error.h"
#include "engine/library_session.h"
#include "base/log_output.h"

#include <CLI/CLI.hpp>

namespace {

const char notANumber[] = "not a number";

// Throws Error unless `text`, a decimal number of any length, is one of `ids`.
quint64 knownId(const std::string &text, const QList<quint64> &ids, const std::string &unknown)
{
    bool isKey = false;
    const quint64 id = QByteArray::fromStdString(text).toULongLong(&isKey);
    if (!isKey || !ids.contains(id))
        throw Error(text, unknown);
    return id;
}

} // namespace

bool isNumber(const std::string &text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

quint64 knownPhotoId(const std::string &text, LibrarySession &session)
{
    return knownId(text, session.library().photoIDs(),
                   "no photo with this id in " + session.deviceName());
}

quint64 knownAlbumId(const std::string &text, LibrarySession &session)
{
    return knownId(text, session.library().albumIDs(),
                   "no album with this id in " + session.deviceName());
}

std::shared_ptr<std::optional<std::string>> addAlbumOption(CLI::App &command)
{
    auto album = std::make_shared<std::optional<std::string>>();
    command
        .add_option_function<std::string>(
            "--album", [album](const std::string &id) { *album = id; },
            "Only the photos and videos of this album, as the command albums lists it")
        ->check([](const std::string &id) { return isNumber(id) ? "" : notANumber; })
        ->type_name("ID");
    return album;
}

QSet<quint64> allPhotoIds(photo_manager_int &library)
{
    const QList<quint64> ids = library.photoIDs();
    return QSet<quint64>(ids.begin(), ids.end());
}

QList<quint64> listedPhotoIds(const albumItem &album, const QSet<quint64> &all)
{
    QList<quint64> listed;
    for (const quint64 id : album.photoIDs) {
        if (all.contains(id))
            listed.append(id);
    }
    return listed;
}

QList<quint64> chosenPhotoIds(LibrarySession &session, const std::optional<std::string> &album)
{
    if (!album)
        return session.library().photoIDs();
    albumItem item;
    const LogCapture log; // a failure is one line
    if (!session.library().getAlbum(knownAlbumId(*album, session), &item))
        throw Error(*album, "an album of a kind that is not shown");
    return listedPhotoIds(item, allPhotoIds(session.library()));
}

DeviceAndIds splitDeviceAndIds(const std::vector<std::string> &arguments)
{
    DeviceAndIds result;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const bool isAtAnEnd = i == 0 || i + 1 == arguments.size();
        if (isNumber(arguments[i]))
            result.ids.push_back(arguments[i]);
        else if (isAtAnEnd && !result.device)
            result.device = arguments[i];
        else
            throw CLI::ValidationError(arguments[i], notANumber);
    }
    return result;
}
