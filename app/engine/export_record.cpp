#include "engine/export_record.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/file_names.h"
#include "base/folders.h"
#include "base/unique_fd.h"
#include "engine/export_state.h"
#include "engine/record_copy.h"
#include "engine/record_database.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>

namespace {

constexpr char databaseName[] = "export.sqlite";

constexpr qint64 applicationId = 0x504c4578; // "PLEx"
constexpr qint64 formatVersion = 1;

struct SchemaObject {
    const char *name;
    const char *sql; // as SQLite keeps it
};

// What a record of this version consists of, by name.
constexpr SchemaObject schema[] = {
    {"album_files", "CREATE TABLE album_files(path TEXT NOT NULL PRIMARY KEY, kind TEXT NOT NULL, "
                    "target TEXT NOT NULL) WITHOUT ROWID"},
    {"files", "CREATE TABLE files(path TEXT NOT NULL PRIMARY KEY, uuid TEXT NOT NULL, role TEXT "
              "NOT NULL, source TEXT NOT NULL, size INTEGER NOT NULL, modified INTEGER NOT NULL, "
              "sha256 TEXT NOT NULL, exported INTEGER NOT NULL, current INTEGER NOT NULL) "
              "WITHOUT ROWID"},
    {"files_current",
     "CREATE UNIQUE INDEX files_current ON files(uuid, role, source) WHERE current = 1"},
};

constexpr const char *kindWords[] = {"link", "hardLink", "copy"};

enum class State { Empty, Complete };

bool isStateName(const QByteArray &name)
{
    return name.startsWith('.') &&
           comparedName(name) == QLatin1String(exportStateName); // some disks tell no case apart
}

// Whether `path` names something below the folder of the export, and nothing of its record.
bool isBelowFolder(const QByteArray &path)
{
    const QByteArray whole = '/' + path + '/';
    return !whole.contains("//") && !whole.contains("/./") && !whole.contains("/../") &&
           !path.contains('\0') && !isStateName(path.mid(0, path.indexOf('/')));
}

bool isSha256(const QByteArray &text)
{
    const auto isDigit = [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'f');
    };
    return text.size() == 64 && std::all_of(text.begin(), text.end(), isDigit);
}

// What no record may hold of it; null when all is well.
const char *faultOf(const RecordedFile &file)
{
    if (!isBelowFolder(file.path))
        return "a path leads out of the folder";
    if (!isSha256(file.sha256))
        return "a SHA-256 is none";
    return file.size < 0 ? "a size is negative" : nullptr;
}

const char *faultOf(const RecordedAlbumFile &file)
{
    return isBelowFolder(file.path) && isBelowFolder(file.target)
               ? nullptr
               : "a path leads out of the folder";
}

template <typename File>
void requireSound(const RecordDatabase &database, const File &file)
{
    if (const char *const fault = faultOf(file))
        database.failDamaged(fault);
}

template <typename File>
void requireStorable(const RecordDatabase &database, const std::vector<File> &files)
{
    for (const File &file : files) {
        if (const char *const fault = faultOf(file))
            throw Error(database.name().toStdString(), "cannot be written: " + std::string(fault));
    }
}

// The record's own tables and nothing else, but for the statistics that a person's tool may add.
bool hasSchema(const RecordDatabase &database)
{
    RecordStatement objects(database,
                            "SELECT name, coalesce(sql, '') FROM sqlite_master "
                            "WHERE name NOT LIKE 'sqlite\\_stat%' ESCAPE '\\' ORDER BY name");
    for (const SchemaObject &object : schema) {
        if (!objects.nextRow() || objects.text(0) != object.name || objects.text(1) != object.sql)
            return false;
    }
    return !objects.nextRow();
}

// Throws Error when it is neither a record of this version nor about to become one.
State stateOf(const RecordDatabase &database)
{
    const qint64 application = database.number("PRAGMA application_id");
    const qint64 version = database.number("PRAGMA user_version");
    const qint64 objects = database.number("SELECT count(*) FROM sqlite_master");
    if (application == 0 && version == 0 && objects == 0)
        return State::Empty;
    if (application != applicationId)
        throw Error(database.name().toStdString(), "is not the record of an export");
    if (version > formatVersion)
        throw Error(database.name().toStdString(), "was made by a newer version of photolib");
    if (version != formatVersion || !hasSchema(database))
        database.failDamaged("its tables are not those of a record");
    return State::Complete;
}

// All or nothing, whenever the process is killed.
void makeTables(const RecordDatabase &database)
{
    RecordTransaction transaction(database);
    database.run(("PRAGMA application_id = " + QByteArray::number(applicationId)).constData());
    database.run(("PRAGMA user_version = " + QByteArray::number(formatVersion)).constData());
    // The index comes after its table.
    for (const SchemaObject &object : schema)
        database.run(object.sql);
    transaction.commit();
}

ExportRole readRole(const RecordDatabase &database, const QByteArray &word)
{
    const std::optional<ExportRole> role = exportRoleOf(word);
    if (!role)
        database.failDamaged("a role is unknown");
    return *role;
}

RecordedAlbumFile::Kind readKind(const RecordDatabase &database, const QByteArray &word)
{
    const auto *const found = std::find(std::begin(kindWords), std::end(kindWords), word);
    if (found == std::end(kindWords))
        database.failDamaged("a kind of file is unknown");
    return static_cast<RecordedAlbumFile::Kind>(found - std::begin(kindWords));
}

std::vector<RecordedFile> readFiles(const RecordDatabase &database)
{
    std::vector<RecordedFile> files;
    RecordStatement rows(database, "SELECT path, uuid, role, source, size, modified, sha256, "
                                   "exported, current FROM files ORDER BY path");
    while (rows.nextRow()) {
        RecordedFile file;
        file.path = rows.text(0);
        file.photo = rows.text(1);
        file.role = readRole(database, rows.text(2));
        file.source = rows.text(3);
        file.size = rows.number(4);
        file.modified = rows.number(5);
        file.sha256 = rows.text(6);
        file.exported = rows.number(7);
        file.isCurrent = rows.number(8) != 0;
        requireSound(database, file);
        files.push_back(std::move(file));
    }
    return files;
}

std::vector<RecordedAlbumFile> readAlbumFiles(const RecordDatabase &database)
{
    std::vector<RecordedAlbumFile> files;
    RecordStatement rows(database, "SELECT path, kind, target FROM album_files ORDER BY path");
    while (rows.nextRow()) {
        RecordedAlbumFile file;
        file.path = rows.text(0);
        file.kind = readKind(database, rows.text(1));
        file.target = rows.text(2);
        requireSound(database, file);
        files.push_back(std::move(file));
    }
    return files;
}

ExportContents readContents(const RecordDatabase &database)
{
    return {readFiles(database), readAlbumFiles(database)};
}

struct FreeText {
    void operator()(char *text) const { std::free(text); } // realpath calls malloc
};

// SQLite refuses a path with links, which a person may well have on the way to the folder.
QByteArray pathWithoutLinks(const ExportState &state)
{
    const std::unique_ptr<char, FreeText> path(::realpath(state.path().constData(), nullptr));
    if (!path)
        throw Error(state.path().toStdString(), std::generic_category().message(errno));
    if (!isStillAt(state.fd(), path.get()))
        throw Error(state.path().toStdString(), "was moved");
    return QByteArray(path.get()) + '/' + databaseName;
}

// That of a copy, of which each page is looked at: what comes to light only when a file is to be
// added would come too late.
State stateOfCopy(const RecordDatabase &copy)
{
    const State state = stateOf(copy);
    RecordStatement check(copy, "PRAGMA integrity_check(1)");
    if (!check.nextRow() || check.text(0) != "ok")
        copy.failDamaged("database disk image is malformed"); // SQLite's words for all such faults
    return state;
}

// What cannot become a record is not even opened: that alone may change its files.
void requireUsable(const ExportState &state, const QByteArray &name)
{
    const CancelToken never;
    const RecordCopy copy(state.fd(), name, never);
    if (copy.exists())
        stateOfCopy(RecordDatabase(copy.path(), name));
}

QByteArray nameOfRecord(const QByteArray &stateFolder)
{
    return stateFolder + '/' + databaseName;
}

// Not open where there is none.
UniqueFd openStateFolder(const QByteArray &path)
{
    UniqueFd fd = openFolderIn(AT_FDCWD, path.constData());
    if (!fd.isOpen() && errno == ENOTDIR)
        throw Error(path.toStdString(), "a link or a file, where a folder is needed");
    if (!fd.isOpen() && errno != ENOENT)
        throw Error(path.toStdString(), std::generic_category().message(errno));
    return fd;
}

} // namespace

class ExportRecord::Database : public RecordDatabase
{
public:
    Database(const QByteArray &path, const QByteArray &name) : RecordDatabase(path, name)
    {
        const State state = stateOf(*this);
        // Whoever was told that files were copied may pull the plug.
        run("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; "
            "PRAGMA cache_size = -32768; PRAGMA wal_autocheckpoint = 8192");
        if (state == State::Empty)
            makeTables(*this);
    }
};

ExportRecord::ExportRecord(const ExportState &state)
{
    const QByteArray name = nameOfRecord(state.path());
    requireUsable(state, name);
    m_database = std::make_unique<Database>(pathWithoutLinks(state), name);
}

ExportRecord::~ExportRecord() = default;

ExportContents ExportRecord::contents() const
{
    return readContents(*m_database);
}

void ExportRecord::add(const std::vector<RecordedFile> &files)
{
    const RecordDatabase &database = *m_database;
    requireStorable(database, files);
    RecordTransaction transaction(database);
    RecordStatement retire(database, "UPDATE files SET current = 0 WHERE uuid = ? AND role = ? "
                                     "AND source = ? AND current = 1");
    RecordStatement forgetAlbumFile(database, "DELETE FROM album_files WHERE path = ?");
    RecordStatement insert(database, "INSERT OR REPLACE INTO files(path, uuid, role, source, size, "
                                     "modified, sha256, exported, current) "
                                     "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)");
    for (const RecordedFile &file : files) {
        const QByteArray role = wordFor(file.role);
        if (file.isCurrent)
            retire.bind(file.photo).bind(role).bind(file.source).run();
        forgetAlbumFile.bind(file.path).run();
        insert.bind(file.path).bind(file.photo).bind(role).bind(file.source);
        insert.bind(file.size).bind(file.modified).bind(file.sha256).bind(file.exported);
        insert.bind(qint64(file.isCurrent)).run();
    }
    transaction.commit();
}

void ExportRecord::forget(const std::vector<QByteArray> &paths)
{
    const RecordDatabase &database = *m_database;
    RecordTransaction transaction(database);
    RecordStatement remove(database, "DELETE FROM files WHERE path = ?");
    for (const QByteArray &path : paths)
        remove.bind(path).run();
    transaction.commit();
}

void ExportRecord::setAlbumFiles(const std::vector<RecordedAlbumFile> &files)
{
    const RecordDatabase &database = *m_database;
    requireStorable(database, files);
    RecordTransaction transaction(database);
    database.run("DELETE FROM album_files");
    RecordStatement insert(database, "INSERT OR REPLACE INTO album_files(path, kind, target) "
                                     "VALUES(?, ?, ?)");
    for (const RecordedAlbumFile &file : files) {
        const QByteArray kind = kindWords[file.kind];
        insert.bind(file.path).bind(kind).bind(file.target).run();
    }
    transaction.commit();
}

ExportContents readExportRecord(const QByteArray &exportFolder)
{
    const CancelToken never;
    return readExportRecord(exportFolder, never);
}

ExportContents readExportRecord(const QByteArray &exportFolder, const CancelToken &cancel)
{
    const QByteArray path = exportStatePath(exportFolder);
    const UniqueFd folder = openStateFolder(path);
    if (!folder.isOpen())
        return {};
    const QByteArray name = nameOfRecord(path);
    const RecordCopy copy(folder.get(), name, cancel);
    if (!copy.exists())
        return {};
    const RecordDatabase database(copy.path(), name);
    database.endWith(cancel);
    return stateOfCopy(database) == State::Complete ? readContents(database) : ExportContents();
}

bool hasExportRecord(const QByteArray &exportFolder)
{
    const UniqueFd folder = openStateFolder(exportStatePath(exportFolder));
    struct stat status = {};
    return folder.isOpen() &&
           ::fstatat(folder.get(), databaseName, &status, AT_SYMLINK_NOFOLLOW) == 0;
}
