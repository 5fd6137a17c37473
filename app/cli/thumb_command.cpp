#include "base/atomic_file.h"
#include "base/error.h"
#include "base/file_names.h"
#include "base/folders.h"
#include "base/printable.h"
#include "cli/exit_codes.h"
#include "cli/id_arguments.h"
#include "cli/interruptible_task.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/progress_bar.h"
#include "engine/classic_photos.h"
#include "engine/id_list.h"
#include "engine/library_session.h"
#include "engine/photo_ids.h"
#include "engine/photo_text.h"
#include "engine/thumbnail.h"

#include <QBuffer>

#include <CLI/CLI.hpp>

namespace {

struct ThumbArguments {
    std::vector<std::string> ids;
    std::string target;    ///< of --output
    std::string allFolder; ///< of --all
    std::string format;    ///< empty for what the plug-in gives

    bool isForAll() const { return !allFolder.empty(); }
};

void checkArguments(ThumbArguments &arguments)
{
    requireIds(arguments.ids);
    if (arguments.isForAll() && !arguments.ids.empty())
        throw CLI::ValidationError("--all", "takes the place of ids");
    if (!arguments.isForAll() && arguments.ids.empty())
        throw CLI::ValidationError("ID", "is missing; --all DIR is for all photos and videos");
    if (!arguments.isForAll() && arguments.target.empty())
        throw CLI::ValidationError("--output", "is missing: the file or folder to write to");
}

// Where the thumbnails go: to files of their own names in a folder, or to one file.
struct Target {
    QByteArray path;   ///< as the user named it
    QByteArray folder; ///< may not exist yet
    QByteArray file;   ///< the name in the folder; empty for names of their own
};

Target folderTarget(const std::string &path)
{
    const auto folder = QByteArray::fromStdString(path);
    return {folder, folder, QByteArray()};
}

Target targetOf(const ThumbArguments &arguments, int thumbnails)
{
    if (arguments.isForAll())
        return folderTarget(arguments.allFolder);
    const auto path = QByteArray::fromStdString(arguments.target);
    if (isFolder(path) || thumbnails > 1)
        return folderTarget(arguments.target);
    if (path.endsWith('/'))
        throw Error(arguments.target, "no such folder");
    return {path, parentFolder(path), path.mid(path.lastIndexOf('/') + 1)};
}

struct Failure {
    QString cause;
};

struct PictureFormat {
    const char *name;
    QList<QByteArray> extensions;
};

const QList<PictureFormat> &pictureFormats()
{
    static const QList<PictureFormat> formats = {
        {"JPEG", {"jpg", "jpeg", "jpe", "jfif"}},
        {"BMP", {"bmp", "dib"}},
        {"PNG", {"png"}},
        {"GIF", {"gif"}},
        {"TIFF", {"tif", "tiff"}},
        {"WebP", {"webp"}},
        {"HEIF", {"heic", "heif", "avif"}},
    };
    return formats;
}

// The format that files with this extension have; null for none that is known.
const char *formatOf(const QByteArray &extension)
{
    for (const PictureFormat &format : pictureFormats()) {
        if (format.extensions.contains(extension.toLower()))
            return format.name;
    }
    return nullptr;
}

// Programs that go by the name could not show the picture.
void requireName(const Target &target, const char *extension)
{
    const char *const promised = formatOf(target.file.mid(nameStem(target.file).size() + 1));
    const char *const given = formatOf(extension);
    if (promised && promised != given)
        throw Error(target.path.toStdString(),
                    std::string("the thumbnail is a ") + given + " picture");
}

QByteArray asPng(const QByteArray &bytes)
{
    QString cause;
    const QImage picture = decodedThumbnail(bytes, &cause);
    if (picture.isNull())
        throw Failure{cause};
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (!picture.save(&buffer, "PNG"))
        throw std::bad_alloc();
    return buffer.data();
}

// Writes thumbnails one by one, and counts them.
class ThumbWriter
{
public:
    // Throws Error when the folder of `target` can not be used.
    ThumbWriter(LibrarySession &session, const Target &target, bool isPng, int thumbnails)
        : m_session(session), m_target(target), m_isPng(isPng), m_folder(openFolder(target.folder)),
          m_task(showsProgress(), QStringLiteral("Reading thumbnails"), thumbnails)
    {
    }

    // Whether it was interrupted.
    bool writeAll(const QList<quint64> &ids)
    {
        return m_task.run([&] {
            for (const quint64 id : ids) {
                m_task.setDone(m_written + m_failed);
                write(id);
            }
        });
    }

    int failed() const { return m_failed; }

    QString summary() const
    {
        const QString things =
            m_written == 1 ? QStringLiteral("thumbnail") : QStringLiteral("thumbnails");
        const QString path = QString::fromUtf8(printable(m_target.path));
        const QString failures =
            m_failed == 0 ? QString() : QStringLiteral(", %1 failed").arg(m_failed);
        return QStringLiteral("wrote %1 %2 to %3%4")
            .arg(QString::number(m_written), things, path, failures);
    }

private:
    void write(quint64 id)
    {
        photoItem item;
        m_session.library().getPhoto(id, &item); // false only when its file is missing
        try {
            store(item, thumbnailOf(m_session, id));
            ++m_written;
        } catch (const Failure &failure) {
            ++m_failed;
            m_task.tell(QStringLiteral("photolib: %1: %2")
                            .arg(labelText(m_session, item), failure.cause)
                            .toUtf8());
        }
    }

    void store(const photoItem &item, const Thumbnail &thumbnail)
    {
        if (thumbnail.bytes.isEmpty())
            throw Failure{thumbnail.failure.text};
        const char *const given = imageExtension(thumbnail.bytes);
        if (!given)
            throw Failure{QStringLiteral("a thumbnail that is neither JPEG nor BMP")};
        const char *const extension = m_isPng ? "png" : given;
        requireName(m_target, extension);
        const QByteArray bytes = m_isPng ? asPng(thumbnail.bytes) : thumbnail.bytes;
        replace(m_target.file.isEmpty() ? ownName(item, extension) : m_target.file, bytes);
    }

    QByteArray ownName(const photoItem &item, const char *extension) const
    {
        const QString name = fileName(m_session, item);
        const bool hasNoName = name.isEmpty() && m_session.classicIpod();
        const QByteArray end = hasNoName ? QByteArray() : '-' + nameStem(safeFileName(name));
        return QByteArray::number(item.id) + end + '.' + extension;
    }

    void replace(const QByteArray &name, const QByteArray &bytes)
    {
        const QByteArray path =
            m_target.file.isEmpty() ? m_target.folder + '/' + name : m_target.path;
        requireReplaceable(m_folder.get(), name, path);
        try {
            replaceFile(m_folder.get(), name, bytes);
        } catch (const std::system_error &error) {
            throw Error(path.toStdString(), error.code().message());
        }
    }

    LibrarySession &m_session;
    const Target m_target;
    const bool m_isPng;
    const UniqueFd m_folder;
    InterruptibleTask m_task;
    int m_written = 0;
    int m_failed = 0;
};

QList<quint64> chosenIds(const ThumbArguments &arguments, LibrarySession &session)
{
    if (arguments.isForAll())
        return session.library().photoIDs();
    QList<quint64> ids;
    for (const std::string &id : arguments.ids)
        ids.append(knownPhotoId(id, session));
    return withoutDuplicates(ids);
}

int writeThumbnails(const ThumbArguments &arguments, bool isQuiet, LibrarySession &session,
                    Output &output)
{
    const QList<quint64> ids = chosenIds(arguments, session);
    const Target target = targetOf(arguments, ids.size());
    std::unique_ptr<EnsuredFolder> ensured;
    if (target.file.isEmpty())
        ensured = session.folderOutside(target.folder);
    else
        session.refuseInDevice(target.folder);
    const bool isPng = !arguments.format.empty() || target.file.toLower().endsWith(".png");
    ThumbWriter writer(session, target, isPng, ids.size());
    if (writer.writeAll(ids))
        throw Error(Error::Cancelled, "interrupted: " + writer.summary().toStdString());
    if (ensured)
        ensured->keep();
    if (!isQuiet)
        output.writeLine(writer.summary());
    return writer.failed() == 0 ? 0 : exitFailed;
}

int runThumb(const CommandContext &context, const ThumbArguments &arguments)
{
    const auto work = [&](LibrarySession &session, Output &output) {
        return writeThumbnails(arguments, context.options.quiet, session, output);
    };
    requireNamedDevice(context);
    return workOnLibrary(context, work);
}

void addArguments(CLI::App &command, ThumbArguments &arguments)
{
    command.add_option("ID", arguments.ids, "The ids of photos and videos")->option_text("[ID...]");
    CLI::Option *const output =
        command.add_option("-o,--output", arguments.target,
                           "The file to write, or a folder; for several ids it is a folder, made "
                           "if need be");
    output->type_name("FILE|DIR");
    command.add_option("--all", arguments.allFolder, "Write those of all to this folder")
        ->check([](const std::string &name) { return name.empty() ? "the name is empty" : ""; })
        ->type_name("DIR")
        ->excludes(output);
    command
        .add_option("--format", arguments.format,
                    "Convert; else as the device has it: JPEG, "
                    "or BMP for a packed thumbnail. A FILE that ends in \".png\" is converted, too")
        ->check(CLI::IsMember({"png"}));
    command.footer("Files are replaced. In a folder they are called \"42-IMG_0041.jpg\",\n"
                   "or \"42.bmp\" where a classic iPod knows no name.\n"
                   "\n"
                   "Examples:\n"
                   "  photolib thumb 42 -o thumb.png -d /media/phone\n"
                   "  photolib thumb 42 43 -o thumbs --format png -d /media/phone\n"
                   "  photolib thumb --all thumbs -d /media/phone");
}

} // namespace

void addThumbCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("thumb", "Write thumbnails to files");
    const auto arguments = std::make_shared<ThumbArguments>();
    addArguments(*command, *arguments);
    command->callback([&context, arguments] {
        checkArguments(*arguments);
        context.run = [&context, arguments] { return runThumb(context, *arguments); };
    });
}
