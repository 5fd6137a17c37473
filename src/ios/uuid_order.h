#ifndef PHOTOLIB_IOS_UUID_ORDER_H
#define PHOTOLIB_IOS_UUID_ORDER_H

#include <QByteArray>
#include <QtGlobal>

#include <vector>

/// Sorts uuids byte by byte, a shorter one before a longer one that it begins. It keeps
/// pointers: the uuids must stay where they are.
class uuid_order
{
public:
    explicit uuid_order(int expected);

    void add(const QByteArray &uuid);

    /// All uuids added, in order, repetitions included.
    std::vector<const QByteArray *> sorted();

private:
    // The first bytes as a number spare most comparisons the way to the bytes.
    struct entry {
        quint64 prefix;
        const QByteArray *uuid;
    };

    static bool isLess(const entry &left, const entry &right);

    std::vector<entry> m_entries;
};

#endif // PHOTOLIB_IOS_UUID_ORDER_H
