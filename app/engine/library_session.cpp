#include "engine/library_session.h"

#include "base/byte_count.h"
#include "base/cache_folder.h"
#include "base/error.h"
#include "base/log_output.h"
#include "classic/drive_links.h"
#include "classic/photo_database.h"
#include "devices/encoded_names.h"
#include "devices/folder_file_system.h"
#include "devices/local_file.h"
#include "engine/classic_catalog.h"
#include "engine/database_copy.h"
#include "engine/database_damage.h"
#include "engine/device_bounds.h"
#include "engine/photo_text.h"
#include "engine/work_folder.h"
#include "host/transfer_monitor.h"

#include <system_error>

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

// Why a device in that state cannot be read.
std::string stateText(DeviceState state)
{
    switch (state) {
    case DeviceState::Ready:
        break;
    case DeviceState::Locked:
        return "locked";
    case DeviceState::NotTrusted:
        return "does not trust this computer";
    case DeviceState::NeedsPassword:
        return "needs a password";
    case DeviceState::Gone:
        return "disconnected";
    }
    return "not readable";
}

Error::Kind errorKind(DeviceState state)
{
    switch (state) {
    case DeviceState::Ready:
        break;
    case DeviceState::Locked:
        return Error::Locked;
    case DeviceState::NotTrusted:
        return Error::NotTrusted;
    case DeviceState::NeedsPassword:
        return Error::NeedsPassword;
    case DeviceState::Gone:
        return Error::Disconnected;
    }
    return Error::Failed;
}

// Throws Error when a person has to do something before the device can be read.
void requireReady(DeviceFileSystem &files, const std::string &name)
{
    const DeviceState state = files.state();
    if (state != DeviceState::Ready)
        throw Error(errorKind(state), name + ": " + stateText(state));
}

// Throws Error unless the device holds the library database of a device of `kind`.
void requireLibrary(DeviceFileSystem &files, const std::string &name, DeviceKind kind)
{
    FileInfo info;
    FileError error;
    const QByteArray database = libraryDatabase(files, kind);
    const bool isThere = !database.isEmpty() && files.info(database, &info, &error);
    if (!isThere && (database.isEmpty() || error.kind == FileError::NotFound))
        throw Error(Error::NoLibrary, name + ": " + noDatabaseIn(kind));
    if (!isThere)
        throw Error(files.displayName(database).toStdString(), error.text.toStdString());
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

// Tells how much of a database is copied.
class CopyProgress : public TransferObserver
{
public:
    CopyProgress(DatabaseCopy &copy, OpenObserver &observer) : m_copy(copy), m_observer(observer)
    {
        m_observer.copied(0, m_copy.total());
    }

    void bytesWritten(qint64 count) override
    {
        m_copy.bytesWritten(count);
        m_observer.copied(m_copy.done(), m_copy.total());
    }

    void failed(const QByteArray &name, const FileError &error) override
    {
        m_copy.failed(name, error);
    }

private:
    DatabaseCopy &m_copy;
    OpenObserver &m_observer;
};

// Another program has the work folder that was tried.
struct FolderInUse {
};

// Whether the local file `path` begins as SQLite's files do; an empty one is a database, too.
bool isDatabase(const QByteArray &path)
{
    FileError error;
    const auto file = LocalFile::openForReading(path, &error);
    char start[16] = {};
    const qint64 count = file ? file->read(0, start, sizeof start, &error) : 0;
    return count <= 0 || QByteArray(start, sizeof start) == QByteArray("SQLite format 3", 16);
}

const char unreadableTables[] = ": its tables cannot be read";

std::string notReadable(const QByteArray &database, const std::string &cause)
{
    return database.toStdString() + ": not readable as a photo library" + cause;
}

[[noreturn]] void failToParse(const QByteArray &database, const std::string &cause)
{
    throw Error(Error::Damaged, notReadable(database, cause));
}

// What our own reading of the database logged.
std::string causeIn(const LogCapture &log)
{
    const QList<QByteArray> &failures = log.failures();
    return failures.isEmpty() ? std::string() : ": " + failures.first().toStdString();
}

// Null when another session has it.
std::unique_ptr<WorkFolder> tryWorkFolder(const QByteArray &path, const QByteArray &device)
{
    try {
        return std::make_unique<WorkFolder>(path, device, WorkFolder::Origin::Default,
                                            [] { throw FolderInUse(); });
    } catch (const FolderInUse &) {
        return nullptr;
    }
}

// `first`, or the next one beside it that no other session has.
std::unique_ptr<WorkFolder> freeWorkFolder(const QByteArray &first, const QByteArray &device)
{
    std::unique_ptr<WorkFolder> folder = tryWorkFolder(first, device);
    for (int number = 2; !folder; ++number)
        folder = tryWorkFolder(first + '-' + QByteArray::number(number), device);
    // Now it is known not to lie in the device.
    WorkFolder::removeDead(parentFolder(first));
    return folder;
}

} // namespace

LibrarySession::LibrarySession(const LibraryOptions &options, OpenObserver &observer,
                               CancelToken &cancel)
    : m_options(options)
{
    if (m_options.device.isEmpty())
        throw Error("device", "the name is empty");
    DriveLinks::removeDead();
    m_files = m_options.files ? m_options.files : openFolder(deviceName());
    m_listing = std::make_unique<DeviceListing>(*m_files);
    requireReady(*m_files, deviceName());
    const DeviceKind kind = m_options.kind == DeviceKind::None ? kindOf(*m_files) : m_options.kind;
    requireLibrary(*m_files, deviceName(), kind);
    if (kind == DeviceKind::Classic)
        openClassic(cancel);
    else
        openIos(observer, cancel);
}

LibrarySession::~LibrarySession() {}

// All that can be found wrong without writing anything is looked at before the work folder
// is touched, and again when other programs have left it.
void LibrarySession::openIos(OpenObserver &observer, CancelToken &cancel)
{
    [[maybe_unused]] const DatabaseCopy firstLook(*m_files, QByteArray());
    m_plugin = std::make_unique<Plugin>(m_options.plugin);
    m_workFolder = newWorkFolder(observer);
    DatabaseCopy copy(*m_files, m_workFolder->localDataPath().toUtf8());
    m_workFolder->requireRoom(copy.total());
    m_device = std::make_unique<Device>(m_files, DeviceKind::Ios, m_workFolder->localDataPath());
    m_library = m_plugin->makeLibrary(m_device.get());
    CopyProgress progress(copy, observer);
    const TransferWatch watch(&progress);
    const bool isParsed = parse(cancel);
    requireCopied(copy, cancel);
    if (!isParsed)
        m_parseFailure = notReadable(copy.deviceDatabase(), unreadableTables);
    readTables(copy, cancel);
    requireCopied(copy, cancel);
}

// The plug-in asks for more of a database than the lists need.
void LibrarySession::readTables(const DatabaseCopy &copy, CancelToken &cancel)
{
    const QString database = QString::fromUtf8(copy.localDatabase());
    if (!isDatabase(copy.localDatabase()))
        failToParse(copy.deviceDatabase(), ": not an SQLite database");
    try {
        m_catalog = readCatalog(database, cancel);
    } catch (const Error &error) {
        if (error.kind() != Error::Damaged)
            throw;
        failToParse(copy.deviceDatabase(), unreadableTables);
    }
    if (!m_catalog.unread.empty() || isDamaged(database, cancel))
        m_damagedDatabase = copy.deviceDatabase();
}

// A parse may well succeed on a copy that is not complete.
void LibrarySession::requireCopied(DatabaseCopy &copy, const CancelToken &cancel) const
{
    const std::string copied = byteCountsText(copy.done(), copy.total()).toStdString();
    if (cancel.isCancelled() && copy.done() < copy.total())
        throw Error(Error::Cancelled, "interrupted: " + copied + " of the database copied");
    if (cancel.isCancelled())
        throw Error(Error::Cancelled, "interrupted");
    copy.requireUnchanged(*m_files);
    if (!copy.failure().isEmpty())
        throw Error(Error::Failed, copy.failure().toStdString());
}

// A folder that is waited for, since a person named it, or by default one that no other session
// has, so that nobody waits.
std::unique_ptr<WorkFolder> LibrarySession::newWorkFolder(OpenObserver &observer) const
{
    const QByteArray named = m_options.workFolder;
    if (named.isEmpty())
        return freeWorkFolder(defaultWorkFolder(m_files->id()), m_options.device);
    return std::make_unique<WorkFolder>(named, m_options.device, WorkFolder::Origin::Named,
                                        [&] { observer.waiting(named); });
}

// The database is read where it is: nothing is copied.
void LibrarySession::openClassic(CancelToken &cancel)
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
    const LogCapture log;
    const bool isParsed = parse(cancel);
    if (cancel.isCancelled())
        throw Error(Error::Cancelled, "interrupted");
    if (!isParsed)
        failToParse(m_files->displayName(libraryDatabase(*m_files, DeviceKind::Classic)),
                    causeIn(log));
    m_catalog = classicCatalog(*m_library, *m_device->classicIpod());
}

// The plug-in's own cancel would end the parses of all sessions. A device that answers no more ends
// this one.
bool LibrarySession::parse(CancelToken &cancel)
{
    const CancelHook hook(cancel, [this] { m_files->close(); });
    return m_library->parseLib();
}

std::unique_ptr<EnsuredFolder> LibrarySession::folderOutside(const QByteArray &path) const
{
    const auto check = [&](const QByteArray &written) {
        ::refuseInDevice(written, m_options.device, path);
    };
    return std::make_unique<EnsuredFolder>(path, 0777, check);
}

void LibrarySession::refuseInDevice(const QByteArray &folder) const
{
    ::refuseInDevice(folder, m_options.device, folder);
}

photo_manager_int &LibrarySession::library()
{
    if (!m_parseFailure.empty())
        throw Error(Error::Damaged, m_parseFailure);
    return *m_library;
}

// The plug-in refuses an empty file like a missing one.
FileState LibrarySession::photo(quint64 id, photoItem *item)
{
    library().getPhoto(id, item);
    return fileState(*item);
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

FileState LibrarySession::fileState(const Asset &asset)
{
    FileError error;
    if (classicIpod() || m_listing->has(asset.path(), &error))
        return FileState::There;
    requireConnected(error);
    if (error.isMissing())
        return FileState::Missing;
    noteUnreadable(QString::fromUtf8(asset.path()), error);
    return FileState::Unreadable;
}

void LibrarySession::noteUnreadable(const QString &name, const FileError &error)
{
    if (++m_unreadable == 1)
        m_firstUnreadable = name + QLatin1String(": ") + error.text;
}

QByteArray LibrarySession::damageText() const
{
    if (m_damagedDatabase.isEmpty())
        return QByteArray();
    return m_damagedDatabase + ": damaged; only a part of the library can be read";
}

QString LibrarySession::unreadableText() const
{
    if (m_unreadable == 0)
        return QString();
    const QString files = m_unreadable == 1 ? QStringLiteral("file") : QStringLiteral("files");
    return QStringLiteral("%1; %2 %3 cannot be read")
        .arg(m_firstUnreadable, QString::number(m_unreadable), files);
}

void LibrarySession::requireDevice() const
{
    FileInfo info;
    FileError error;
    if (!m_files->info("/", &info, &error))
        requireConnected(error);
}

void LibrarySession::requireConnected(const FileError &error) const
{
    if (error.kind == FileError::Disconnected)
        throw Error(Error::Disconnected, deviceName() + ": " + error.text.toStdString());
}
