// Photos.sqlite and its write-ahead log through the parse of the database.
//
// An input is a database file; or, when it begins with "CREATE ", the SQL that makes one; or the
// length of the database in 32 bits, the database, and the log.

#include "cameradb/camera_db_parse.h"
#include "cameradb/owned_model.h"
#include "fuzz/fuzz_host.h"
#include "fuzz/fuzz_input.h"
#include "support/photos_database.h"

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

QByteArray databaseOf(const QByteArray &sql)
{
    const SqliteOwner db = openEmptyDatabase();
    confine(db.get());
    // Where a statement is none the ones before it count.
    sqlite3_exec(db.get(), sql.constData(), nullptr, nullptr, nullptr);
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> image(
        sqlite3_serialize(db.get(), "main", &size, 0), &sqlite3_free);
    return {reinterpret_cast<const char *>(image.get()), static_cast<int>(size)};
}

// Puts the files of an input on the device.
void setDeviceFiles(FakeHost &host, const QByteArray &input)
{
    QByteArray database = input;
    if (input.startsWith("CREATE ")) {
        database = databaseOf(QByteArray(input.constData(), input.size())); // ended by a zero
    } else if (!input.startsWith("SQLite format 3")) {
        FuzzInput pieces(reinterpret_cast<const std::uint8_t *>(input.constData()),
                         static_cast<std::size_t>(input.size()));
        const quint32 length = pieces.u32();
        const QByteArray files = pieces.rest();
        database = files.left(static_cast<int>(qMin<quint32>(length, 1U << 30)));
        host.setDeviceFile("/PhotoData/Photos.sqlite-wal", files.mid(database.size()));
    }
    host.setDeviceFile("/PhotoData/Photos.sqlite", database);
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
    FakeHost host(FakeHost::Disk::Real);
    FakeIPod device;
    device.localData = copiesFolder();
    setDeviceFiles(host, input.rest());
    const OwnedModel model(cameraDBParse(&device));
    return 0;
}
