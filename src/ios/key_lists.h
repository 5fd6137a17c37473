#ifndef PHOTOLIB_IOS_KEY_LISTS_H
#define PHOTOLIB_IOS_KEY_LISTS_H

#include <QList>
#include <QtGlobal>

#include <vector>

/// Keys come from the device, so these look-ups sort rather than hash: no choice of
/// keys makes them slow.

/// An unchanging set of keys.
class key_set
{
public:
    explicit key_set(const QList<quint64> &keys);

    bool contains(quint64 key) const;

private:
    std::vector<quint64> m_keys; // ascending
};

/// The keys that are among `wanted`, in their order.
QList<quint64> keysAmong(const QList<quint64> &keys, const key_set &wanted);

/// The keys without repetitions, each where it first stood.
std::vector<quint64> firstOccurrences(const std::vector<quint64> &keys);

#endif // PHOTOLIB_IOS_KEY_LISTS_H
