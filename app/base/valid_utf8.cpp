#include "base/valid_utf8.h"

#include <algorithm>

namespace {

// What may follow the first byte of a character.
struct Form {
    int length = 1;            // of the whole character; 0 where no character begins so
    uchar lowestSecond = 0x80; // so that there are no other ways to write it, and no surrogates
    uchar highestSecond = 0xbf;
};

Form formOf(uchar first)
{
    if (first < 0x80)
        return {};
    if (first < 0xc2 || first > 0xf4)
        return {0};
    if (first < 0xe0)
        return {2};
    if (first < 0xf0)
        return {3, uchar(first == 0xe0 ? 0xa0 : 0x80), uchar(first == 0xed ? 0x9f : 0xbf)};
    return {4, uchar(first == 0xf0 ? 0x90 : 0x80), uchar(first == 0xf4 ? 0x8f : 0xbf)};
}

// How many bytes from `at` on are the character of `form`, or the start of it.
int matchingLength(const QByteArray &text, int at, const Form &form)
{
    int length = 1;
    for (; length < form.length && at + length < text.size(); ++length) {
        const auto byte = static_cast<uchar>(text[at + length]);
        const uchar lowest = length == 1 ? form.lowestSecond : 0x80;
        const uchar highest = length == 1 ? form.highestSecond : 0xbf;
        if (byte < lowest || byte > highest)
            break;
    }
    return length;
}

} // namespace

QByteArray validUtf8(const QByteArray &text)
{
    if (std::all_of(text.begin(), text.end(), [](char byte) { return uchar(byte) < 0x80; }))
        return text;
    QByteArray valid;
    valid.reserve(text.size());
    for (int at = 0; at < text.size();) {
        const Form form = formOf(static_cast<uchar>(text[at]));
        const int length = matchingLength(text, at, form);
        if (length == form.length)
            valid.append(text.constData() + at, length);
        else
            valid.append("\xef\xbf\xbd");
        at += length;
    }
    return valid;
}
