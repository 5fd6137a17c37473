#include "cli/text_table.h"

#include "cli/output.h"

#include <algorithm>
#include <iterator>

namespace {

// A longer cell stands out of its column: a single one would make every line as long.
constexpr int widestColumn = 200;

constexpr int narrowestCut = 8; // of a cell, so that it still tells something
constexpr int gap = 2;          // between columns

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

QString cutToWidth(const QString &text, int width)
{
    if (displayWidth(text) <= width)
        return text;
    QVector<uint> kept;
    int room = width - 1;
    for (const uint character : text.toUcs4()) {
        room -= cellsOf(character);
        if (room < 0)
            break;
        kept.append(character);
    }
    return QString::fromUcs4(kept.constData(), kept.size()) + QChar(0x2026);
}

void TextTable::addRow(const QStringList &cells)
{
    m_widths.resize(std::max(m_widths.size(), cells.size()));
    for (int i = 0; i < cells.size(); ++i)
        m_widths[i] = std::max(m_widths[i], std::min(displayWidth(cells[i]), widestColumn));
    m_rows.append(cells);
}

// Null when none can be narrower.
int *TextTable::widestCuttable()
{
    int *widest = nullptr;
    for (const int column : m_cuttable) {
        int &width = m_widths[column];
        if (width > narrowestCut && (!widest || width > *widest))
            widest = &width;
    }
    return widest;
}

void TextTable::fitInto(int width)
{
    m_lineWidth = width;
    int excess = (m_widths.size() - 1) * gap - width;
    for (const int each : m_widths)
        excess += each;
    for (; excess > 0; --excess) {
        int *const widest = widestCuttable();
        if (!widest)
            break;
        --*widest;
    }
}

QString TextTable::line(const QStringList &cells) const
{
    QString result;
    for (int i = 0; i < cells.size(); ++i) {
        const bool isCut = m_lineWidth > 0 && m_cuttable.contains(i);
        const QString cell = isCut ? cutToWidth(cells[i], m_widths[i]) : cells[i];
        const QString padding(m_widths[i] - displayWidth(cell), QLatin1Char(' '));
        result += m_right.contains(i) ? padding + cell : cell + padding;
        result += QString(gap, QLatin1Char(' '));
    }
    while (result.endsWith(QLatin1Char(' ')))
        result.chop(1);
    return m_lineWidth > 0 ? cutToWidth(result, m_lineWidth) : result;
}

void TextTable::write(Output &output) const
{
    for (const QStringList &row : m_rows)
        output.writeLine(line(row));
}
