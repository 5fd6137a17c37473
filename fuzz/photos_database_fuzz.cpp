// Photos.sqlite and its write-ahead log through the parse of the database, and through the reading
// of the program's catalog.
//
// An input is a database file; or, when it begins with "CREATE ", the SQL that makes one; or, when
// it begins with "SCHEMA", the schema's text: after that line one of `name: definition` for each
// entry that is changed or added; or the length of the database in 32 bits, the database, and the
// log.

#include "base/cancel_token.h"
#include "base/error.h"
#include "cameradb/camera_db_parse.h"
#include "cameradb/owned_model.h"
#include "catalog/catalog.h"
#include "fuzz/fuzz_host.h"
#include "fuzz/fuzz_input.h"
#include "support/photos_database.h"

#include <QFile>

#include <cstdlib>

namespace {

// Of the SQL as much is run as does no harm: it neither reaches other files nor takes long.
void confine(sqlite3 *db)
{
    constexpr int mostSteps = 200000;
    constexpr int mostBytes = 1 << 20;
    sqlite3_limit(db, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(db, SQLITE_LIMIT_LENGTH, mostBytes);
    sqlite3_progress_handler(
        db, mostSteps, [](void *) { return 1; }, nullptr);
}

QByteArray serialized(sqlite3 *db)
{
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> image(
        sqlite3_serialize(db, "main", &size, 0), &sqlite3_free);
    return {reinterpret_cast<const char *>(image.get()), static_cast<int>(size)};
}

QByteArray databaseOf(const QByteArray &sql)
{
    const SqliteOwner db = openEmptyDatabase();
    confine(db.get());
    // Where a statement is none the ones before it count.
    sqlite3_exec(db.get(), sql.constData(), nullptr, nullptr, nullptr);
    return serialized(db.get());
}

PhotosDatabase smallLibrary()
{
    PhotosDatabase library;
    library.rows.libraryUuids = {"45A4A0C8-8612-4893-A017-25E9315171FA"};
    library.rows.assets = {photoRow(1, 5), photoRow(2, 5), videoRow(3, 9)};
    library.rows.attributes = {{1, 1, 2.5, 77}};
    library.rows.albums = {albumRow(4), albumRow(5, 12)};
    library.join().add(4, 1);
    return library;
}

void runWith(sqlite3 *db, const char *sql, const QByteArray &name, const QByteArray &definition)
{
    sqlite3_stmt *stmt = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
    sqlite3_bind_text(stmt, 1, name.constData(), name.size(), SQLITE_TRANSIENT);
    sqlite3_bind_text(stmt, 2, definition.constData(), definition.size(), SQLITE_TRANSIENT);
    sqlite3_step(stmt);
    sqlite3_finalize(stmt);
}

// A small library whose schema says what SQLite would refuse to write.
QByteArray libraryWith(const QByteArray &schema)
{
    const SqliteOwner db = smallLibrary().open();
    runSql(db.get(), "PRAGMA writable_schema = ON");
    for (const QByteArray &line : schema.split('\n').mid(1)) {
        const int colon = line.indexOf(": ");
        if (colon < 0)
            continue;
        const QByteArray name = line.left(colon);
        const QByteArray definition = line.mid(colon + 2);
        runWith(db.get(), "UPDATE sqlite_master SET sql = ?2 WHERE name = ?1", name, definition);
        if (sqlite3_changes(db.get()) == 0)
            runWith(db.get(),
                    "INSERT INTO sqlite_master SELECT CASE WHEN ?2 LIKE 'CREATE VIEW%' THEN 'view' "
                    "WHEN ?2 LIKE 'CREATE INDEX%' THEN 'index' ELSE 'table' END, ?1, ?1, CASE WHEN "
                    "?2 LIKE 'CREATE V%' THEN 0 ELSE rootpage END, ?2 FROM sqlite_master WHERE "
                    "name = 'Z_METADATA'",
                    name, definition);
    }
    return serialized(db.get());
}

struct DatabaseFiles {
    QByteArray database;
    QByteArray log;
};

DatabaseFiles filesOf(const QByteArray &input)
{
    if (input.startsWith("CREATE "))
        return {databaseOf(QByteArray(input.constData(), input.size())), {}}; // ended by a zero
    if (input.startsWith("SCHEMA\n"))
        return {libraryWith(input), {}};
    if (input.startsWith("SQLite format 3"))
        return {input, {}};
    FuzzInput pieces(reinterpret_cast<const std::uint8_t *>(input.constData()),
                     static_cast<std::size_t>(input.size()));
    const quint32 length = pieces.u32();
    const QByteArray files = pieces.rest();
    const QByteArray database = files.left(static_cast<int>(qMin<quint32>(length, 1U << 30)));
    return {database, files.mid(database.size())};
}

void parse(const DatabaseFiles &files)
{
    FakeHost host(FakeHost::Disk::Real);
    FakeIPod device;
    device.localData = copiesFolder();
    host.setDeviceFile("/PhotoData/Photos.sqlite", files.database);
    if (!files.log.isEmpty())
        host.setDeviceFile("/PhotoData/Photos.sqlite-wal", files.log);
    const OwnedModel model(cameraDBParse(&device));
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        std::abort();
}

// Who lists a catalog looks photos up, and follows the folders upwards.
void followReferences(const Catalog &catalog)
{
    for (const Album &album : catalog.albums) {
        for (const qint64 id : album.assets)
            ASSERT_TRUE(catalog.asset(id));
        for (const Album *above = &album; above && above->parent;)
            above = catalog.album(*above->parent);
    }
    for (const Person &person : catalog.people) {
        for (const qint64 id : person.assets)
            ASSERT_TRUE(catalog.asset(id));
    }
}

void readCatalog(const DatabaseFiles &files)
{
    const QString database = copiesFolder() + QStringLiteral("Catalog.sqlite");
    QFile::remove(database + QStringLiteral("-shm"));
    writeFile(database, files.database);
    writeFile(database + QStringLiteral("-wal"), files.log);
    CancelToken cancel;
    try {
        followReferences(::readCatalog(database, cancel));
    } catch (const Error &) {
        // It is no library.
    }
}

} // namespace

// Of two rows with one key the second record takes the first one's place in the model, and the
// first is left to nobody. What makes records is `asset_reader::read`, which GCC's reports
// shorten.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:asset_reader::read\n"
           "leak:^read$\n"
           "leak:selectCameraAblumValues\n";
}

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    return initializeFuzzing(argc, argv);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const DatabaseFiles files = filesOf(input.rest());
    parse(files);
    readCatalog(files);
    return 0;
}
