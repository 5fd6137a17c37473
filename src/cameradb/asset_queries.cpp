#include "cameradb/asset_queries.h"

#include "cameradb/asset_schema.h"
#include "cameradb/ordered_insert.h"
#include "cameradb/prefetch.h"
#include "cameradb/unique_dates.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "sqlite/row_allowance.h"
#include "sqlite/sqlite_statement.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

namespace {

// Holds the longest statement, the photos with all their optional columns.
typedef char sql_text[1024];

// The columns from here on are ZASSET's own; other statements end before them.
const int firstZassetColumn = 15;

quint64 keyColumn(sqlite3_stmt *stmt, int column)
{
    return static_cast<quint64>(static_cast<qint64>(sqlite3_column_int(stmt, column)));
}

// Whole seconds, of which the low 32 bits are kept.
qint32 dateColumn(sqlite3_stmt *stmt, int column)
{
    return static_cast<qint32>(sqlite3_column_int64(stmt, column));
}

const char *textColumn(sqlite3_stmt *stmt, int column)
{
    return reinterpret_cast<const char *>(sqlite3_column_text(stmt, column));
}

QByteArray bytesColumn(sqlite3_stmt *stmt, int column)
{
    // SQLite wants the value's form settled before its length is asked.
    const char *bytes = static_cast<const char *>(sqlite3_column_blob(stmt, column));
    return bytes ? QByteArray(bytes, sqlite3_column_bytes(stmt, column)) : QByteArray();
}

qint32 wholeSeconds(double seconds)
{
    const double rounded = seconds + 0.5;
    // Beyond the range the conversion is undefined; such a duration is nonsense anyway.
    if (!(rounded > std::numeric_limits<qint32>::min()))
        return std::numeric_limits<qint32>::min();
    if (!(rounded < std::numeric_limits<qint32>::max()))
        return std::numeric_limits<qint32>::max();
    return static_cast<qint32>(rounded);
}

// Texts that many rows repeat, such as a folder's name: equal ones share one string. It
// remembers the last text of each hash only, so a device cannot make it grow.
class repeated_texts
{
public:
    repeated_texts() : m_last(slotCount) {}

    QString latin1(const char *text)
    {
        QString &last = m_last[slot(text)];
        if (last.isNull() || last != QLatin1String(text))
            last = QString::fromLatin1(text);
        return last;
    }

    QString utf8(const char *text)
    {
        // Of two texts in ASCII, what one reads as in either way tells them apart.
        return isAscii(text) ? latin1(text) : QString::fromUtf8(text);
    }

private:
    // A camera fills up to 900 folders; in four times as many slots few of them collide.
    static const std::size_t slotCount = 4096;

    static bool isAscii(const char *text)
    {
        unsigned char bits = 0;
        for (; *text; ++text)
            bits |= static_cast<unsigned char>(*text);
        return bits < 0x80;
    }

    static std::size_t slot(const char *text)
    {
        std::size_t hash = 0;
        for (; *text; ++text)
            hash = hash * 31 + static_cast<unsigned char>(*text);
        return hash % slotCount;
    }

    std::vector<QString> m_last;
};

// Makes asset records of one statement's rows.
class asset_reader
{
public:
    // Texts are shared through `texts`, which may be null.
    asset_reader(CameraDB *cameraDb, sqlite3_stmt *stmt, repeated_texts *texts)
        : m_cameraDb(cameraDb), m_stmt(stmt), m_columns(sqlite3_column_count(stmt)), m_texts(texts),
          m_noBurst(QString::fromLatin1("0"))
    {
    }

    // The current row as a record, or null when it lacks a text or its uuid.
    std::unique_ptr<Camera_Data> read();

    bool isZasset() const { return m_columns > firstZassetColumn; }

private:
    bool readFile(Camera_Data &data);
    void readNumbers(Camera_Data &data);
    void readBurst(Camera_Data &data);
    void readTimes(Camera_Data &data);
    QString directoryText(const char *text) const;
    QString fileNameText(const char *text) const
    {
        return isZasset() ? QString::fromUtf8(text) : QString::fromLatin1(text);
    }
    QString burstText(const char *text) const
    {
        return m_texts ? m_texts->latin1(text) : QString::fromLatin1(text);
    }

    CameraDB *m_cameraDb;
    sqlite3_stmt *m_stmt;
    const int m_columns;
    repeated_texts *m_texts;
    const QString m_noBurst;
};

std::unique_ptr<Camera_Data> asset_reader::read()
{
    // Value-initialised: what the database does not tell (dates of creation, durations)
    // reads as 0.
    std::unique_ptr<Camera_Data> data(new Camera_Data());
    data->db = m_cameraDb;
    if (!readFile(*data))
        return nullptr;
    readNumbers(*data);
    readBurst(*data);
    if (isZasset())
        readTimes(*data);
    return data;
}

QString asset_reader::directoryText(const char *text) const
{
    if (!m_texts)
        return fileNameText(text);
    return isZasset() ? m_texts->utf8(text) : m_texts->latin1(text);
}

bool asset_reader::readFile(Camera_Data &data)
{
    const char *directory = textColumn(m_stmt, 6);
    if (!directory)
        return false;
    data.directory = directoryText(directory);
    const char *fileName = textColumn(m_stmt, 7);
    if (!fileName)
        return false;
    data.fileName = fileNameText(fileName);
    data.name = data.fileName;
    data.uuid = bytesColumn(m_stmt, 9);
    return !data.uuid.isNull();
}

void asset_reader::readNumbers(Camera_Data &data)
{
    data.pk = keyColumn(m_stmt, 0);
    data.kind = sqlite3_column_int(m_stmt, 1);
    data.height = sqlite3_column_int(m_stmt, 2);
    data.width = sqlite3_column_int(m_stmt, 3);
    data.thumbnailIndex = sqlite3_column_int(m_stmt, 4);
    data.orientation = sqlite3_column_int(m_stmt, 5);
    data.modificationDate = dateColumn(m_stmt, 8);
    data.originalFileSize = sqlite3_column_int64(m_stmt, 10);
    data.kindSubtype = sqlite3_column_int(m_stmt, 11);
    data.trashedDate = sqlite3_column_int64(m_stmt, 12);
}

// Videos are in no burst, and their statement has no columns for one.
void asset_reader::readBurst(Camera_Data &data)
{
    const char *burst = m_columns > 13 ? textColumn(m_stmt, 13) : nullptr;
    data.avalancheUUID = burst ? burstText(burst) : m_noBurst;
    data.sortToken = burst && m_columns > 14 ? sqlite3_column_double(m_stmt, 14) : 0.0;
}

void asset_reader::readTimes(Camera_Data &data)
{
    data.duration = wholeSeconds(sqlite3_column_double(m_stmt, firstZassetColumn));
    data.createDate = dateColumn(m_stmt, firstZassetColumn + 1);
}

// The records of a statement's rows, one by one.
class asset_rows
{
public:
    asset_rows(CameraDB *cameraDb, sqlite3 *db, sqlite_statement &statement)
        : m_statement(statement), m_allowance(db), m_reader(cameraDb, statement.get(), &m_texts)
    {
    }

    // The next row that makes a record; null when there is none.
    std::unique_ptr<Camera_Data> next()
    {
        while (!m_allowance.isExhausted() && m_statement.nextRow()) {
            if (m_reader.isZasset() && isLastAsset()) {
                m_allowance.spend(0);
                continue;
            }
            std::unique_ptr<Camera_Data> data = m_reader.read();
            if (!data) {
                m_allowance.spend(rejectedBytes());
                continue;
            }
            m_allowance.spend(data->directory.size() + data->fileName.size() + data->uuid.size() +
                              data->avalancheUUID.size() + recordBytes);
            noteLast(*data);
            return data;
        }
        return nullptr;
    }

private:
    // The least that a record's numbers and the headers of its row take in a file.
    static const int recordBytes = 48;

    // What was read of a row before its lack of a uuid showed.
    qint64 rejectedBytes() const
    {
        return qint64(sqlite3_column_bytes(m_statement.get(), 6)) +
               sqlite3_column_bytes(m_statement.get(), 7);
    }

    // Several attributes may name one asset, whose rows then follow each other. Which of their
    // sizes holds is for the extended information to tell.
    bool isLastAsset() const
    {
        return m_hasLast && keyColumn(m_statement.get(), 0) == m_lastPk &&
               dateColumn(m_statement.get(), 8) == m_lastDate;
    }

    void noteLast(const Camera_Data &data)
    {
        m_hasLast = true;
        m_lastPk = data.pk;
        m_lastDate = data.modificationDate;
    }

    sqlite_statement &m_statement;
    bool m_hasLast = false;
    quint64 m_lastPk = 0;
    qint32 m_lastDate = 0;
    row_allowance m_allowance;
    repeated_texts m_texts;
    asset_reader m_reader;
};

// The highest key so far, with `pk` counted in. The counters are 32-bit, keys are
// compared as the unsigned 64-bit numbers that the maps sort by.
qint32 maxKey(qint32 maxPk, quint64 pk)
{
    return pk > static_cast<quint64>(static_cast<qint64>(maxPk)) ? static_cast<qint32>(pk) : maxPk;
}

// A record with its key at hand, so that sorting does not visit the records.
struct keyed_record {
    quint64 pk;
    Camera_Data *data;
};

// A type of its own, which the compiler can expand in a sort; a function it calls.
struct key_less {
    bool operator()(const keyed_record &left, const keyed_record &right) const
    {
        return left.pk < right.pk;
    }
};

typedef QMap<quint64, Camera_Data *> asset_map;

// In key order, so that the map grows at its end. A stable sort keeps the last of several
// rows of one key the winner.
void fileByKey(asset_map &map, std::vector<keyed_record> &records)
{
    std::stable_sort(records.begin(), records.end(), key_less());
    for (const keyed_record &record : records)
        insertLast(map, record.pk, record.data);
}

typedef char further_items[64];

// What ZASSET tells of an asset besides, behind all that the statements have in common and
// behind `gap`, the items that this statement lacks. The asset reader knows its rows by them.
void formatFurtherItems(further_items &items, const asset_schema &schema, const char *gap)
{
    items[0] = '\0';
    if (!schema.isZasset())
        return;
    sqlite3_snprintf(sizeof items, items, "%s, %s, %s", gap,
                     schema.itemOrMissing("ZDURATION", "A.ZDURATION"),
                     schema.itemOrMissing("ZDATECREATED", "A.ZDATECREATED"));
}

void formatPhotoSql(sql_text &sql, const asset_schema &schema, const CameraDB &cameraDb)
{
    const char *subtype = cameraDb.hasKindSubtype ? "A.ZKINDSUBTYPE" : missingColumn;
    const char *trashed = schema.itemOrMissing("ZTRASHEDDATE", "A.ZTRASHEDDATE");
    const char *burst = schema.itemOrMissing("ZAVALANCHEUUID", "A.ZAVALANCHEUUID");
    const char *token = schema.itemOrMissing("ZSORTTOKEN", "A.ZSORTTOKEN");
    further_items further;
    formatFurtherItems(further, schema, "");
    sqlite3_snprintf(
        sizeof sql, sql,
        "select A.Z_PK,A.ZKIND,A.ZHEIGHT,A.ZWIDTH, A.ZTHUMBNAILINDEX,A.ZORIENTATION,A.ZDIRECTORY,"
        "A.ZFILENAME,A.ZMODIFICATIONDATE,A.ZUUID, T.ZORIGINALFILESIZE, %s, %s, %s, %s%s from %s "
        "as A left join ZADDITIONALASSETATTRIBUTES as T on %s where (%s) order by "
        "A.ZMODIFICATIONDATE ASC",
        subtype, trashed, burst, token, further, schema.table().name, schema.table().attributesJoin,
        schema.table().photos);
}

gboolean readPhotos(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb)
{
    sql_text sql;
    formatPhotoSql(sql, schema, *cameraDb);
    sqlite_statement statement(db, sql);
    if (!statement.isPrepared()) {
        Log("PHOTOLIB", 2, "photo sql error #%d: %s", statement.result(), sqlite3_errmsg(db));
        return 0;
    }

    asset_rows rows(cameraDb, db, statement);
    unique_dates dates;
    std::vector<keyed_record> photos;
    std::vector<keyed_record> panoramas;
    while (std::unique_ptr<Camera_Data> photo = rows.next()) {
        photo->modificationDate = dates.take(photo->modificationDate);
        cameraDb->maxAssetPk = maxKey(cameraDb->maxAssetPk, photo->pk);
        const keyed_record record = {photo->pk, photo.release()};
        photos.push_back(record);
        if (record.data->kindSubtype == 1)
            panoramas.push_back(record);
    }
    fileByKey(cameraDb->assets, photos);
    fileByKey(cameraDb->panoramas, panoramas);
    return 1;
}

void fileVideo(CameraDB *cameraDb, std::unique_ptr<Camera_Data> video)
{
    // A photo of that key wins.
    if (cameraDb->assets.contains(video->pk))
        return;
    Camera_Data *record = video.release();
    insertLast(cameraDb->assets, record->pk, record);
    insertLast(cameraDb->videos, record->pk, record);
    cameraDb->maxAssetPk = maxKey(cameraDb->maxAssetPk, record->pk);
}

gboolean readVideos(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb)
{
    const char *trashed = schema.itemOrMissing("ZTRASHEDDATE", "A.ZTRASHEDDATE");
    further_items further;
    formatFurtherItems(further, schema, ", NULL, NULL");
    sql_text sql;
    sqlite3_snprintf(
        sizeof sql, sql,
        "select A.Z_PK,ZKIND,A.ZHEIGHT,A.ZWIDTH,A.ZTHUMBNAILINDEX, A.ZORIENTATION,A.ZDIRECTORY,"
        "A.ZFILENAME,A.ZMODIFICATIONDATE,A.ZUUID, T.ZORIGINALFILESIZE, \"0\", %s%s from %s as A "
        "left join ZADDITIONALASSETATTRIBUTES as T on %s where (%s)",
        trashed, further, schema.table().name, schema.table().attributesJoin,
        schema.table().videos);
    sqlite_statement statement(db, sql);
    if (!statement.isPrepared()) {
        Log("PHOTOLIB", 2, "Can not parse camera video");
        return 0;
    }

    asset_rows rows(cameraDb, db, statement);
    while (std::unique_ptr<Camera_Data> video = rows.next())
        fileVideo(cameraDb, std::move(video));
    return 1;
}

gboolean readAlbums(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb)
{
    // Hosts rely on the probe looking at the assets here too: a database whose assets
    // alone know the trash fails to parse.
    const bool hasTrash = schema.hasColumn(QString::fromLatin1("ZTRASHEDSTATE"));
    sql_text sql;
    sqlite3_snprintf(sizeof sql, sql,
                     "select Z_PK,ZTITLE,ZKIND,ZUUID%s from ZGENERICALBUM where (ZKIND=1000 or "
                     "(ZKIND < 1600 and ZKIND > 1000) or ZKIND=2)",
                     hasTrash ? ",ZTRASHEDSTATE" : "");
    sqlite_statement statement(db, sql);
    if (!statement.isPrepared()) {
        Log("PHOTOLIB", 2, "Can not parse camera album");
        return 0;
    }

    row_allowance allowance(db);
    while (!allowance.isExhausted() && statement.nextRow()) {
        Camera_Album *album = selectCameraAblumValues(statement.get());
        if (!album)
            break;
        allowance.spend(album->title.size() + album->uuid.size());
        insertLast(cameraDb->albums, album->pk, album);
        cameraDb->maxAlbumPk = maxKey(cameraDb->maxAlbumPk, album->pk);
    }
    return 1;
}

// The attributes mostly come in the order of their assets, so the next key is tried
// before the map is searched, and the record behind it is fetched meanwhile.
asset_map::const_iterator findFrom(const asset_map &assets, asset_map::const_iterator last,
                                   quint64 key)
{
    if (last == assets.constEnd() || ++last == assets.constEnd() || last.key() != key)
        return assets.constFind(key);
    const asset_map::const_iterator next = last + 1;
    if (next != assets.constEnd() && next.value())
        prefetch(&next.value()->duration);
    return last;
}

gboolean readExtendInfo(sqlite3 *db, const asset_schema &schema, const asset_map &assets)
{
    sqlite_statement statement(db, schema.table().extendInfo);
    if (!statement.isPrepared())
        return 0;

    const bool hasDuration = !schema.isZasset();
    asset_map::const_iterator last = assets.constEnd();
    while (statement.nextRow()) {
        const asset_map::const_iterator asset =
            findFrom(assets, last, keyColumn(statement.get(), 1));
        if (asset == assets.constEnd() || !asset.value())
            continue;
        if (hasDuration)
            asset.value()->duration = wholeSeconds(sqlite3_column_double(statement.get(), 2));
        asset.value()->originalFileSize = sqlite3_column_int64(statement.get(), 3);
        last = asset;
    }
    return 1;
}

// Warns about the first argument that is null, as GLib's precondition checks would, but
// with the texts that hosts know.
bool hasArguments(const char *function, const sqlite3 *db, const CameraDB *cameraDb)
{
    if (db && cameraDb)
        return true;
    g_return_if_fail_warning(nullptr, function, db ? "camera_db" : "sql_db");
    return false;
}

} // namespace

bool assetsHasSpecialCol(sqlite3 *db, const QString &column)
{
    return withoutThrowing(false, [&] { return asset_schema(db).hasColumn(column); });
}

Camera_Data *selectCameraData(CameraDB *cameraDb, sqlite3_stmt *stmt)
{
    if (!stmt) {
        g_return_if_fail_warning(
            nullptr, "Camera_Data *selectCameraData(CameraDB *, sqlite3_stmt *)", "stmt");
        return nullptr;
    }
    return withoutThrowing<Camera_Data *>(
        nullptr, [&] { return asset_reader(cameraDb, stmt, nullptr).read().release(); });
}

Camera_Album *selectCameraAblumValues(sqlite3_stmt *stmt)
{
    if (!stmt) {
        g_return_if_fail_warning(nullptr, "Camera_Album *selectCameraAblumValues(sqlite3_stmt *)",
                                 "stmt");
        return nullptr;
    }
    return withoutThrowing<Camera_Album *>(nullptr, [&] {
        std::unique_ptr<Camera_Album> album(new Camera_Album());
        album->pk = keyColumn(stmt, 0);
        album->kind = sqlite3_column_int(stmt, 2);
        album->trashedState = sqlite3_column_int(stmt, 4);
        if (const char *title = textColumn(stmt, 1))
            album->title = QString::fromUtf8(title);
        album->uuid = bytesColumn(stmt, 3);
        return album.release();
    });
}

gboolean queryCameraPhotos(sqlite3 *db, CameraDB *cameraDb)
{
    if (!hasArguments("gboolean queryCameraPhotos(sqlite3 *, CameraDB *)", db, cameraDb))
        return 0;
    return withoutThrowing<gboolean>(
        0, [&] { return readCameraPhotos(db, asset_schema(db), cameraDb); });
}

gboolean readCameraPhotos(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb)
{
    return withoutThrowing<gboolean>(0, [&] { return readPhotos(db, schema, cameraDb); });
}

gboolean queryCameraVideo(sqlite3 *db, CameraDB *cameraDb)
{
    if (!hasArguments("gboolean queryCameraVideo(sqlite3 *, CameraDB *)", db, cameraDb))
        return 0;
    return withoutThrowing<gboolean>(
        0, [&] { return readCameraVideo(db, asset_schema(db), cameraDb); });
}

gboolean readCameraVideo(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb)
{
    return withoutThrowing<gboolean>(0, [&] { return readVideos(db, schema, cameraDb); });
}

gboolean queryCameraAlbum(sqlite3 *db, CameraDB *cameraDb)
{
    if (!hasArguments("gboolean queryCameraAlbum(sqlite3 *, CameraDB *)", db, cameraDb))
        return 0;
    return withoutThrowing<gboolean>(
        0, [&] { return readCameraAlbum(db, asset_schema(db), cameraDb); });
}

gboolean readCameraAlbum(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb)
{
    return withoutThrowing<gboolean>(0, [&] { return readAlbums(db, schema, cameraDb); });
}

gboolean queryCameraExtendInfo(sqlite3 *db, QMap<quint64, Camera_Data *> assets)
{
    if (!db) {
        g_return_if_fail_warning(
            nullptr,
            "gboolean queryCameraExtendInfo(sqlite3 *, QMap<unsigned long long, Camera_Data *>)",
            "sql_db");
        return 0;
    }
    return withoutThrowing<gboolean>(
        0, [&] { return readCameraExtendInfo(db, asset_schema(db), assets); });
}

gboolean readCameraExtendInfo(sqlite3 *db, const asset_schema &schema,
                              const QMap<quint64, Camera_Data *> &assets)
{
    return withoutThrowing<gboolean>(0, [&] { return readExtendInfo(db, schema, assets); });
}
