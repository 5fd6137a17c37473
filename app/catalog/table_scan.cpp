#include "catalog/table_scan.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

namespace {

const int uuidBytes = 16;

// As 8-4-4-4-12 digits.
QByteArray writtenUuid(const char *bytes)
{
    QByteArray text = QByteArray::fromRawData(bytes, uuidBytes).toHex().toUpper();
    for (int dash : {8, 13, 18, 23})
        text.insert(dash, '-');
    return text;
}

bool isWhole(double number)
{
    const double beyond = 9223372036854775808.0; // 2^63
    return number >= -beyond && number < beyond && std::trunc(number) == number;
}

} // namespace

TableScan::TableScan(LibraryTables &tables, const QByteArray &table)
    : m_tables(tables), m_table(table), m_isComplete(tables.has(table)), m_allowance(tables.db())
{
    if (!m_isComplete)
        tables.tellMissing(table);
    else if (tables.columns(table).empty())
        m_isComplete = false;
}

int TableScan::require(const QByteArray &column)
{
    const int number = want(column);
    if (number == none)
        m_isComplete = false;
    return number;
}

// Of a table that cannot be read at all no column is missed.
int TableScan::want(const QByteArray &column)
{
    const int number = wantQuietly(column);
    if (number == none && !m_tables.columns(m_table).empty())
        m_tables.tellMissing(m_table + '.' + column);
    return number;
}

int TableScan::wantQuietly(const QByteArray &column)
{
    return m_tables.hasColumn(m_table, column) ? add(column) : none;
}

int TableScan::add(const QByteArray &column)
{
    m_columns += (m_columnCount ? ", " : "") + column;
    return m_columnCount++;
}

bool TableScan::isReadable()
{
    if (!m_statement && m_isComplete)
        prepare();
    return m_isComplete;
}

void TableScan::prepare()
{
    m_tables.throwIfCancelled();
    m_statement.emplace(m_tables.db(),
                        ("SELECT " + m_columns + " FROM " + m_table + " NOT INDEXED").constData());
    if (!m_statement->isPrepared()) {
        m_isComplete = false;
        m_tables.tellFailure(m_table, m_statement->result());
    }
}

bool TableScan::next()
{
    if (!isReadable())
        return false;
    m_allowance.spend(m_rowBytes + m_textBytes);
    m_textBytes = 0;
    m_tables.throwIfCancelled();
    if (m_allowance.isExhausted()) {
        m_isComplete = false;
        m_tables.tellUnread(m_table, "its rows are more than the files can hold");
        return false;
    }
    if (m_statement->nextRow())
        return true;
    end(m_statement->finish());
    return false;
}

void TableScan::end(int result)
{
    m_isComplete = false;
    if (result != SQLITE_OK)
        m_tables.tellFailure(m_table, result);
}

std::optional<qint64> TableScan::wholeNumber(sqlite3_value *stored)
{
    if (sqlite3_value_type(stored) != SQLITE_FLOAT || !isWhole(sqlite3_value_double(stored)))
        return std::nullopt;
    return static_cast<qint64>(sqlite3_value_double(stored));
}

TableScan::Bytes TableScan::bytes(int column)
{
    sqlite3_value *const stored = value(column);
    const int type = stored ? sqlite3_value_type(stored) : SQLITE_NULL;
    if (type == SQLITE_NULL)
        return {};
    // The text of a database in UTF-16 is converted first.
    const void *const data =
        type == SQLITE_BLOB ? sqlite3_value_blob(stored) : sqlite3_value_text(stored);
    const int size = sqlite3_value_bytes(stored);
    if (!data && (type != SQLITE_BLOB || size > 0))
        throw std::bad_alloc();
    m_textBytes += size;
    return {static_cast<const char *>(data), size};
}

QByteArray TableScan::text(int column)
{
    const Bytes stored = bytes(column);
    return stored.size > 0 ? QByteArray(stored.data, stored.size) : QByteArray();
}

QByteArray TableScan::sharedText(int column, const QByteArray &likely)
{
    const Bytes stored = bytes(column);
    if (!stored.data || stored.size == 0)
        return QByteArray();
    const bool isLikely =
        stored.size == likely.size() &&
        std::memcmp(stored.data, likely.constData(), static_cast<std::size_t>(stored.size)) == 0;
    return isLikely ? likely : QByteArray(stored.data, stored.size);
}

QByteArray TableScan::uuid(int column)
{
    const Bytes stored = bytes(column);
    if (stored.size == uuidBytes && sqlite3_column_type(m_statement->get(), column) == SQLITE_BLOB)
        return writtenUuid(stored.data);
    return stored.size > 0 ? QByteArray(stored.data, stored.size) : QByteArray();
}

void toUpperCase(QByteArray &text)
{
    const auto isLower = [](char letter) { return letter >= 'a' && letter <= 'z'; };
    // To the end, as it is mostly: such a loop takes many letters at once.
    bool hasLower = false;
    for (const char letter : qAsConst(text))
        hasLower |= isLower(letter);
    if (!hasLower)
        return;
    for (char &letter : text) {
        if (isLower(letter))
            letter = static_cast<char>(letter - 'a' + 'A');
    }
}
