#include "cli/text_table.h"

#include "cli/output.h"

#include <algorithm>
#include <iterator>

namespace {

// A longer cell stands out of its column: a single one would make every line as long.
constexpr int widestColumn = 200;

// Of Unicode's East Asian Wide letters and pictures, those that names are made of.
bool isWide(uint character)
{
    static const uint ranges[][2] = {
        {0x1100, 0x115f},   {0x231a, 0x231b},   {0x2e80, 0x303e},   {0x3041, 0x33ff},
        {0x3400, 0x4dbf},   {0x4e00, 0x9fff},   {0xa000, 0xa4cf},   {0xac00, 0xd7a3},
        {0xf900, 0xfaff},   {0xfe30, 0xfe6f},   {0xff00, 0xff60},   {0xffe0, 0xffe6},
        {0x1f300, 0x1f64f}, {0x1f680, 0x1f6ff}, {0x1f900, 0x1f9ff}, {0x20000, 0x3fffd},
    };
    return std::any_of(std::begin(ranges), std::end(ranges), [character](const auto &range) {
        return character >= range[0] && character <= range[1];
    });
}

int cellsOf(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
        return 0;
    default:
        return isWide(character) ? 2 : 1;
    }
}

} // namespace

int displayWidth(const QString &text)
{
    const bool isAscii =
        std::all_of(text.begin(), text.end(), [](QChar letter) { return letter.unicode() < 0x80; });
    if (isAscii)
        return text.size();
    int width = 0;
    for (const uint character : text.toUcs4())
        width += cellsOf(character);
    return width;
}

void TextTable::addRow(const QStringList &cells)
{
    m_widths.resize(std::max(m_widths.size(), cells.size()));
    for (int i = 0; i < cells.size(); ++i)
        m_widths[i] = std::max(m_widths[i], std::min(displayWidth(cells[i]), widestColumn));
    m_rows.append(cells);
}

QString TextTable::line(const QStringList &cells) const
{
    QString result;
    for (int i = 0; i < cells.size(); ++i) {
        const QString padding(m_widths[i] - displayWidth(cells[i]), QLatin1Char(' '));
        result += m_right.contains(i) ? padding + cells[i] : cells[i] + padding;
        result += QLatin1String("  ");
    }
    while (result.endsWith(QLatin1Char(' ')))
        result.chop(1);
    return result;
}

void TextTable::write(Output &output) const
{
    for (const QStringList &row : m_rows)
        output.writeLine(line(row));
}
