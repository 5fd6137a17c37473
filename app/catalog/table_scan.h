#ifndef PHOTOLIB_CATALOG_TABLE_SCAN_H
#define PHOTOLIB_CATALOG_TABLE_SCAN_H

#include "catalog/library_tables.h"
#include "sqlite/row_allowance.h"
#include "sqlite/sqlite_statement.h"

#include <QByteArray>

#include <cmath>
#include <optional>

/// The rows of one table from the first to the last, past all indexes, which may be damaged or not
/// there. First the columns are named, then the rows are taken one by one:
///
///     TableScan scan(tables, "ZKEYWORD");
///     const int id = scan.require("Z_PK");
///     const int title = scan.want("ZTITLE");
///     while (scan.next())
///         use(scan.integer(id), scan.text(title));
///
/// A table that is not there, or lacks a required column, has no rows. A scan that ends early, by
/// an error or because the rows are more than the files can honestly hold, tells so in the catalog
/// and looks like one that is done. Throws Error of the kind Cancelled, and std::bad_alloc.
class TableScan
{
public:
    /// Number of a column that is not there.
    static constexpr int none = -1;

    /// `tables` must outlive the object.
    TableScan(LibraryTables &tables, const QByteArray &table);

    /// Each names one more column and returns its number, or `none`. What is missing of the first
    /// two is told; without the first there are no rows.
    int require(const QByteArray &column);
    int want(const QByteArray &column);
    int wantQuietly(const QByteArray &column);

    /// Whether there is a statement to take rows from. Ends the naming of columns.
    bool isReadable();

    /// Goes on to the next row; false when there is none.
    bool next();

    /// Counts so much more for each row, for a table of whose rows more is kept than a few numbers
    /// and their texts.
    void setRowBytes(qint64 bytes) { m_rowBytes = bytes; }

    // Of the row: nothing, null or false for a column that is not there or holds NULL.

    /// A whole number, also one that is stored as a real number.
    std::optional<qint64> integer(int column) const
    {
        sqlite3_value *const stored = value(column);
        if (stored && sqlite3_value_type(stored) == SQLITE_INTEGER)
            return sqlite3_value_int64(stored);
        return stored ? wholeNumber(stored) : std::nullopt;
    }

    /// A finite number.
    std::optional<double> number(int column) const
    {
        sqlite3_value *const stored = value(column);
        const int type = stored ? sqlite3_value_type(stored) : SQLITE_NULL;
        if (type != SQLITE_INTEGER && type != SQLITE_FLOAT)
            return std::nullopt;
        const double read = sqlite3_value_double(stored);
        return std::isfinite(read) ? std::optional<double>(read) : std::nullopt;
    }

    /// What small numbers stand for, as SQLite makes one of whatever is stored: 0 for nothing, and
    /// of a text what it begins with.
    int code(int column) const
    {
        return column < 0 ? 0 : sqlite3_column_int(m_statement->get(), column);
    }

    /// The bytes of a text; null for an empty one.
    QByteArray text(int column);

    /// The same, sharing the memory of `likely` when it is that text.
    QByteArray sharedText(int column, const QByteArray &likely);

    /// A uuid: 16 bytes are written out in upper case, a text stays as it is.
    QByteArray uuid(int column);

private:
    struct Bytes {
        const char *data = nullptr;
        int size = 0;
    };

    static std::optional<qint64> wholeNumber(sqlite3_value *stored);
    int add(const QByteArray &column);
    void prepare();
    void end(int result);
    Bytes bytes(int column);
    sqlite3_value *value(int column) const
    {
        return column < 0 ? nullptr : sqlite3_column_value(m_statement->get(), column);
    }

    LibraryTables &m_tables;
    const QByteArray m_table;
    QByteArray m_columns; // as they stand in the statement
    int m_columnCount = 0;
    bool m_isComplete; // has all that is required
    std::optional<sqlite_statement> m_statement;
    row_allowance m_allowance;
    qint64 m_rowBytes = 0;
    qint64 m_textBytes = 0; // of the row
};

/// ASCII letters in upper case, everything else as it is.
void toUpperCase(QByteArray &text);

#endif // PHOTOLIB_CATALOG_TABLE_SCAN_H
