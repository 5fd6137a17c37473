#ifndef PHOTOLIB_CLI_ID_ARGUMENTS_H
#define PHOTOLIB_CLI_ID_ARGUMENTS_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// Adds the option --album ID to `command`. The result is filled with a number while the
/// command line is parsed and stays empty without the option.
std::shared_ptr<std::optional<std::string>> addAlbumOption(CLI::App &command);

/// Throws CLI::ValidationError for the first of `ids` that is no number.
void requireIds(const std::vector<std::string> &ids);

#endif // PHOTOLIB_CLI_ID_ARGUMENTS_H
