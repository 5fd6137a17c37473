#include "engine/id_ranges.h"

#include "engine/photo_ids.h"

#include <QByteArray>

#include <algorithm>
#include <limits>

namespace {

quint64 number(const std::string &digits)
{
    bool isSmall = false;
    const quint64 value = QByteArray::fromStdString(digits).toULongLong(&isSmall);
    return isSmall ? value : std::numeric_limits<quint64>::max();
}

} // namespace

std::optional<IdRange> idRange(const std::string &text)
{
    const std::size_t dash = text.find('-');
    const std::string first = text.substr(0, dash);
    const std::string last = dash == std::string::npos ? first : text.substr(dash + 1);
    if (!isNumber(first) || !isNumber(last))
        return std::nullopt;
    return IdRange{text, number(first), number(last), dash != std::string::npos};
}

IdSelection::IdSelection(const std::vector<IdRange> &ranges)
{
    std::vector<IdRange> sorted = ranges;
    std::sort(sorted.begin(), sorted.end(),
              [](const IdRange &a, const IdRange &b) { return a.first < b.first; });
    for (const IdRange &range : sorted) {
        if (!range.isRange)
            m_ids.push_back(range.first);
        else if (!m_ranges.empty() && range.first <= m_ranges.back().last)
            m_ranges.back().last = std::max(m_ranges.back().last, range.last);
        else
            m_ranges.push_back(range);
    }
}

bool IdSelection::names(quint64 id) const
{
    return std::binary_search(m_ids.begin(), m_ids.end(), id);
}

bool IdSelection::covers(quint64 id) const
{
    const auto next =
        std::upper_bound(m_ranges.begin(), m_ranges.end(), id,
                         [](quint64 wanted, const IdRange &range) { return wanted < range.first; });
    return next != m_ranges.begin() && std::prev(next)->last >= id;
}
