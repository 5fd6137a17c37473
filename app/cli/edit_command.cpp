#include "base/error.h"
#include "base/printable.h"
#include "base/unique_fd.h"
#include "cli/album_table.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/text_table.h"
#include "engine/album_editor.h"
#include "engine/edit_script.h"
#include "engine/library_session.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <fcntl.h>
#include <system_error>

namespace {

const char help[] =
    "A script has one edit per line; blank lines and lines that begin with # are skipped:\n"
    "  add-album NAME [ID...]    make an album from photos in the library\n"
    "  add-photo FILE|ID ALBUM   add a file on this computer, or a photo in the library\n"
    "  rename ALBUM NAME         give an album another name\n"
    "  remove-photo ALBUM ID...  take photos out of an album; out of the library itself if ALBUM "
    "is the Photo Library\n"
    "  rm-album ALBUM            hide an album\n"
    "\n"
    "ALBUM is an id or a name. A name means the album of that name that the script has made, or "
    "else the one on the device. Put names with blanks in double quotes, with \\\" and \\\\ for a "
    "quote and a backslash; quote a name made of digits, or it is taken for an id.\n"
    "\n"
    "The edits are kept in memory until the program ends. The device is never changed. The albums "
    "of a classic iPod cannot be edited.\n"
    "\n"
    "Examples:\n"
    "  photolib edit edits.txt -d /media/phone\n"
    "  printf 'add-album \"Best of 2018\" 3 4\\nadd-photo new.jpg \"Best of 2018\"\\n' |\n"
    "      photolib edit - -d /media/phone";

constexpr int largestScript = 16 << 20; // bytes, far more than a person writes
constexpr int longestEdit = 60;         // letters of an edit that are shown with its result

[[noreturn]] void failToRead(const std::string &name)
{
    throw Error(name, errno == ENOENT ? "no such file" : std::generic_category().message(errno));
}

QByteArray readAll(int fd, const std::string &name)
{
    QByteArray bytes;
    char block[1 << 16];
    for (;;) {
        const ssize_t count = ::read(fd, block, sizeof(block));
        if (count == 0)
            return bytes;
        if (count < 0 && errno != EINTR)
            failToRead(name);
        if (count > 0)
            bytes.append(block, static_cast<int>(count));
        if (bytes.size() > largestScript)
            throw Error(name, "too large for a script");
    }
}

QVector<ScriptEdit> readScript(const std::string &file)
{
    if (file == "-")
        return parseEditScript(readAll(STDIN_FILENO, "standard input"), "standard input");
    const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd.isOpen())
        failToRead(file);
    return parseEditScript(readAll(fd.get(), file), file);
}

QString shortened(const QString &text)
{
    if (text.size() <= longestEdit)
        return text;
    return text.left(longestEdit) + QStringLiteral("...");
}

// Returns how many edits were refused.
int applyEdits(photo_manager_int &library, const QVector<ScriptEdit> &edits, Output &output)
{
    TextTable table({QStringLiteral("LINE"), QStringLiteral("EDIT"), QStringLiteral("RESULT")});
    table.alignRight(0);
    AlbumEditor editor(library);
    int refused = 0;
    for (const ScriptEdit &edit : edits) {
        const EditResult result = editor.apply(edit);
        refused += result.isDone ? 0 : 1;
        table.addRow(
            {QString::number(edit.line), printable(shortened(edit.text)), printable(result.text)});
    }
    table.write(output);
    return refused;
}

int runEdit(const CommandContext &context, const std::string &script)
{
    const QVector<ScriptEdit> edits = readScript(script);
    int refused = 0;
    const auto write = [&edits, &refused](LibrarySession &session, Output &output) {
        // The plug-in takes them for done all the same.
        if (session.classicIpod())
            throw Error(session.deviceName(), "the albums of a classic iPod cannot be edited");
        refused = applyEdits(session.library(), edits, output);
        output.write("\n");
        writeAlbumTable(session.library(), output);
        output.write("\nThe edits were made in memory only. The device is not changed.\n");
    };
    const int code = runOnLibrary(context, write);
    if (refused > 0)
        throw Error(script, std::to_string(refused) + " of " + std::to_string(edits.size()) +
                                " edits refused");
    return code;
}

} // namespace

void addEditCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command =
        app.add_subcommand("edit", "Try album edits in memory; the device is not changed");
    const auto script = std::make_shared<std::string>();
    command->add_option("SCRIPT", *script, "File with the edits, or - for standard input")
        ->required()
        ->type_name("");
    command->footer(help);
    command->callback([&context, script] {
        context.run = [&context, script] { return runEdit(context, *script); };
    });
}
