#ifndef PHOTOLIB_CLI_TEXT_TABLE_H
#define PHOTOLIB_CLI_TEXT_TABLE_H

#include <QSet>
#include <QStringList>
#include <QVector>

class Output;

/// How many cells of a terminal `text` takes: two for a wide letter, none for a mark that
/// joins the letter before it.
int displayWidth(const QString &text);

/// A table of plain text, its columns lined up. Each column is as wide as its widest cell,
/// unless that is far wider than any line.
class TextTable
{
public:
    explicit TextTable(const QStringList &header) { addRow(header); }

    /// Lines the column `column`, counted from 0, up at its right end.
    void alignRight(int column) { m_right.insert(column); }

    /// Adds a row of as many cells as the header has.
    void addRow(const QStringList &cells);

    /// Writes the table; throws Error like `output`.
    void write(Output &output) const;

private:
    QString line(const QStringList &cells) const;

    QVector<QStringList> m_rows;
    QVector<int> m_widths;
    QSet<int> m_right;
};

#endif // PHOTOLIB_CLI_TEXT_TABLE_H
