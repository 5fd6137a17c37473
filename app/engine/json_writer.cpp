#include "engine/json_writer.h"

#include "base/printable.h"
#include "base/valid_utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

rapidjson::SizeType sizeOf(const QByteArray &text)
{
    return static_cast<rapidjson::SizeType>(text.size());
}

bool isPlain(const QByteArray &text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char letter) { return letter >= ' ' && letter <= '~'; });
}

// Bytes of the character of valid UTF-8 that begins with `first`.
int lengthOf(uchar first)
{
    return first < 0x80 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

uint decoded(const QByteArray &character)
{
    const auto first = static_cast<uchar>(character[0]);
    uint value = character.size() == 1 ? first : first & (0xffU >> (character.size() + 1));
    for (int i = 1; i < character.size(); ++i)
        value = value << 6 | (static_cast<uchar>(character[i]) & 0x3fU);
    return value;
}

QByteArray escaped(const QByteArray &character)
{
    const uint value = decoded(character);
    if (value == '"' || value == '\\')
        return '\\' + character;
    if (isPrintable(value))
        return character;
    return "\\u" + QByteArray::number(value, 16).rightJustified(4, '0');
}

// Whether all of valid UTF-8 may be shown as it is; quotes and backslashes are left to the library.
bool isHarmless(const QByteArray &valid)
{
    for (int at = 0; at < valid.size();) {
        const int length = lengthOf(static_cast<uchar>(valid[at]));
        if (!isPrintable(decoded(QByteArray::fromRawData(valid.constData() + at, length))))
            return false;
        at += length;
    }
    return true;
}

QByteArray quoted(const QByteArray &valid)
{
    QByteArray result(1, '"');
    for (int at = 0; at < valid.size();) {
        const QByteArray character = valid.mid(at, lengthOf(static_cast<uchar>(valid[at])));
        result += escaped(character);
        at += character.size();
    }
    return result.append('"');
}

} // namespace

QByteArray shortestText(double number)
{
    std::array<char, 32> digits = {};
    const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    return QByteArray(digits.data(), static_cast<int>(end - digits.data()));
}

void JsonWriter::text(const QByteArray &text)
{
    if (text.isNull())
        return null();
    const bool isAsItIs = isPlain(text);
    const QByteArray valid = isAsItIs ? text : validUtf8(text);
    if (isAsItIs || isHarmless(valid)) {
        m_writer.String(valid.constData(), sizeOf(valid));
    } else {
        const QByteArray json = quoted(valid);
        m_writer.RawValue(json.constData(), static_cast<std::size_t>(json.size()),
                          rapidjson::kStringType);
    }
}

void JsonWriter::number(std::optional<qint64> number)
{
    if (number)
        this->number(*number);
    else
        null();
}

void JsonWriter::number(std::optional<double> number)
{
    if (!number || !std::isfinite(*number))
        return null();
    const QByteArray json = shortestText(*number);
    m_writer.RawValue(json.constData(), static_cast<std::size_t>(json.size()),
                      rapidjson::kNumberType);
}

void JsonWriter::boolean(std::optional<bool> value)
{
    if (value)
        m_writer.Bool(*value);
    else
        null();
}

void JsonWriter::list(const std::vector<qint64> &numbers)
{
    startList();
    for (const qint64 each : numbers)
        number(each);
    endList();
}

void JsonWriter::list(const std::vector<QByteArray> &texts)
{
    startList();
    for (const QByteArray &each : texts)
        text(each);
    endList();
}

QByteArray JsonWriter::taken()
{
    QByteArray json(m_buffer.GetString(), static_cast<int>(m_buffer.GetSize()));
    m_buffer.Clear();
    m_writer.Reset(m_buffer);
    return json;
}
