#include "catalog/ranked_texts.h"

#include "catalog/text_order.h"

#include <algorithm>
#include <numeric>

// Bytes of UTF-8 compare as code points do.
RankedTexts::RankedTexts(const std::vector<QByteArray> &texts) : m_ranks(texts.size())
{
    std::vector<quint32> order(texts.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(),
              [&](quint32 place, quint32 other) { return isBefore(texts[place], texts[other]); });
    for (const quint32 place : order) {
        if (m_texts.empty() || m_texts.back() != texts[place])
            m_texts.push_back(texts[place]);
        m_ranks[place] = static_cast<quint32>(m_texts.size() - 1);
    }
}

std::vector<QByteArray> RankedTexts::texts(Links::Numbers ranks) const
{
    std::vector<QByteArray> texts;
    texts.reserve(ranks.size());
    for (const quint32 rank : ranks)
        texts.push_back(m_texts[rank]);
    return texts;
}
