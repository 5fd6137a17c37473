#ifndef PHOTOLIB_BASE_PRINTABLE_H
#define PHOTOLIB_BASE_PRINTABLE_H

#include <QByteArray>
#include <QString>

/// `text` in a form that no terminal takes for a command and that stays on one line: a
/// control character becomes "\x1b", say, and so does each byte that is not UTF-8. What
/// would turn the direction of writing is escaped like a control character.
QByteArray printable(const QByteArray &text);
QString printable(const QString &text);

/// Whether the Unicode character needs no escape in such a text.
bool isPrintable(uint character);

#endif // PHOTOLIB_BASE_PRINTABLE_H
