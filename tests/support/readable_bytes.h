#ifndef PHOTOLIB_TESTS_SUPPORT_READABLE_BYTES_H
#define PHOTOLIB_TESTS_SUPPORT_READABLE_BYTES_H

#include <QByteArray>

#include <cctype>
#include <ostream>

/// Shows bytes in a failure as a text, of which the first thousand.
inline void PrintTo(const QByteArray &bytes, std::ostream *stream)
{
    const int most = 1000;
    *stream << '"';
    for (const char byte : bytes.left(most)) {
        if (std::isprint(static_cast<unsigned char>(byte)))
            *stream << byte;
        else
            *stream << "\\x" << QByteArray(1, byte).toHex().constData();
    }
    *stream << '"';
    if (bytes.size() > most)
        *stream << " and " << bytes.size() - most << " bytes more";
}

#endif // PHOTOLIB_TESTS_SUPPORT_READABLE_BYTES_H
