#ifndef PHOTOLIB_TESTS_SUPPORT_PHOTOS_DATABASE_H
#define PHOTOLIB_TESTS_SUPPORT_PHOTOS_DATABASE_H

#include <QByteArray>
#include <QtGlobal>

#include <sqlite3.h>

#include <memory>
#include <string>
#include <variant>
#include <vector>

/// A value of a column, of the storage class that SQLite shall give it: NULL (`{}` or
/// nullptr), INTEGER, REAL, TEXT (its bytes, in UTF-8 unless the test wants others) or
/// BLOB (QByteArray).
class SqlValue
{
public:
    SqlValue() = default;
    SqlValue(std::nullptr_t) {}
    SqlValue(int value) : m_value(static_cast<qint64>(value)) {}
    SqlValue(long value) : m_value(static_cast<qint64>(value)) {}
    SqlValue(qint64 value) : m_value(value) {}
    SqlValue(double value) : m_value(value) {}
    SqlValue(const char *text) : m_value(std::string(text)) {}
    SqlValue(const std::string &text) : m_value(text) {}
    SqlValue(const QByteArray &blob) : m_value(blob) {}

    /// Binds it to the parameter `index`, counted from 1.
    void bind(sqlite3_stmt *stmt, int index) const;

private:
    std::variant<std::monostate, qint64, double, std::string, QByteArray> m_value;
};

/// Sixteen bytes that begin with `first` and `second`, for a uuid blob.
QByteArray uuidBlob(int first, int second = 0);

/// A row of ZGENERICASSET or ZASSET. A photo that the plug-in lists, unless changed. Fields whose
/// column the schema lacks are not written.
struct AssetRow {
    SqlValue pk;
    SqlValue kind = 0;
    SqlValue savedAssetType = 3;
    SqlValue width = 4032;
    SqlValue height = 3024;
    SqlValue thumbnailIndex = 0;
    SqlValue orientation = 1;
    SqlValue directory = "DCIM/100APPLE";
    SqlValue fileName = "IMG_0001.JPG";
    SqlValue modificationDate = 0;
    SqlValue uuid = uuidBlob(0xa5);
    SqlValue kindSubtype = 0;
    SqlValue trashedDate;
    SqlValue trashedState = 0;
    SqlValue avalancheUuid;
    SqlValue sortToken;
    SqlValue duration;    ///< of ZASSET only
    SqlValue dateCreated; ///< of ZASSET only
};

/// A photo or a video that the plug-in lists; its uuid is made of the key.
AssetRow photoRow(int pk, qint64 modificationDate = 0);
AssetRow videoRow(int pk, qint64 modificationDate = 0);

/// A row of ZADDITIONALASSETATTRIBUTES. The queries of ZGENERICASSET join its own key with
/// the asset's, those of ZASSET `asset`, which the extended query uses for both.
struct AttributesRow {
    SqlValue pk;
    SqlValue asset;
    SqlValue duration;
    SqlValue originalFileSize;
};

/// A row of ZGENERICALBUM.
struct AlbumRow {
    SqlValue pk;
    SqlValue kind = 2;
    SqlValue title = "Album";
    SqlValue uuid = uuidBlob(0xa1);
    SqlValue trashedState = 0;
};

AlbumRow albumRow(int pk, int kind = 2);

/// A table that joins albums and assets, or one that looks like it. The names go into
/// the SQL as they stand, quoted.
struct JoinTable {
    std::string name = "Z_26ASSETS";
    std::vector<std::string> columns = {"Z_26ALBUMS", "Z_34ASSETS", "Z_FOK_34ASSETS"};
    std::vector<std::vector<SqlValue>> rows; ///< may be shorter than the columns

    /// Adds a row of an album key and an asset key, for tables whose first two columns
    /// are those.
    void add(const SqlValue &album, const SqlValue &asset) { rows.push_back({album, asset}); }
};

/// Which tables and optional columns the database has.
struct Schema {
    bool assets = true;     ///< table ZGENERICASSET, or ZASSET where `isZasset`
    bool albums = true;     ///< table ZGENERICALBUM
    bool attributes = true; ///< table ZADDITIONALASSETATTRIBUTES
    bool metadata = true;   ///< table Z_METADATA
    bool joinTables = true; ///< those in `PhotosDatabase::joinTables`

    bool isZasset = false; ///< the assets are in ZASSET, as since iOS 14

    bool kindSubtype = true;        ///< ZKINDSUBTYPE of the assets
    bool trashedDate = true;        ///< ZTRASHEDDATE of the assets
    bool avalancheUuid = true;      ///< ZAVALANCHEUUID of the assets
    bool sortToken = true;          ///< ZSORTTOKEN of the assets
    bool assetTrashedState = true;  ///< ZTRASHEDSTATE of the assets
    bool assetDuration = true;      ///< ZASSET.ZDURATION
    bool dateCreated = true;        ///< ZASSET.ZDATECREATED
    bool albumTrashedState = true;  ///< ZGENERICALBUM.ZTRASHEDSTATE
    bool attributesDuration = true; ///< ZADDITIONALASSETATTRIBUTES.ZDURATION

    bool utf16 = false; ///< stores texts in UTF-16, little-endian

    bool uniqueKeys = true; ///< Z_PK is the primary key, so that two rows cannot share one
    /// Further column definitions of the assets, before its optional ones, such as
    /// "ZODD INTEGER DEFAULT 5". A comment works as well: "ZODD /* ZSORTTOKEN */".
    std::vector<std::string> furtherAssetColumns;

    /// Every optional column.
    static Schema late() { return {}; }
    /// No optional column, but ZADDITIONALASSETATTRIBUTES.ZDURATION.
    static Schema early();
    /// Since iOS 14: ZASSET with every optional column, and no ZDURATION of the attributes.
    static Schema zasset();

    const char *assetTable() const { return isZasset ? "ZASSET" : "ZGENERICASSET"; }
};

/// The rows that go into the tables, in this order.
struct PhotosRows {
    std::vector<SqlValue> libraryUuids; ///< Z_UUID of Z_METADATA, a row each
    std::vector<AssetRow> assets;
    std::vector<AttributesRow> attributes;
    std::vector<AlbumRow> albums;
    std::vector<std::string> sql; ///< run last
};

struct CloseSqlite {
    void operator()(sqlite3 *db) const { sqlite3_close(db); }
};
using SqliteOwner = std::unique_ptr<sqlite3, CloseSqlite>;

/// The three files of a database as they lie on a device.
struct PhotosFiles {
    QByteArray database;
    QByteArray wal; ///< the write-ahead log, not checkpointed
    QByteArray shm; ///< the shared-memory file
};

/// Builds Photos.sqlite: fill the fields, then ask for the bytes, the three files or a
/// connection, as often as needed. A statement that fails throws std::runtime_error with
/// SQLite's message and the SQL.
struct PhotosDatabase {
    Schema schema;
    PhotosRows rows;
    std::vector<JoinTable> joinTables = {JoinTable()}; ///< made in this order

    /// The only join table, or the last one.
    JoinTable &join() { return joinTables.back(); }

    /// The bytes of the finished file. Its journal mode is "delete", so it opens alone.
    QByteArray bytes() const;

    /// The files of a database in write-ahead mode: this content in the database file, and
    /// `later` in the write-ahead log only.
    PhotosFiles filesWithWal(const PhotosRows &later) const;

    /// A connection to a copy in memory. Literals in double quotes are allowed on it.
    SqliteOwner open() const;
};

/// Runs one or more statements; throws like `PhotosDatabase`.
void runSql(sqlite3 *db, const std::string &sql);

/// A connection to a database in memory with no table at all.
SqliteOwner openEmptyDatabase();

/// A connection whose statements do not prepare: its file is none of SQLite's.
SqliteOwner openUnreadable();

/// Makes a scan of `table` meet an error at the row of the key `pk`. The table becomes a
/// view without the names of its optional columns.
void failAt(sqlite3 *db, const std::string &table, int pk);

#endif // PHOTOLIB_TESTS_SUPPORT_PHOTOS_DATABASE_H
