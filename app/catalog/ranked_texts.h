#ifndef PHOTOLIB_CATALOG_RANKED_TEXTS_H
#define PHOTOLIB_CATALOG_RANKED_TEXTS_H

#include "catalog/links.h"

#include <QByteArray>

#include <vector>

/// Texts by code point, each once: a number stands for a text, and compares as the text does.
class RankedTexts
{
public:
    RankedTexts() = default;
    explicit RankedTexts(const std::vector<QByteArray> &texts);

    /// The number of the text at this place in the list that was given.
    quint32 rank(std::size_t place) const { return m_ranks[place]; }

    /// The texts of `ranks`, in their order. They share their memory.
    std::vector<QByteArray> texts(Links::Numbers ranks) const;

private:
    std::vector<QByteArray> m_texts;
    std::vector<quint32> m_ranks;
};

#endif // PHOTOLIB_CATALOG_RANKED_TEXTS_H
