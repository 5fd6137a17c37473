#ifndef PHOTOLIB_TESTS_SUPPORT_RAW_PAGES_H
#define PHOTOLIB_TESTS_SUPPORT_RAW_PAGES_H

#include <QByteArray>
#include <QtGlobal>

#include <string>
#include <vector>

/// A column's value in a row that is written to a page as it stands.
struct RawValue {
    quint64 serialType; ///< as in the file format: 13 + 2 n for a text of n bytes
    QByteArray bytes;   ///< may be shorter; the rest is in the overflow pages

    static RawValue number(quint8 value) { return {1, QByteArray(1, static_cast<char>(value))}; }
    static RawValue text(const QByteArray &bytes)
    {
        return {13 + 2 * static_cast<quint64>(bytes.size()), bytes};
    }
    static RawValue null() { return {0, QByteArray()}; }
};

/// The same database in pages of `pageSize` bytes.
QByteArray inPagesOf(int pageSize, const QByteArray &database);

/// A write-ahead log for `database`, which is switched to it: the first page again, saying that the
/// database has `pages` pages.
QByteArray logThatClaims(QByteArray &database, quint32 pages);

/// Changes the pages of a database in ways in which SQLite never writes them: rows that share
/// their bytes, so that few pages hold rows without number.
class RawPages
{
public:
    /// `database` must have no write-ahead log.
    explicit RawPages(const QByteArray &database);

    int pageSize() const { return m_pageSize; }

    /// The page at which a table begins.
    int root(const std::string &table) const;

    /// Adds a page of zero bytes; returns its number. Pages count from 1.
    int add();

    /// Adds overflow pages that hold `content`; returns the first.
    int addOverflow(const QByteArray &content);

    /// Adds an overflow page that goes on in itself; returns its number.
    int addEndlessOverflow();

    /// Makes `page` a leaf of an index with one key: a 0, a 1 and a text, of `bytes`
    /// bytes in all.
    void fillIndex(int page, quint32 bytes, int overflow);

    /// Makes `page` a leaf of as many equal rows as fit, at most `rows`, with keys from 1. What
    /// the page does not hold of a row is taken from `overflow`.
    void fillLeaf(int page, const std::vector<RawValue> &row, int rows, int overflow = 0);

    /// Makes `page` a leaf of different rows, which share `overflow`. They must fit.
    void fillLeaf(int page, const std::vector<std::vector<RawValue>> &rows, int overflow = 0);

    /// Makes `page` an inner page whose children, as many as fit, are all `child`.
    void fillInner(int page, int child);

    /// Makes `page` an inner page with these children. They must fit.
    void fillInner(int page, const std::vector<int> &children);

    /// Makes `page` an inner page with the one child `child`.
    void fillChain(int page, int child);

    /// The file, at least `pages` pages long.
    QByteArray bytes(int pages = 0) const;

private:
    QByteArray cell(const std::vector<RawValue> &row, int key, int overflow) const;
    QByteArray local(const QByteArray &payload, quint64 size, quint64 most, int overflow) const;
    void write(int page, char type, const std::vector<QByteArray> &cells, int rightChild);

    QByteArray m_bytes;
    int m_pageSize;
};

#endif // PHOTOLIB_TESTS_SUPPORT_RAW_PAGES_H
