#ifndef PHOTOLIB_CAMERADB_ASSET_SCHEMA_H
#define PHOTOLIB_CAMERADB_ASSET_SCHEMA_H

#include <QByteArray>
#include <QString>

struct sqlite3;

/// How a database keeps its assets: the parts of the statements that differ between the
/// systems that wrote it. SQL throughout.
struct asset_table {
    const char *name;
    const char *attributesJoin; ///< which row T of ZADDITIONALASSETATTRIBUTES belongs to asset A
    const char *photos;         ///< the assets A that are photos to list
    const char *videos;         ///< the assets A that are videos to list
    const char *extendInfo;     ///< the statement of the extended information
};

/// What the statements on assets are made from: which table a database keeps its assets in and
/// which columns that has. Up to iOS 13 it is ZGENERICASSET, since then ZASSET.
///
/// A value that is read once and does not need the connection afterwards; it neither changes
/// nor is changed. Columns are looked for as a text in the definition of the table.
class asset_schema
{
public:
    /// Reads the schema of `db`, without a log line.
    explicit asset_schema(sqlite3 *db);

    /// False when the schema could not be read; then there is no column, and the table is
    /// ZGENERICASSET.
    bool isRead() const { return m_result == 0; }

    /// SQLite's code and words for why it could not be read.
    int result() const { return m_result; }
    const char *message() const { return m_message.constData(); }

    /// ZGENERICASSET where there is one, else ZASSET where there is one, else ZGENERICASSET.
    const asset_table &table() const { return *m_table; }

    /// Whether the assets are in ZASSET, with dates of creation and durations of their own.
    bool isZasset() const;

    /// Whether the definition contains `column`, case-sensitively. False after logging when
    /// the schema could not be read.
    bool hasColumn(const QString &column) const;

    /// `selectItem` where there is the column `column` for it, otherwise a literal that
    /// SQLite reads as the text 0. Logs as `hasColumn` does.
    const char *itemOrMissing(const char *column, const char *selectItem) const;

    /// Whether a definition that belongs to the table contains ZKINDSUBTYPE.
    bool hasKindSubtype() const { return m_hasKindSubtype; }

private:
    int m_result;
    QByteArray m_message;
    const asset_table *m_table;
    QByteArray m_definition;
    bool m_hasKindSubtype;
};

/// The literal that stands in for a column that a database does not have.
extern const char *const missingColumn;

#endif // PHOTOLIB_CAMERADB_ASSET_SCHEMA_H
