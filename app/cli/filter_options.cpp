#include "cli/filter_options.h"

#include "base/byte_count.h"
#include "base/error.h"
#include "base/suggestion.h"
#include "engine/asset_words.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

const char idsDescription[] = "The ids of photos and videos, ranges of them such as 3-9, or - for "
                              "those in standard input, between blanks or line breaks. A photo "
                              "whose id is named is also taken from the trash";

namespace {

const char fromStandardInput[] = "-";

[[noreturn]] void refuse(const std::string &option, const std::string &cause)
{
    throw CLI::ValidationError(option, cause);
}

// What `word` stands for. `meanings` are pairs of a word and its meaning.
template <typename Meanings>
auto meaningOf(const std::string &word, const Meanings &meanings, const std::string &option)
{
    std::vector<std::string> words;
    std::string list;
    for (const auto &meaning : meanings) {
        if (word == meaning.first)
            return meaning.second;
        words.emplace_back(meaning.first);
        list.append(list.empty() ? "" : ", ").append(meaning.first);
    }
    const std::string suggested = suggestion(word, words);
    refuse(option, word + ": not one of " + list + suggested);
}

AssetType typeOf(const std::string &word)
{
    std::vector<std::pair<std::string, AssetType>> meanings;
    for (const AssetTypeWord &each : assetTypeWords())
        meanings.emplace_back(each.word, each.type);
    return meaningOf(word, meanings, "--type");
}

std::string typeList()
{
    std::string list;
    for (const AssetTypeWord &each : assetTypeWords())
        list.append(list.empty() ? "" : ", ").append(each.word);
    return list;
}

DateSpan requiredSpan(const std::string &text, const std::string &option)
{
    const std::optional<DateSpan> span = dateSpan(QString::fromStdString(text));
    if (!span)
        refuse(option, text + ": not a date; write 2019, 2019-07, 2019-07-27 or 2019-07-27T09:16");
    return *span;
}

IdRange requiredRange(const std::string &text)
{
    const std::optional<IdRange> range = idRange(text);
    if (!range)
        refuse(text, "not an id; name the device with -d");
    if (range->isReversed())
        refuse(text, "the range ends before it begins");
    return *range;
}

void appendIdsFromStandardInput(std::vector<IdRange> *ids)
{
    for (std::string text; std::cin >> text;) {
        const std::optional<IdRange> range = idRange(text);
        if (!range)
            throw Error("standard input: " + text, "not an id");
        if (range->isReversed())
            throw Error("standard input: " + text, "the range ends before it begins");
        ids->push_back(*range);
    }
}

bool endsBeforeItBegins(const PhotoFilter &filter)
{
    return filter.from && filter.to && filter.from->isUtc == filter.to->isUtc &&
           filter.from->start >= filter.to->end;
}

} // namespace

FilterOptions::FilterOptions(CLI::App &command, CommonOptions &common, AllOption all,
                             EditedOption edited)
{
    addAlbum(command);
    addKind(command, common);
    addType(command);
    addDates(command);
    addNames(command);
    addSize(command);
    addStates(command);
    if (edited == EditedOption::Filter)
        addEdited(command);
    if (all == AllOption::Filter)
        addAll(command);
    addOrder(command);
}

CLI::Option *FilterOptions::listed(CLI::Option *option)
{
    m_options.push_back(option);
    return option->group("Which photos and videos");
}

void FilterOptions::addAlbum(CLI::App &command)
{
    listed(
        command.add_option_function<std::string>(
            "--album", [this](const std::string &text) { m_filter.album = text; },
            "Only those of this album, by its id, its title or FOLDER/TITLE, or of all albums in "
            "a folder, in the album's order; photolib albums lists them"))
        ->check([](const std::string &text) { return text.empty() ? "the name is empty" : ""; })
        ->type_name("ALBUM");
}

void FilterOptions::requireKind(AssetKind kind)
{
    if (m_filter.kind && *m_filter.kind != kind)
        throw CLI::ValidationError("--kind", "nothing is both a photo and a video");
    m_filter.kind = kind;
}

// The device has a kind, too, which may be named before the command and behind it.
void FilterOptions::addKind(CLI::App &command, CommonOptions &common)
{
    const auto set = [this, &common](const std::string &word) {
        const std::pair<const char *, std::function<void()>> meanings[] = {
            {"photo", [this] { requireKind(AssetKind::Photo); }},
            {"video", [this] { requireKind(AssetKind::Video); }},
            {"ios", [&common] { common.kind = DeviceKind::Ios; }},
            {"classic", [&common] { common.kind = DeviceKind::Classic; }},
        };
        meaningOf(word, meanings, "--kind")();
    };
    listed(command.add_option_function<std::vector<std::string>>(
               "--kind",
               [set](const std::vector<std::string> &words) {
                   std::for_each(words.begin(), words.end(), set);
               },
               "Only photos, or only videos. With ios or classic: what the device is"))
        ->allow_extra_args(false)
        ->type_name("photo|video");
}

void FilterOptions::addType(CLI::App &command)
{
    const auto set = [this](const std::vector<std::string> &words) {
        for (const std::string &word : words)
            m_filter.types |= typeOf(word);
    };
    listed(
        command.add_option_function<std::vector<std::string>>(
            "--type", set,
            "Only those of a type, or of any of several, with commas between them: " + typeList()))
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("TYPE");
}

void FilterOptions::addDates(CLI::App &command)
{
    listed(command.add_option_function<std::string>(
               "--from",
               [this](const std::string &text) { m_filter.from = requiredSpan(text, "--from"); },
               "Only those taken then or later, by the clock of the place: 2019, 2019-07, "
               "2019-07-27 or 2019-07-27T09:16, or with a zone: 2019-07-27T09:16+02:00"))
        ->type_name("DATE");
    listed(command.add_option_function<std::string>(
               "--to",
               [this](const std::string &text) { m_filter.to = requiredSpan(text, "--to"); },
               "Only those taken then or earlier, to the end of the year, month, day or minute"))
        ->type_name("DATE");
}

void FilterOptions::addNames(CLI::App &command)
{
    listed(command.add_option("--keyword", m_filter.keywords,
                              "Only those with this keyword; repeat it for those with all of "
                              "several"))
        ->allow_extra_args(false)
        ->type_name("KEYWORD");
    listed(command.add_option("--person", m_filter.people,
                              "Only those that show this person; repeat it for those that show "
                              "all of several"))
        ->allow_extra_args(false)
        ->type_name("NAME");
}

void FilterOptions::addSize(CLI::App &command)
{
    const auto set = [this](const std::string &text) {
        m_filter.largerThan = byteCount(QString::fromStdString(text));
        if (!m_filter.largerThan)
            refuse("--larger", text + ": not a size; write 500k, 1.5G, 10MB or 2000, say");
    };
    listed(command.add_option_function<std::string>(
               "--larger", set,
               "Only those of which the original has more bytes: 500k, 10M and 1.5G are multiples "
               "of 1024, as is 10MiB; 10MB is one of 1000"))
        ->type_name("SIZE");
}

void FilterOptions::addStates(CLI::App &command)
{
    listed(command.add_flag("--favorite", m_filter.favorite, "Only favorites"));
    listed(command.add_flag("--missing", m_filter.missing,
                            "Only those of which the device does not have the file"));
    const auto setHidden = [this](const std::string &word) {
        using Hidden = PhotoFilter::Hidden;
        const std::pair<const char *, Hidden> meanings[] = {
            {"yes", Hidden::Included}, {"no", Hidden::LeftOut}, {"only", Hidden::Only}};
        m_filter.hidden = meaningOf(word, meanings, "--hidden");
    };
    listed(command.add_option_function<std::string>(
               "--hidden", setHidden,
               "Hidden ones: yes, also these, as by default; no; or only these"))
        ->type_name("yes|no|only");
    listed(command.add_flag("--trash", m_onlyTrash, "Only what is in the trash"));
    listed(command.add_flag("--shared", m_filter.shared, "Also the copies in shared albums"));
}

void FilterOptions::addEdited(CLI::App &command)
{
    listed(command.add_flag("--edited", m_filter.edited, "Only those that were edited"));
}

void FilterOptions::addAll(CLI::App &command)
{
    listed(command.add_flag_callback(
        "--all", [this] { addTrash(); }, "Also what is in the trash"));
}

void FilterOptions::addOrder(CLI::App &command)
{
    const auto setOrder = [this](const std::string &word) {
        const std::pair<const char *, PhotoOrder> meanings[] = {{"taken", PhotoOrder::Taken},
                                                                {"name", PhotoOrder::Name},
                                                                {"size", PhotoOrder::Size},
                                                                {"modified", PhotoOrder::Modified},
                                                                {"id", PhotoOrder::Id}};
        m_filter.order = meaningOf(word, meanings, "--sort");
    };
    listed(command.add_option_function<std::string>(
               "--sort", setOrder,
               "The order: taken, name, size, modified or id, what is not known last. Default: id, "
               "or the album's own"))
        ->type_name("KEY");
    listed(command.add_flag("--reverse", m_filter.isReversed, "The other way round"));
    const auto setLimit = [this](const std::string &text) {
        bool isNumber = false;
        const qulonglong count = QByteArray::fromStdString(text).toULongLong(&isNumber);
        if (!isNumber)
            refuse("--limit", text + ": not a number");
        m_filter.limit = count;
    };
    listed(command.add_option_function<std::string>("--limit", setLimit,
                                                    "Only the first ones in this order"))
        ->type_name("N");
}

void FilterOptions::check(const std::vector<std::string> &ids)
{
    m_hasIds = !ids.empty();
    for (const std::string &id : ids) {
        if (id == fromStandardInput)
            m_readsIds = true;
        else
            m_ids.push_back(requiredRange(id));
    }
    if (endsBeforeItBegins(m_filter))
        refuse("--from", "later than --to");
}

void FilterOptions::addTrash()
{
    m_filter.trash = PhotoFilter::Trash::Included;
}

void FilterOptions::leaveOutUnedited()
{
    m_filter.edited = true;
}

bool FilterOptions::isAnyGiven() const
{
    return m_readsIds ||
           std::any_of(m_options.begin(), m_options.end(),
                       [](const CLI::Option *option) { return option->count() > 0; }) ||
           std::any_of(m_ids.begin(), m_ids.end(),
                       [](const IdRange &range) { return range.isRange; });
}

PhotoFilter FilterOptions::filter() const
{
    PhotoFilter filter = m_filter;
    if (m_onlyTrash)
        filter.trash = PhotoFilter::Trash::Only;
    if (!m_hasIds)
        return filter;
    std::vector<IdRange> ids = m_ids;
    if (m_readsIds)
        appendIdsFromStandardInput(&ids);
    filter.ids = std::move(ids);
    return filter;
}
