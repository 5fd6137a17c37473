#include "ios/key_lists.h"

#include <algorithm>

namespace {

struct placed_key {
    quint64 key;
    std::size_t place;
};

// A type of its own, which the compiler can expand in a sort; a function it calls.
struct key_then_place {
    bool operator()(const placed_key &left, const placed_key &right) const
    {
        return left.key != right.key ? left.key < right.key : left.place < right.place;
    }
};

} // namespace

key_set::key_set(const QList<quint64> &keys) : m_keys(keys.begin(), keys.end())
{
    // Device albums mostly list their photos in key order.
    if (!std::is_sorted(m_keys.begin(), m_keys.end()))
        std::sort(m_keys.begin(), m_keys.end());
}

bool key_set::contains(quint64 key) const
{
    return std::binary_search(m_keys.begin(), m_keys.end(), key);
}

QList<quint64> keysAmong(const QList<quint64> &keys, const key_set &wanted)
{
    QList<quint64> found;
    for (const quint64 key : keys) {
        if (wanted.contains(key))
            found.append(key);
    }
    return found;
}

std::vector<quint64> firstOccurrences(const std::vector<quint64> &keys)
{
    std::vector<placed_key> placed;
    placed.reserve(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i)
        placed.push_back(placed_key{keys[i], i});
    std::sort(placed.begin(), placed.end(), key_then_place());

    std::vector<bool> isRepeated(keys.size(), false);
    for (std::size_t i = 1; i < placed.size(); ++i)
        isRepeated[placed[i].place] = placed[i].key == placed[i - 1].key;

    std::vector<quint64> first;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (!isRepeated[i])
            first.push_back(keys[i]);
    }
    return first;
}
