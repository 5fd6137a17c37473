#include "engine/library_session.h"

#include "classic/photo_database.h"
#include "base/cache_folder.h"
#include "base/error.h"
#include "engine/database_copy.h"
#include "engine/default_device.h"
#include "engine/device_bounds.h"
#include "cli/parse_run.h"
#include "engine/photo_text.h"
#include "cli/progress_bar.h"
#include "devices/folder_file_system.h"
#include "devices/encoded_names.h"
#include "base/log_output.h"

#include <system_error>
#include <unistd.h>

namespace {

Error folderError(const std::string &name, const FileError &error)
{
    if (error.kind == FileError::NotFound)
        return {name, "no such folder"};
    if (error.kind == FileError::WrongType)
        return {name, "not a folder"};
    return {name, error.text.toStdString()};
}

// The database's path on the device for people: without the "/" in front.
QByteArray shownPath(const char *path)
{
    return path + 1;
}

std::string noDatabaseIn(DeviceKind kind)
{
    const QByteArray ios = shownPath(databasePath);
    const QByteArray classic = shownPath(photoDatabasePath);
    const QByteArray expected = kind == DeviceKind::Ios       ? ios
                                : kind == DeviceKind::Classic ? classic
                                                              : ios + " or " + classic;
    return "no photo database in it (" + expected.toStdString() + ")";
}

DeviceKind kindOf(DeviceFileSystem &files)
{
    DeviceKind kind = DeviceKind::None;
    FileError error;
    if (!findDeviceKind(files, &kind, &error))
        throw Error(files.displayName(libraryDatabase(files, kind)).toStdString(),
                           error.text.toStdString());
    return kind;
}

// Throws Error unless the device holds the library database of a device of `kind`.
void requireLibrary(DeviceFileSystem &files, const std::string &name, DeviceKind kind)
{
    FileInfo info;
    FileError error;
    const QByteArray database = libraryDatabase(files, kind);
    const bool isThere = !database.isEmpty() && files.info(database, &info, &error);
    if (!isThere && (database.isEmpty() || error.kind == FileError::NotFound))
        throw Error(name, noDatabaseIn(kind));
    if (!isThere)
        throw Error(files.displayName(database).toStdString(), error.text.toStdString());
    if (files.isBlocked())
        throw Error(name, "locked");
}

std::shared_ptr<DeviceFileSystem> openFolder(const std::string &name)
{
    FileError error;
    std::shared_ptr<DeviceFileSystem> files =
        FolderFileSystem::openFolder(QByteArray::fromStdString(name), &error);
    if (!files)
        throw folderError(name, error);
    return files;
}

// What the plug-in logged of a parse and matters to a person.
QList<QByteArray> withoutHarmless(const QList<QByteArray> &failures, const DatabaseCopy &copy)
{
    QList<QByteArray> result;
    for (const QByteArray &line : failures) {
        if (!copy.isHarmless(line))
            result.append(line);
    }
    return result;
}

[[noreturn]] void failInterrupted(const DatabaseCopy &copy)
{
    throw Error(Error::Cancelled,
                       "interrupted: " + byteCountsText(copy.done(), copy.total()).toStdString() +
                           " of the database copied; the partial copy is " +
                           copy.localDatabase().toStdString());
}

// The first line that was logged is the cause of the others.
[[noreturn]] void failToParse(const QByteArray &database, const QList<QByteArray> &failures)
{
    const QByteArray cause = failures.isEmpty() ? "no cause is known" : failures.first();
    throw Error(database.toStdString(),
                       "not readable as a photo library (" + cause.toStdString() + ")");
}

} // namespace

LibrarySession::LibrarySession(const CommonOptions &options,
                               const std::optional<std::string> &device)
    : m_options(options)
{
    chooseDevice(device);
    m_files = openFolder(m_name);
    const DeviceKind kind = m_options.kind == DeviceKind::None ? kindOf(*m_files) : m_options.kind;
    requireLibrary(*m_files, m_name, kind);
    if (kind == DeviceKind::Classic)
        openClassic();
    else
        openIos();
}

void LibrarySession::chooseDevice(const std::optional<std::string> &device)
{
    if (device) {
        if (device->empty())
            throw Error("DEVICE", "the name is empty");
        m_name = *device;
        return;
    }
    const DefaultDevice sample = defaultDevice();
    m_name = sample.folder.toStdString();
    m_isSample = true;
    m_isNewSample = sample.isNew;
}

QByteArray LibrarySession::workFolderName() const
{
    if (!m_options.workFolder.empty())
        return QByteArray::fromStdString(m_options.workFolder);
    return defaultWorkFolder(QByteArray::fromStdString(m_name));
}

// All that can be found wrong without writing anything is looked at before the work folder
// is touched, and again when other programs have left it.
void LibrarySession::openIos()
{
    const QByteArray workFolder = workFolderName();
    [[maybe_unused]] const DatabaseCopy firstLook(*m_files, workFolder + '/');
    m_plugin = std::make_unique<Plugin>(m_options.plugin);
    const auto tellOfWait = [&] {
        if (!m_options.quiet)
            writeErrorLine("photolib: waiting for another program that uses " + workFolder);
    };
    const auto origin =
        m_options.workFolder.empty() ? WorkFolder::Origin::Default : WorkFolder::Origin::Named;
    m_workFolder = std::make_unique<WorkFolder>(workFolder, QByteArray::fromStdString(m_name),
                                                origin, tellOfWait);
    DatabaseCopy copy(*m_files, workFolder + '/');
    m_workFolder->requireRoom(copy.total());
    m_device = std::make_unique<Device>(m_files, DeviceKind::Ios, m_workFolder->localDataPath());
    m_library = m_plugin->makeLibrary(m_device.get());
    runParse(copy);
    m_workFolder->unlock();
}

// The database is read where it is: nothing is copied.
void LibrarySession::openClassic()
{
    m_plugin = std::make_unique<Plugin>(m_options.plugin);
    try {
        m_device = std::make_unique<Device>(m_files, DeviceKind::Classic, QString());
    } catch (const std::system_error &error) {
        // It begins with the path.
        throw Error(Error::Failed,
                           std::string("cannot make a temporary folder in ") + error.what());
    }
    m_library = m_plugin->makeLibrary(m_device.get());
    QList<QByteArray> failures;
    ParseResult result = ParseResult::Failed;
    {
        const LogCapture log;
        result = parseLibrary(*m_library, *m_plugin, [] {});
        failures = log.failures();
    }
    if (result == ParseResult::Interrupted)
        throw Error(Error::Cancelled, "interrupted");
    if (result == ParseResult::Failed)
        failToParse(m_files->displayName(libraryDatabase(*m_files, DeviceKind::Classic)), failures);
    passOn(failures);
}

// Shows what a parse that was captured logged, unless that was shown already.
void LibrarySession::passOn(const QList<QByteArray> &failures) const
{
    if (m_options.verbose)
        return;
    for (const QByteArray &line : failures)
        logLine("PHOTOLIB", 2, line);
}

void LibrarySession::runParse(DatabaseCopy &copy)
{
    ParseResult result = ParseResult::Failed;
    QList<QByteArray> failures;
    {
        const LogCapture log;
        const TransferWatch watch(&copy);
        ProgressBar bar(showsProgress(), QStringLiteral("Copying the database"));
        result = parseLibrary(*m_library, *m_plugin, [&] {
            bar.show(copy.done(), copy.total(), byteCountsText(copy.done(), copy.total()));
        });
        failures = withoutHarmless(log.failures(), copy);
    }
    if (result == ParseResult::Interrupted) {
        m_workFolder->keep();
        failInterrupted(copy);
    }
    // A parse may well succeed on a copy that is not complete.
    copy.requireUnchanged(*m_files);
    if (!copy.failure().isEmpty())
        throw Error(Error::Failed, copy.failure().toStdString());
    if (result == ParseResult::Failed)
        failToParse(copy.deviceDatabase(), failures);
    passOn(failures);
}

void LibrarySession::keepCopies()
{
    if (m_workFolder)
        m_workFolder->keep();
}

std::unique_ptr<EnsuredFolder> LibrarySession::folderOutside(const QByteArray &path) const
{
    const auto device = QByteArray::fromStdString(m_name);
    const auto check = [&](const QByteArray &written) { ::refuseInDevice(written, device, path); };
    return std::make_unique<EnsuredFolder>(path, 0777, check);
}

void LibrarySession::refuseInDevice(const QByteArray &folder) const
{
    ::refuseInDevice(folder, QByteArray::fromStdString(m_name), folder);
}

bool LibrarySession::showsProgress() const
{
    return !m_options.quiet && !m_options.verbose && ::isatty(STDERR_FILENO);
}

FileState LibrarySession::photo(quint64 id, photoItem *item)
{
    const bool hasContent = m_library->getPhoto(id, item);
    const FileState state = fileState(*item);
    return state == FileState::There && !hasContent ? FileState::Missing : state;
}

// The plug-in also takes a path for one of the host computer's own. What the database names
// outside the device is none of its photos. A classic iPod's photos have no paths: their
// pictures are in files that they share.
FileState LibrarySession::fileState(const photoItem &item)
{
    if (classicIpod())
        return FileState::There;
    FileInfo info;
    FileError error;
    const bool isThere = deviceFileInfo(*m_files, item.path.toUtf8(), &info, &error);
    if (isThere)
        return info.type == FileInfo::File ? FileState::There : FileState::Missing;
    requireConnected(error);
    if (error.isMissing())
        return FileState::Missing;
    noteUnreadable(labelText(item), error);
    return FileState::Unreadable;
}

void LibrarySession::noteUnreadable(const QString &name, const FileError &error)
{
    if (++m_unreadable == 1)
        m_firstUnreadable = name + QLatin1String(": ") + error.text;
}

QString LibrarySession::unreadableText() const
{
    if (m_unreadable == 0)
        return QString();
    const QString files = m_unreadable == 1 ? QStringLiteral("file") : QStringLiteral("files");
    return QStringLiteral("%1; %2 %3 can not be read")
        .arg(m_firstUnreadable, QString::number(m_unreadable), files);
}

void LibrarySession::requireDevice() const
{
    FileInfo info;
    FileError error;
    if (!m_files->info("/", &info, &error))
        requireConnected(error);
}

// Once the device is gone every file looks missing.
void LibrarySession::requireConnected(const FileError &error) const
{
    if (error.kind == FileError::Disconnected)
        throw Error(m_name, error.text.toStdString());
}

void LibrarySession::announce() const
{
    if (!m_isSample || m_options.quiet)
        return;
    const std::string note = m_isNewSample ? "no device named; made a sample device in "
                                           : "no device named; showing the sample device in ";
    writeErrorLine(QByteArray::fromStdString("photolib: " + note + m_name));
}
