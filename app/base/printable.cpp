#include "base/printable.h"

#include <QVector>

#include <algorithm>

namespace {

// Bytes of the UTF-8 sequence that begins at `at`; 0 when none does.
int sequenceLength(const QByteArray &text, int at)
{
    const auto first = static_cast<uchar>(text[at]);
    if (first < 0x80)
        return 1;
    const int length = first < 0xc2 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    if (length == 0 || at + length > text.size())
        return 0;
    const QByteArray sequence = text.mid(at, length);
    return QString::fromUtf8(sequence).toUtf8() == sequence ? length : 0;
}

// What most names are.
bool isPlain(char letter)
{
    return letter >= ' ' && letter <= '~';
}

QByteArray escaped(const QByteArray &bytes)
{
    QByteArray result;
    for (const char byte : bytes)
        result += "\\x" + QByteArray(1, byte).toHex();
    return result;
}

} // namespace

bool isPrintable(uint character)
{
    const bool isDirection = (character >= 0x202a && character <= 0x202e) ||
                             (character >= 0x2066 && character <= 0x2069) || character == 0x200e ||
                             character == 0x200f || character == 0x061c;
    const bool isLineBreak = character == 0x2028 || character == 0x2029;
    return !isDirection && !isLineBreak && QChar::category(character) != QChar::Other_Control;
}

QByteArray printable(const QByteArray &text)
{
    if (std::all_of(text.begin(), text.end(), isPlain))
        return text;
    QByteArray result;
    for (int at = 0; at < text.size();) {
        // A device may have made the text a million letters long.
        if (isPlain(text[at])) {
            result += text[at++];
            continue;
        }
        const int length = sequenceLength(text, at);
        const QByteArray sequence = text.mid(at, qMax(length, 1));
        const bool show = length > 1 && isPrintable(QString::fromUtf8(sequence).toUcs4().first());
        result += show ? sequence : escaped(sequence);
        at += sequence.size();
    }
    return result;
}

QString printable(const QString &text)
{
    return QString::fromUtf8(printable(text.toUtf8()));
}
