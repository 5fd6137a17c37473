#ifndef PHOTOLIB_IOS_UUID_ORDER_H
#define PHOTOLIB_IOS_UUID_ORDER_H

#include <QByteArray>
#include <QMap>
#include <QtGlobal>

#include <vector>

/// Enters uuids into a set in byte order, a shorter one before a longer one that it
/// begins: in that order the set grows at its end, without searching.
class uuid_order
{
public:
    /// Makes room for `expected` uuids.
    explicit uuid_order(int expected);

    /// Notes `uuid`, which is not changed and must stay where it is until it is inserted.
    void add(QByteArray &uuid) { m_uuids.push_back(&uuid); }

    /// Inserts all uuids noted, each with the value true.
    void insertInto(QMap<QByteArray, bool> &set);

private:
    // The first bytes as a number spare most comparisons the way to the bytes.
    struct entry {
        quint64 prefix;
        QByteArray *uuid;

        bool operator<(const entry &other) const
        {
            return prefix != other.prefix ? prefix < other.prefix : *uuid < *other.uuid;
        }
    };

    std::vector<entry> sortedEntries() const;

    std::vector<QByteArray *> m_uuids;
};

#endif // PHOTOLIB_IOS_UUID_ORDER_H
