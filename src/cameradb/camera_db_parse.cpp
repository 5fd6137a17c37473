#include "cameradb/camera_db_parse.h"

#include "cameradb/asset_queries.h"
#include "cameradb/asset_schema.h"
#include "cameradb/cancel_flag.h"
#include "cameradb/device_copy.h"
#include "cameradb/join_table.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "host/iipod.h"
#include "sqlite/row_allowance.h"
#include "sqlite/sqlite_connection.h"
#include "sqlite/sqlite_statement.h"

// The temporary-files location moved between the Qt releases; all other code builds
// against either.
#if QT_VERSION >= 0x050000
#include <QStandardPaths>
#else
#include <QDesktopServices>
#endif

#include <memory>

std::atomic<bool> gbShouldQuit(false);

namespace {

QString temporaryFolder()
{
#if QT_VERSION >= 0x050000
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::TempLocation);
#else
    const QString folder = QDesktopServices::storageLocation(QDesktopServices::TempLocation);
#endif
    return folder + QLatin1Char('/');
}

QString workFolder(IIPod *device)
{
    // The host's text is used as it stands, with or without a closing separator.
    const QString folder = device ? device->localDataPath() : QString();
    return folder.isEmpty() ? temporaryFolder() : folder;
}

bool isCancelled()
{
    return gbShouldQuit.load(std::memory_order_relaxed);
}

// 0 when the copy of the database may be opened, otherwise what the parse yields.
int copyDatabase(IIPod *device, const QString &localDb)
{
    const QString deviceDb = QString::fromLatin1("/PhotoData/Photos.sqlite");
    const int result = savefiletoLocation(device, deviceDb, localDb);
    if (isCancelled())
        return -1;
    if (result != 0)
        return result;
    const char *const journals[] = {"-wal", "-shm"};
    for (const char *journal : journals) {
        // A device need not have a journal, so a failed copy is no failure.
        const QString suffix = QLatin1String(journal);
        savefiletoLocation(device, deviceDb + suffix, localDb + suffix);
        if (isCancelled())
            return -1;
    }
    return 0;
}

void queryDBInfo(sqlite3 *db, CameraDB *cameraDb)
{
    if (!db) {
        g_return_if_fail_warning(nullptr, "int queryDBInfo(sqlite3 *, CameraDB *)", "sql_db");
        return;
    }
    sqlite_statement statement(db, "select Z_VERSION, Z_UUID from Z_METADATA");
    if (!statement.isPrepared())
        return;
    row_allowance allowance(db);
    while (!allowance.isExhausted() && statement.nextRow()) {
        const void *uuid = sqlite3_column_blob(statement.get(), 1);
        const int size = sqlite3_column_bytes(statement.get(), 1);
        if (uuid)
            cameraDb->uuid.append(static_cast<const char *>(uuid), size);
        allowance.spend(size);
    }
}

bool queryMasterInfo(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb)
{
    if (!db) {
        g_return_if_fail_warning(nullptr, "bool queryMasterInfo(sqlite3 *, CameraDB *)", "sql_db");
        return false;
    }
    if (!schema.isRead()) {
        Log("PHOTOLIB", 2, "master sql error #%d: %s", schema.result(), schema.message());
        return false;
    }
    cameraDb->hasKindSubtype = cameraDb->hasKindSubtype || schema.hasKindSubtype();
    cameraDb->hasAssetTable = schema.isZasset();
    return true;
}

int runQueries(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb)
{
    if (!queryMasterInfo(db, schema, cameraDb))
        return 0;
    if (!readCameraAlbum(db, schema, cameraDb))
        return 0;
    if (!readCameraPhotos(db, schema, cameraDb))
        return 0;
    if (!readCameraVideo(db, schema, cameraDb))
        return 0;
    if (!queryAlbumPhoto(db, cameraDb))
        return 0;
    Log("PHOTOLIB", 1, "Parser_Ath_camera_DB success");
    return 1;
}

int readDatabase(const QString &localDb, CameraDB *cameraDb)
{
    sqlite_connection connection(localDb);
    if (!connection.isOpen()) {
        Log("PHOTOLIB", 2, "Can not open sqlite db");
        return -1;
    }
    queryDBInfo(connection.get(), cameraDb);
    Log("PHOTOLIB", 1, "Parser_Ath_camera_DB");
    const asset_schema schema(connection.get());
    const int result = runQueries(connection.get(), schema, cameraDb);
    // Also after a failed query: the records filed until then are completed.
    Log("PHOTOLIB", 1, "Parser_Ath_camera_DB extend info");
    readCameraExtendInfo(connection.get(), schema, cameraDb->assets);
    Log("PHOTOLIB", 1, "Parser_Ath_camera_DB extend info end");
    return result;
}

int copyAndRead(IIPod *device, CameraDB *cameraDb)
{
    const QString localDb = workFolder(device) + QLatin1String("Photos.sqlite");
    const int copied = copyDatabase(device, localDb);
    if (copied != 0)
        return copied;
    if (!cameraDb) {
        g_return_if_fail_warning(nullptr, "int parseCameraDB(IIPod *, CameraDB *)", "cameradb");
        return -1;
    }
    return readDatabase(localDb, cameraDb);
}

CameraDB *loadModel(IIPod *device)
{
    std::unique_ptr<CameraDB> model(new CameraDB());
    model->device = device;
    Log("PHOTOLIB", 1, "load ATHCameraDB");
    if (parseCameraDB(device, model.get()) == 1) {
        Log("PHOTOLIB", 1, "load ATHCameraDB end");
        return model.release();
    }
    // Only the model goes: records belong to whoever owns a finished model.
    Log("PHOTOLIB", 2, "Can not load lib");
    return nullptr;
}

} // namespace

CameraDB *cameraDBParse(IIPod *device)
{
    gbShouldQuit.store(false, std::memory_order_relaxed);
    if (!device)
        return nullptr;
    return withoutThrowing<CameraDB *>(nullptr, [&] { return loadModel(device); });
}

int parseCameraDB(IIPod *device, CameraDB *cameraDb)
{
    return withoutThrowing(-1, [&] { return copyAndRead(device, cameraDb); });
}

void cancleParse()
{
    gbShouldQuit.store(true, std::memory_order_relaxed);
}
