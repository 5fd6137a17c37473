#ifndef PHOTOLIB_SAMPLE_ROW_INSERTER_H
#define PHOTOLIB_SAMPLE_ROW_INSERTER_H

#include "sample/sqlite_handle.h"
#include "sample/table_columns.h"

#include <QByteArrayList>

#include <utility>

namespace sample {

/// The statement that makes a table of `columns`.
template <typename Row>
QByteArray createStatement(const QByteArray &table, const QVector<Column<Row>> &columns)
{
    QByteArrayList declarations;
    for (const Column<Row> &column : columns)
        declarations.append(QByteArray(column.name) + ' ' + column.type);
    return "CREATE TABLE " + table + " ( " + declarations.join(", ") + " )";
}

/// The statement that makes a table of pairs, or of pairs in an order: the first two of `columns`
/// are its key.
inline QByteArray relationStatement(const QByteArray &table, const QByteArrayList &columns)
{
    return "CREATE TABLE " + table + " ( " + columns.join(" INTEGER, ") +
           " INTEGER, PRIMARY KEY (" + columns.at(0) + ", " + columns.at(1) + ") )";
}

inline QByteArray insertStatement(const QByteArray &table, const QByteArrayList &columns)
{
    QByteArrayList marks;
    for (int i = 0; i < columns.size(); ++i)
        marks.append("?");
    return "INSERT INTO " + table + " (" + columns.join(", ") + ") VALUES (" + marks.join(", ") +
           ')';
}

/// Inserts rows of one table.
template <typename Row>
class RowInserter
{
public:
    RowInserter(const Database &database, const QByteArray &table, QVector<Column<Row>> columns)
        : m_columns(std::move(columns)),
          m_statement(database, insertStatement(table, namesOf(m_columns)))
    {
    }

    void insert(const Row &row)
    {
        for (int i = 0; i < m_columns.size(); ++i)
            m_statement.bind(i + 1, m_columns.at(i).value(row));
        m_statement.run();
    }

private:
    static QByteArrayList namesOf(const QVector<Column<Row>> &columns)
    {
        QByteArrayList names;
        for (const Column<Row> &column : columns)
            names.append(column.name);
        return names;
    }

    QVector<Column<Row>> m_columns;
    Statement m_statement;
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_ROW_INSERTER_H
