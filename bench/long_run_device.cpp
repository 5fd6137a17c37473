#include "long_run_device.h"

#include "bench_database.h"
#include "thumbnail_files.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

const char *const syncedLibrary = "A0B1C2D3-0000-4000-8000-0123456789AB";

namespace {

void writeFile(const std::string &path, const std::string &bytes)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

void writeReadyThumbnails(const std::string &root)
{
    for (int asset = 2; asset <= LongRunDevice::assets; asset += 2) {
        char name[32];
        std::snprintf(name, sizeof name, "IMG_%04d.%s", asset, asset % 12 == 0 ? "MOV" : "JPG");
        const std::string folder = root + "/PhotoData/Thumbnails/V2/DCIM/100APPLE/" + name;
        writeFile(folder + "/5003.JPG", std::string(3000, 'j'));
    }
}

void writeSyncList(const std::string &root)
{
    writeFile(root + "/Photos/Sync/CurrentLibraryUUID.plist",
              std::string("<plist version=\"1.0\"><dict><key>libraryUUID</key><string>") +
                  syncedLibrary + "</string></dict></plist>");
}

// Z_PK is no longer unique where a table is made of another one's rows.
std::string withRepeatedRows(const std::string &table, int count)
{
    return "ALTER TABLE " + table + " RENAME TO ZONCE;" + "CREATE TABLE " + table +
           " AS SELECT * FROM ZONCE;" + "INSERT INTO " + table +
           " SELECT * FROM ZONCE ORDER BY Z_PK LIMIT " + std::to_string(count) + ";" +
           "DROP TABLE ZONCE;";
}

std::string sqlOf(Flaw flaw)
{
    if (flaw == Flaw::EqualKeys)
        return withRepeatedRows("ZGENERICASSET", LongRunDevice::repeatedAssets) +
               withRepeatedRows("ZGENERICALBUM", LongRunDevice::repeatedAlbums);
    return flaw == Flaw::NoJoinTable ? "DROP TABLE Z_23ASSETS" : "";
}

void applyFlaw(const std::string &root, Flaw flaw)
{
    const std::string path = root + "/PhotoData/Photos.sqlite";
    sqlite3 *db = nullptr;
    const std::string sql = "PRAGMA journal_mode = DELETE;" + sqlOf(flaw);
    if (sqlite3_open(path.c_str(), &db) != SQLITE_OK ||
        sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        std::fprintf(stderr, "bench: %s\n", sqlite3_errmsg(db));
        std::exit(1);
    }
    sqlite3_close(db);
}

void writeDevice(const std::string &root, Flaw flaw)
{
    Library library;
    library.assets = LongRunDevice::assets;
    library.userAlbums = LongRunDevice::albums;
    writeLibrary(root, library);
    applyFlaw(root, flaw);
    if (flaw != Flaw::NoJournals) {
        writeFile(root + "/PhotoData/Photos.sqlite-wal", "");
        writeFile(root + "/PhotoData/Photos.sqlite-shm", "");
    }
    writeReadyThumbnails(root);
    writeThumbnails(root, thumbnailFormats()[4], LongRunDevice::assets + 1);
    writeSyncList(root);
}

} // namespace

// On a memory disk, so that no disk's speed enters.
LongRunDevice::LongRunDevice(const std::string &name, Flaw flaw)
    : m_folder("/dev/shm/photolib-long-run-" + std::to_string(getpid()) + "-" + name),
      m_iPod(m_folder + "/device", m_folder + "/work/")
{
    std::filesystem::create_directories(m_folder + "/work");
    writeDevice(m_folder + "/device", flaw);
}

LongRunDevice::~LongRunDevice()
{
    std::filesystem::remove_all(m_folder);
}
