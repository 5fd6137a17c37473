#ifndef PHOTOLIB_CATALOG_TEXT_ORDER_H
#define PHOTOLIB_CATALOG_TEXT_ORDER_H

#include <QByteArray>

#include <algorithm>
#include <cstring>

/// Whether `text` comes before `other` by code point, as their bytes in UTF-8 do. Bytes of 0 count
/// like any other.
inline bool isBefore(const QByteArray &text, const QByteArray &other)
{
    const int common = std::min(text.size(), other.size());
    const int order =
        std::memcmp(text.constData(), other.constData(), static_cast<std::size_t>(common));
    return order != 0 ? order < 0 : text.size() < other.size();
}

#endif // PHOTOLIB_CATALOG_TEXT_ORDER_H
