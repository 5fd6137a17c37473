#ifndef PHOTOLIB_TESTS_APP_LIBRARY_TABLES_WRITER_H
#define PHOTOLIB_TESTS_APP_LIBRARY_TABLES_WRITER_H

#include "support/photos_database.h"

#include <QByteArray>

#include <map>
#include <ostream>
#include <string>
#include <vector>

/// What differs between the libraries of several years.
struct LibraryVersion {
    std::string name; ///< for a test's name
    std::string assets = "ZASSET";
    std::map<std::string, int> entities; ///< of Z_PRIMARYKEY
    std::string joinAsset;               ///< the column "Z_3ASSETS" of the albums' join table
    std::string edited = "ZADJUSTMENTSSTATE";
    std::string faceAsset = "ZASSETFORFACE";
    std::string facePerson = "ZPERSONFORFACE";
    std::string rendered = "ZHDRTYPE"; ///< what the custom-rendered value is called
    bool hasImportPlaces = true;

    /// "Z_26ASSETS" and so on.
    std::string joinTable() const;
    std::string joinAlbum() const;
    std::string joinPlace() const { return "Z_FOK_" + joinAsset.substr(2); }
    std::string keywordTable() const;
    std::string keywordAttributes() const;
    std::string keywordKeyword() const;
};

/// As in a failure of a test.
inline std::ostream &operator<<(std::ostream &stream, const LibraryVersion &version)
{
    return stream << version.name;
}

/// One for each system whose tables or columns differ, the oldest first.
const std::vector<LibraryVersion> &libraryVersions();
const LibraryVersion &libraryVersion(const std::string &name);

/// By column.
using TableRow = std::map<std::string, SqlValue>;

/// Writes the tables of a library that tell of photos, albums, keywords and people, as they are
/// in one version, among others whose names look alike. What does not work throws
/// std::runtime_error.
class LibraryTablesWriter
{
public:
    explicit LibraryTablesWriter(const LibraryVersion &version);

    const LibraryVersion &version() const { return m_version; }

    /// Rows with these columns besides the usual ones. A column that was left out is not written.
    void addPhoto(int id, TableRow row = {});
    void addVideo(int id, TableRow row = {});
    void addAttributes(int id, int asset, TableRow row = {});
    void addAlbum(int id, TableRow row = {});
    void addMember(int album, int asset, const SqlValue &place = {});
    void addKeyword(int id, const SqlValue &title);
    void addKeywordOf(int attributes, int keyword);
    void addPerson(int id, const SqlValue &name, TableRow row = {});
    void addFace(const SqlValue &asset, const SqlValue &person);
    void add(const std::string &table, const TableRow &row);

    void leaveOut(const std::string &table);
    void leaveOut(const std::string &table, const std::string &column);
    void rename(const std::string &table, const std::string &column, const std::string &to);
    void addTable(const std::string &table, const std::vector<std::string> &columns);

    /// Run last.
    void addSql(const std::string &sql) { m_sql.push_back(sql); }
    void useUtf16() { m_isUtf16 = true; }

    QByteArray bytes() const;

private:
    struct Table {
        std::vector<std::string> columns; ///< the first is the primary key where it is Z_PK
        std::vector<TableRow> rows;
    };

    static void writeTable(sqlite3 *db, const std::string &name, const Table &table);

    LibraryVersion m_version;
    std::map<std::string, Table> m_tables;
    std::vector<std::string> m_sql;
    bool m_isUtf16 = false;
};

#endif // PHOTOLIB_TESTS_APP_LIBRARY_TABLES_WRITER_H
