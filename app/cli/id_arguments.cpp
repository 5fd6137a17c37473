#include "cli/id_arguments.h"

#include "engine/photo_ids.h"

#include <CLI/CLI.hpp>

namespace {

const char notANumber[] = "not a number";

} // namespace

std::shared_ptr<std::optional<std::string>> addAlbumOption(CLI::App &command)
{
    auto album = std::make_shared<std::optional<std::string>>();
    command
        .add_option_function<std::string>(
            "--album", [album](const std::string &id) { *album = id; },
            "Only the photos and videos of this album; find its id with photolib albums")
        ->check([](const std::string &id) { return isNumber(id) ? "" : notANumber; })
        ->type_name("ID");
    return album;
}

void requireIds(const std::vector<std::string> &ids)
{
    for (const std::string &id : ids) {
        if (!isNumber(id))
            throw CLI::ValidationError(id, "not an id; name the device with -d");
    }
}
