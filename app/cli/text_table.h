#ifndef PHOTOLIB_CLI_TEXT_TABLE_H
#define PHOTOLIB_CLI_TEXT_TABLE_H

#include <QSet>
#include <QStringList>
#include <QVector>

class Output;

/// How many cells of a terminal `text` takes: two for a wide letter, none for a mark that
/// joins the letter before it.
int displayWidth(const QString &text);

/// `text`, or as much of its beginning as takes at most `width` cells together with "…" behind it.
QString cutToWidth(const QString &text, int width);

/// A table of plain text, its columns lined up. Each column is as wide as its widest cell,
/// unless that is far wider than any line.
class TextTable
{
public:
    explicit TextTable(const QStringList &header) { addRow(header); }

    /// Lines the column `column`, counted from 0, up at its right end.
    void alignRight(int column) { m_right.insert(column); }

    /// Lets the column be narrower than its cells where the table is to fit.
    void allowCutting(int column) { m_cuttable.insert(column); }

    /// Adds a row of as many cells as the header has.
    void addRow(const QStringList &cells);

    /// Makes all lines fit into `width` cells of a terminal: the widest of the columns that may be
    /// cut become narrower, and where they would get too narrow the lines are cut. To be called
    /// when all rows are there.
    void fitInto(int width);

    /// Writes the table; throws Error like `output`.
    void write(Output &output) const;

private:
    int *widestCuttable();
    QString line(const QStringList &cells) const;

    QVector<QStringList> m_rows;
    QVector<int> m_widths;
    QSet<int> m_right;
    QSet<int> m_cuttable;
    int m_lineWidth = 0; // 0 for any
};

#endif // PHOTOLIB_CLI_TEXT_TABLE_H
