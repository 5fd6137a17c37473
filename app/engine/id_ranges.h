#ifndef PHOTOLIB_ENGINE_ID_RANGES_H
#define PHOTOLIB_ENGINE_ID_RANGES_H

#include <QtGlobal>

#include <optional>
#include <string>
#include <vector>

/// An id, "42", or a range of them, "3-9", as a person names it.
struct IdRange {
    std::string text;
    quint64 first = 0; ///< numbers that are too large count as the largest one
    quint64 last = 0;
    bool isRange = false;

    bool isReversed() const { return first > last; }
};

/// What `text` names; nothing when it is neither. A range may be reversed.
std::optional<IdRange> idRange(const std::string &text);

/// Ids that are named one by one and in ranges. Quick to ask, however many there are.
class IdSelection
{
public:
    /// The ranges must not be reversed.
    explicit IdSelection(const std::vector<IdRange> &ranges);

    /// Whether `id` is named by itself.
    bool names(quint64 id) const;

    /// Whether a range holds `id`.
    bool covers(quint64 id) const;

private:
    std::vector<quint64> m_ids;    // sorted
    std::vector<IdRange> m_ranges; // sorted, apart from each other
};

#endif // PHOTOLIB_ENGINE_ID_RANGES_H
