#include "base/suggestion.h"
#include "cli/filter_options.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/photo_csv.h"
#include "cli/photo_json.h"
#include "cli/photo_table.h"
#include "engine/library_session.h"

#include <CLI/CLI.hpp>

namespace {

struct PhotosArguments {
    std::vector<std::string> ids;
    std::unique_ptr<FilterOptions> filter;
    std::vector<std::string> columns;
    bool isJson = false;
    bool isCsv = false;
    bool isPaths = false;
};

void checkColumns(const std::vector<std::string> &columns)
{
    const std::vector<std::string> known = photoColumnNames();
    for (const std::string &column : columns) {
        if (std::find(known.begin(), known.end(), column) == known.end())
            throw CLI::ValidationError("--columns",
                                       column + ": no such column" + suggestion(column, known));
    }
}

std::string columnList()
{
    std::string list;
    for (const std::string &name : photoColumnNames())
        list.append(list.empty() ? "" : ", ").append(name);
    return list;
}

void writePaths(const std::vector<const Asset *> &photos, Output &output)
{
    for (const Asset *photo : photos) {
        const QByteArray path = photo->path();
        if (!path.isEmpty())
            output.write(path + '\0');
    }
}

void writePhotos(const PhotosArguments &arguments, const PhotoFilter &filter,
                 LibrarySession &session, Output &output)
{
    const std::vector<const Asset *> photos = chosenPhotos(session, filter);
    if (arguments.isJson)
        writePhotosAsJson(photos, output);
    else if (arguments.isCsv)
        writePhotosAsCsv(photos, output);
    else if (arguments.isPaths)
        writePaths(photos, output);
    else if (photos.empty())
        output.write("No photos or videos.\n");
    else
        writePhotoTable(session, photos, arguments.columns, output);
}

int runPhotos(const CommandContext &context, const PhotosArguments &arguments)
{
    const PhotoFilter filter = arguments.filter->filter();
    return runOnLibrary(context, [&](LibrarySession &session, Output &output) {
        writePhotos(arguments, filter, session, output);
    });
}

void addForms(CLI::App &command, PhotosArguments &arguments)
{
    CLI::Option *const columns =
        command.add_option("--columns", arguments.columns,
                           "The columns of the table, with commas between them: " + columnList());
    columns->delimiter(',')->allow_extra_args(false)->type_name("LIST");
    CLI::Option *const json = command.add_flag(
        "--json", arguments.isJson, "Print JSON with all that the library tells of each");
    CLI::Option *const csv = command.add_flag(
        "--csv", arguments.isCsv, "Print the same as comma-separated values, for spreadsheets");
    CLI::Option *const paths =
        command.add_flag("-0,--null", arguments.isPaths,
                         "Print only the paths on the device, each ended by a zero byte");
    json->excludes(columns)->excludes(csv)->excludes(paths);
    csv->excludes(columns)->excludes(paths);
    paths->excludes(columns);
}

} // namespace

void addPhotosCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("photos", "List the photos and videos");
    const auto arguments = std::make_shared<PhotosArguments>();
    command->add_option("ID", arguments->ids, idsDescription)->option_text("[ID...]");
    arguments->filter = std::make_unique<FilterOptions>(*command, context.options);
    addForms(*command, *arguments);
    command->footer("What is in the trash and the copies in shared albums are listed only if asked "
                    "for. TAKEN is the time at the place where the photo was taken; SIZE is that "
                    "of the original.\n"
                    "\n"
                    "Examples:\n"
                    "  photolib photos\n"
                    "  photolib photos -d /media/phone --album 7\n"
                    "  photolib photos -d /media/phone --kind video --larger 100M --sort size\n"
                    "  photolib photos -d /media/phone --from 2019-07 --to 2019-08 --favorite "
                    "--json");
    command->callback([&context, arguments] {
        arguments->filter->check(arguments->ids);
        checkColumns(arguments->columns);
        context.run = [&context, arguments] { return runPhotos(context, *arguments); };
    });
}
