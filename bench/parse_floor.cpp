#include "parse_floor.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <vector>

namespace {

struct Asset {
    int pk, kind, height, width, thumbnailIndex, orientation;
    std::string directory, fileName;
    sqlite3_int64 modificationDate;
    std::string uuid;
    sqlite3_int64 originalFileSize;
    int kindSubtype;
    sqlite3_int64 trashedDate;
    std::string avalancheUuid;
    double sortToken;
    double duration;
    sqlite3_int64 dateCreated;
};

struct Album {
    int pk, kind, trashedState;
    std::string title, uuid;
};

struct Member {
    sqlite3_int64 album, asset;
};

struct Attributes {
    int asset;
    double duration;
    sqlite3_int64 originalFileSize;
};

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "bench: the floor cannot %s\n", what);
    std::exit(1);
}

void copyFile(const std::string &from, const std::string &to)
{
    const std::size_t blockSize = 4194304;
    const int source = open(from.c_str(), O_RDONLY);
    if (source < 0)
        return;
    const int target = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const std::unique_ptr<char[]> block(new char[blockSize]);
    for (ssize_t count; (count = read(source, block.get(), blockSize)) > 0;) {
        if (write(target, block.get(), static_cast<std::size_t>(count)) != count)
            fail("write a copy");
    }
    close(source);
    close(target);
}

std::string text(sqlite3_stmt *stmt, int column)
{
    const unsigned char *value = sqlite3_column_text(stmt, column);
    return value ? reinterpret_cast<const char *>(value) : std::string();
}

std::string bytes(sqlite3_stmt *stmt, int column)
{
    const void *value = sqlite3_column_blob(stmt, column);
    const int size = sqlite3_column_bytes(stmt, column);
    return value ? std::string(static_cast<const char *>(value), static_cast<std::size_t>(size))
                 : std::string();
}

Asset readAsset(sqlite3_stmt *stmt)
{
    return {sqlite3_column_int(stmt, 0),
            sqlite3_column_int(stmt, 1),
            sqlite3_column_int(stmt, 2),
            sqlite3_column_int(stmt, 3),
            sqlite3_column_int(stmt, 4),
            sqlite3_column_int(stmt, 5),
            text(stmt, 6),
            text(stmt, 7),
            sqlite3_column_int64(stmt, 8),
            bytes(stmt, 9),
            sqlite3_column_int64(stmt, 10),
            sqlite3_column_int(stmt, 11),
            sqlite3_column_int64(stmt, 12),
            text(stmt, 13),
            sqlite3_column_double(stmt, 14),
            0,
            0};
}

Asset readZasset(sqlite3_stmt *stmt)
{
    Asset asset = readAsset(stmt);
    asset.duration = sqlite3_column_double(stmt, 15);
    asset.dateCreated = sqlite3_column_int64(stmt, 16);
    return asset;
}

Album readAlbum(sqlite3_stmt *stmt)
{
    return {sqlite3_column_int(stmt, 0), sqlite3_column_int(stmt, 2), sqlite3_column_int(stmt, 4),
            text(stmt, 1), bytes(stmt, 3)};
}

Member readMember(sqlite3_stmt *stmt)
{
    return {sqlite3_column_int64(stmt, 0), sqlite3_column_int64(stmt, 1)};
}

Attributes readAttributes(sqlite3_stmt *stmt)
{
    return {sqlite3_column_int(stmt, 1), sqlite3_column_double(stmt, 2),
            sqlite3_column_int64(stmt, 3)};
}

template <class Row>
std::vector<Row> select(sqlite3 *db, const char *sql, Row (*read)(sqlite3_stmt *))
{
    std::vector<Row> rows;
    sqlite3_stmt *stmt = nullptr;
    if (sqlite3_prepare(db, sql, -1, &stmt, nullptr) != SQLITE_OK)
        fail(sql);
    while (sqlite3_step(stmt) == SQLITE_ROW)
        rows.push_back(read(stmt));
    sqlite3_finalize(stmt);
    return rows;
}

const char *const albumSql =
    "select Z_PK,ZTITLE,ZKIND,ZUUID,ZTRASHEDSTATE from ZGENERICALBUM where (ZKIND=1000 or "
    "(ZKIND < 1600 and ZKIND > 1000) or ZKIND=2)";

const char *const photoSql =
    "select A.Z_PK,A.ZKIND,A.ZHEIGHT,A.ZWIDTH, A.ZTHUMBNAILINDEX,A.ZORIENTATION,A.ZDIRECTORY,"
    "A.ZFILENAME,A.ZMODIFICATIONDATE,A.ZUUID, T.ZORIGINALFILESIZE, A.ZKINDSUBTYPE, "
    "A.ZTRASHEDDATE, A.ZAVALANCHEUUID, A.ZSORTTOKEN from ZGENERICASSET as A left join "
    "ZADDITIONALASSETATTRIBUTES as T on A.Z_PK = T.Z_PK where (A.ZKIND = 0 and "
    "((A.ZSAVEDASSETTYPE = 3) or (A.ZSAVEDASSETTYPE = 256) or (A.ZSAVEDASSETTYPE = 1) or "
    "(A.ZSAVEDASSETTYPE = 5))) order by A.ZMODIFICATIONDATE ASC";

const char *const videoSql =
    "select A.Z_PK,ZKIND,A.ZHEIGHT,A.ZWIDTH,A.ZTHUMBNAILINDEX, A.ZORIENTATION,A.ZDIRECTORY,"
    "A.ZFILENAME,A.ZMODIFICATIONDATE,A.ZUUID, T.ZORIGINALFILESIZE, 0, A.ZTRASHEDDATE from "
    "ZGENERICASSET as A left join ZADDITIONALASSETATTRIBUTES as T on A.Z_PK = T.Z_PK where "
    "(A.ZKIND = 1 and (A.ZSAVEDASSETTYPE = 256 or A.ZSAVEDASSETTYPE = 3 or "
    "A.ZSAVEDASSETTYPE = 0))";

const char *const memberSql = "select * from Z_23ASSETS";

const char *const attributeSql =
    "select Z_PK,ZASSET,ZDURATION,ZORIGINALFILESIZE from ZADDITIONALASSETATTRIBUTES";

struct Statements {
    Asset (*readAsset)(sqlite3_stmt *);
    const char *photos;
    const char *videos;
    const char *attributes;
};

const Statements genericStatements = {readAsset, photoSql, videoSql, attributeSql};

const Statements zassetStatements = {
    readZasset,
    "select A.Z_PK,A.ZKIND,A.ZHEIGHT,A.ZWIDTH, A.ZTHUMBNAILINDEX,A.ZORIENTATION,A.ZDIRECTORY,"
    "A.ZFILENAME,A.ZMODIFICATIONDATE,A.ZUUID, T.ZORIGINALFILESIZE, A.ZKINDSUBTYPE, "
    "A.ZTRASHEDDATE, A.ZAVALANCHEUUID, A.ZSORTTOKEN, A.ZDURATION, A.ZDATECREATED from ZASSET as A "
    "left join ZADDITIONALASSETATTRIBUTES as T on T.ZASSET = A.Z_PK where (A.ZKIND = 0 and "
    "A.ZSAVEDASSETTYPE is not 4) order by A.ZMODIFICATIONDATE ASC",
    "select A.Z_PK,ZKIND,A.ZHEIGHT,A.ZWIDTH,A.ZTHUMBNAILINDEX, A.ZORIENTATION,A.ZDIRECTORY,"
    "A.ZFILENAME,A.ZMODIFICATIONDATE,A.ZUUID, T.ZORIGINALFILESIZE, 0, A.ZTRASHEDDATE, NULL, NULL, "
    "A.ZDURATION, A.ZDATECREATED from ZASSET as A left join ZADDITIONALASSETATTRIBUTES as T on "
    "T.ZASSET = A.Z_PK where (A.ZKIND = 1 and A.ZSAVEDASSETTYPE is not 4)",
    "select Z_PK,ZASSET,NULL,ZORIGINALFILESIZE from ZADDITIONALASSETATTRIBUTES"};

} // namespace

std::size_t parseFloor(const std::string &root, const std::string &workFolder, bool isZasset)
{
    const std::string copy = workFolder + "Photos.sqlite";
    for (const char *suffix : {"", "-wal", "-shm"})
        copyFile(root + "/PhotoData/Photos.sqlite" + suffix, copy + suffix);
    sqlite3 *db = nullptr;
    if (sqlite3_open(copy.c_str(), &db) != SQLITE_OK)
        fail("open the copy");
    sqlite3_db_config(db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);

    const std::vector<Album> albums = select(db, albumSql, readAlbum);
    const Statements &statements = isZasset ? zassetStatements : genericStatements;
    const std::vector<Asset> photos = select(db, statements.photos, statements.readAsset);
    const std::vector<Asset> videos = select(db, statements.videos, statements.readAsset);
    const std::vector<Member> members = select(db, memberSql, readMember);
    const std::vector<Attributes> attributes = select(db, statements.attributes, readAttributes);
    sqlite3_close(db);
    if (albums.empty() || members.empty() || attributes.empty())
        fail("find the rows");
    return photos.size() + videos.size();
}
