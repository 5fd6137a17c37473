#ifndef PHOTOLIB_CLI_FILTER_OPTIONS_H
#define PHOTOLIB_CLI_FILTER_OPTIONS_H

#include "cli/common_options.h"
#include "engine/photo_filter.h"

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

/// The options by which a command's photos and videos are chosen, the same for all commands, and
/// the ids that it is given.
class FilterOptions
{
public:
    /// Who adds the option --all.
    enum class AllOption { Filter, Command };

    /// Who adds the option --edited.
    enum class EditedOption { Filter, Command };

    /// Adds the options to `command`. What tells the kind of a device is set in `common`. The
    /// object is filled while the command line is parsed, so that it must live until then.
    FilterOptions(CLI::App &command, CommonOptions &common, AllOption all = AllOption::Filter,
                  EditedOption edited = EditedOption::Filter);

    FilterOptions(const FilterOptions &) = delete;
    FilterOptions &operator=(const FilterOptions &) = delete;

    /// Takes ids, ranges and "-", for those in standard input, and finds out what is wrong with
    /// them and with the options: then it throws CLI::ValidationError. To be called when the
    /// command line is parsed.
    void check(const std::vector<std::string> &ids);

    /// Adds the trash, as --all does.
    void addTrash();

    /// Leaves out what was not edited, as --edited does.
    void leaveOutUnedited();

    /// Whether more is asked for than the photos with certain ids: how many there are is not known
    /// beforehand.
    bool isAnyGiven() const;

    /// What they ask for. Reads standard input if the ids are there; throws Error for what is no id
    /// in it.
    PhotoFilter filter() const;

private:
    void addAlbum(CLI::App &command);
    void addKind(CLI::App &command, CommonOptions &common);
    void requireKind(AssetKind kind);
    void addType(CLI::App &command);
    void addDates(CLI::App &command);
    void addEdited(CLI::App &command);
    void addStates(CLI::App &command);
    void addAll(CLI::App &command);
    void addNames(CLI::App &command);
    void addSize(CLI::App &command);
    void addOrder(CLI::App &command);
    CLI::Option *listed(CLI::Option *option);

    PhotoFilter m_filter;
    std::vector<IdRange> m_ids;
    bool m_hasIds = false;
    bool m_readsIds = false; // from standard input
    bool m_onlyTrash = false;
    std::vector<CLI::Option *> m_options;
};

/// What the argument of ids says in a command's help.
extern const char idsDescription[];

#endif // PHOTOLIB_CLI_FILTER_OPTIONS_H
