#ifndef PHOTOLIB_BASE_VALID_UTF8_H
#define PHOTOLIB_BASE_VALID_UTF8_H

#include <QByteArray>

/// `text` with U+FFFD in place of what is not UTF-8: one for each byte that begins no character,
/// and one for each character that is broken off.
QByteArray validUtf8(const QByteArray &text);

#endif // PHOTOLIB_BASE_VALID_UTF8_H
