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

/// The keys that are among `wanted`, a key set or a map of keys, in their order.
template <class Keys>
QList<quint64> keysAmong(const QList<quint64> &keys, const Keys &wanted)
{
    QList<quint64> found;
    for (const quint64 key : keys) {
        if (wanted.contains(key))
            found.append(key);
    }
    return found;
}

/// The keys without repetitions, each where it first stood.
std::vector<quint64> firstOccurrences(const std::vector<quint64> &keys);

#endif // PHOTOLIB_IOS_KEY_LISTS_H
