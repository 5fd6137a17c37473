#include "support/raw_pages.h"

#include "support/photos_database.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <algorithm>
#include <stdexcept>

namespace {

const char leafOfATable = 0x0d;
const char innerOfATable = 0x05;
const char leafOfAnIndex = 0x0a;

QByteArray bigEndian(quint64 value, int bytes)
{
    QByteArray result;
    for (int i = bytes - 1; i >= 0; --i)
        result.append(static_cast<char>(value >> (8 * i)));
    return result;
}

quint64 fromBigEndian(const QByteArray &bytes)
{
    quint64 value = 0;
    for (const char byte : bytes)
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

QByteArray varint(quint64 value)
{
    QByteArray result(1, static_cast<char>(value & 0x7f));
    while (value >>= 7)
        result.prepend(static_cast<char>(0x80 | (value & 0x7f)));
    return result;
}

quint64 lengthOf(quint64 serialType)
{
    const quint64 numbers[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0};
    return serialType < 10 ? numbers[serialType] : (serialType - 12) / 2;
}

// The header begins with its own length, which counts itself.
QByteArray recordHeader(const std::vector<RawValue> &row)
{
    QByteArray types;
    for (const RawValue &value : row)
        types += varint(value.serialType);
    quint64 size = static_cast<quint64>(types.size()) + 1;
    if (varint(size).size() > 1)
        ++size;
    return varint(size) + types;
}

} // namespace

QByteArray inPagesOf(int pageSize, const QByteArray &database)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("a.sqlite")));
    file.open(QIODevice::WriteOnly);
    file.write(database);
    file.close();
    sqlite3 *opened = nullptr;
    sqlite3_open(file.fileName().toUtf8().constData(), &opened);
    const SqliteOwner db(opened);
    runSql(opened, "PRAGMA page_size = " + std::to_string(pageSize) + "; VACUUM");
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

namespace {

// The sums that SQLite checks a log with, over the bytes as little-endian numbers.
struct LogSums {
    quint32 first = 0;
    quint32 second = 0;

    void add(const QByteArray &bytes)
    {
        for (int at = 0; at < bytes.size(); at += 8) {
            first += number(bytes, at) + second;
            second += number(bytes, at + 4) + first;
        }
    }

    QByteArray bytes() const { return bigEndian(first, 4) + bigEndian(second, 4); }

private:
    static quint32 number(const QByteArray &bytes, int at)
    {
        return qFromLittleEndian<quint32>(bytes.constData() + at);
    }
};

} // namespace

QByteArray logThatClaims(QByteArray &database, quint32 pages)
{
    database.replace(18, 2, QByteArray("\2\2", 2));
    const int pageSize = RawPages(database).pageSize();
    const QByteArray page = database.left(pageSize).replace(28, 4, bigEndian(pages, 4));
    const QByteArray salts = bigEndian(1, 4) + bigEndian(2, 4);
    const QByteArray header = bigEndian(0x377f0682, 4) + bigEndian(3007000, 4) +
                              bigEndian(static_cast<quint64>(pageSize), 4) + bigEndian(0, 4) +
                              salts;
    const QByteArray frame = bigEndian(1, 4) + bigEndian(pages, 4);
    LogSums sums;
    sums.add(header);
    const QByteArray start = header + sums.bytes() + frame + salts;
    sums.add(frame);
    sums.add(page);
    return start + sums.bytes() + page;
}

RawPages::RawPages(const QByteArray &database)
    : m_bytes(database), m_pageSize(static_cast<int>(fromBigEndian(database.mid(16, 2))))
{
    if (m_pageSize == 1)
        m_pageSize = 65536;
}

int RawPages::root(const std::string &table) const
{
    const SqliteOwner db = openEmptyDatabase();
    QByteArray copy = m_bytes;
    sqlite3_deserialize(db.get(), "main", reinterpret_cast<unsigned char *>(copy.data()),
                        copy.size(), copy.size(), SQLITE_DESERIALIZE_READONLY);
    sqlite3_stmt *stmt = nullptr;
    const std::string sql = "SELECT rootpage FROM sqlite_master WHERE name = '" + table + "'";
    sqlite3_prepare_v2(db.get(), sql.c_str(), -1, &stmt, nullptr);
    const int page = sqlite3_step(stmt) == SQLITE_ROW ? sqlite3_column_int(stmt, 0) : 0;
    sqlite3_finalize(stmt);
    if (page == 0)
        throw std::runtime_error("no table " + table);
    return page;
}

int RawPages::add()
{
    m_bytes.append(QByteArray(m_pageSize, '\0'));
    return m_bytes.size() / m_pageSize;
}

int RawPages::addOverflow(const QByteArray &content)
{
    const int first = m_bytes.size() / m_pageSize + 1;
    const int perPage = m_pageSize - 4;
    for (int at = 0; at < content.size(); at += perPage) {
        const int page = add();
        const bool isLast = at + perPage >= content.size();
        const QByteArray bytes =
            bigEndian(isLast ? 0 : static_cast<quint64>(page) + 1, 4) + content.mid(at, perPage);
        m_bytes.replace((page - 1) * m_pageSize, bytes.size(), bytes);
    }
    return first;
}

int RawPages::addEndlessOverflow()
{
    const int page = add();
    m_bytes.replace((page - 1) * m_pageSize, 4, bigEndian(static_cast<quint64>(page), 4));
    return page;
}

// How much of a row its page holds is fixed by the file format.
QByteArray RawPages::cell(const std::vector<RawValue> &row, int key, int overflow) const
{
    QByteArray payload = recordHeader(row);
    quint64 size = static_cast<quint64>(payload.size());
    for (const RawValue &value : row) {
        payload += value.bytes;
        size += lengthOf(value.serialType);
    }
    const QByteArray start = varint(size) + varint(static_cast<quint64>(key));
    return start + local(payload, size, static_cast<quint64>(m_pageSize) - 35, overflow);
}

QByteArray RawPages::local(const QByteArray &payload, quint64 size, quint64 most,
                           int overflow) const
{
    if (size <= most)
        return payload;
    const quint64 usable = static_cast<quint64>(m_pageSize);
    const quint64 least = (usable - 12) * 32 / 255 - 23;
    const quint64 wanted = least + (size - least) % (usable - 4);
    const int length = static_cast<int>(wanted <= most ? wanted : least);
    return payload.left(length).leftJustified(length, 'x') +
           bigEndian(static_cast<quint64>(overflow), 4);
}

void RawPages::write(int page, char type, const std::vector<QByteArray> &cells, int rightChild)
{
    QByteArray pointers;
    int end = m_pageSize;
    QByteArray bytes(m_pageSize, '\0');
    for (const QByteArray &cell : cells) {
        end -= cell.size();
        if (end < 0)
            throw std::runtime_error("more cells than the page holds");
        bytes.replace(end, cell.size(), cell);
        pointers += bigEndian(static_cast<quint64>(end), 2);
    }
    const QByteArray header = QByteArray(1, type) + bigEndian(0, 2) + bigEndian(cells.size(), 2) +
                              bigEndian(static_cast<quint64>(end) & 0xffff, 2) +
                              QByteArray(1, '\0') +
                              (rightChild ? bigEndian(static_cast<quint64>(rightChild), 4) : "");
    if (header.size() + pointers.size() > end)
        throw std::runtime_error("more cells than the page holds");
    bytes.replace(0, header.size() + pointers.size(), header + pointers);
    m_bytes.replace((page - 1) * m_pageSize, m_pageSize, bytes);
}

void RawPages::fillLeaf(int page, const std::vector<RawValue> &row, int rows, int overflow)
{
    const int fitting = (m_pageSize - 8) / (cell(row, 100000, overflow).size() + 2);
    std::vector<QByteArray> cells;
    for (int key = 1; key <= std::min(rows, fitting); ++key)
        cells.push_back(cell(row, key, overflow));
    write(page, leafOfATable, cells, 0);
}

void RawPages::fillLeaf(int page, const std::vector<std::vector<RawValue>> &rows, int overflow)
{
    std::vector<QByteArray> cells;
    for (const std::vector<RawValue> &row : rows)
        cells.push_back(cell(row, static_cast<int>(cells.size()) + 1, overflow));
    write(page, leafOfATable, cells, 0);
}

void RawPages::fillIndex(int page, quint32 bytes, int overflow)
{
    const quint64 header = 8; // with its text's type of five bytes
    const QByteArray payload = recordHeader({{8, ""}, {9, ""}, {13 + 2 * (bytes - header), ""}});
    const quint64 most = static_cast<quint64>(m_pageSize - 12) * 64 / 255 - 23;
    write(page, leafOfAnIndex, {varint(bytes) + local(payload, bytes, most, overflow)}, 0);
}

void RawPages::fillInner(int page, int child)
{
    fillInner(page, std::vector<int>(static_cast<std::size_t>(m_pageSize - 12) / 9, child));
}

void RawPages::fillInner(int page, const std::vector<int> &children)
{
    std::vector<QByteArray> cells;
    for (std::size_t i = 0; i + 1 < children.size(); ++i)
        cells.push_back(bigEndian(static_cast<quint64>(children[i]), 4) + varint(i + 1));
    write(page, innerOfATable, cells, children.back());
}

void RawPages::fillChain(int page, int child)
{
    write(page, innerOfATable, {}, child);
}

QByteArray RawPages::bytes(int pages) const
{
    QByteArray result = m_bytes;
    if (pages * m_pageSize > result.size())
        result.append(QByteArray(pages * m_pageSize - result.size(), '\0'));
    result.replace(28, 4, bigEndian(static_cast<quint64>(result.size() / m_pageSize), 4));
    return result;
}
