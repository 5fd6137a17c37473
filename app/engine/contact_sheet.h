#ifndef PHOTOLIB_ENGINE_CONTACT_SHEET_H
#define PHOTOLIB_ENGINE_CONTACT_SHEET_H

#include <QImage>
#include <QPainter>
#include <QRect>
#include <QSize>
#include <QString>

/// Where things are on a page of a contact sheet, in pixels: a heading, and below it a grid
/// of cells, each with a box for the picture and a line for the name.
class SheetLayout
{
public:
    /// The columns that suit `cells` cells: the page is about as high as it is wide.
    static int columnsFor(int cells);

    SheetLayout(int cells, int columns) : m_cells(cells), m_columns(columns) {}

    QSize size() const;

    /// The two lines of the heading.
    QRect title() const;
    QRect subtitle() const;

    /// The square that the picture of the cell `index` is fitted into, at its bottom.
    QRect pictureBox(int index) const;
    QRect nameLine(int index) const;

    /// All of the page below the heading.
    QRect body() const;

private:
    const int m_cells;
    const int m_columns;
};

/// What stands at the head of a page.
struct SheetHeading {
    QString title;
    QString subtitle;
};

/// What one cell shows.
struct SheetCell {
    QString name;
    QImage picture;      ///< upright; null when there is none
    QString placeholder; ///< the words in its place
    bool isVideo = false;
    int seconds = 0;        ///< of a video; 0 when it is not known
    bool isTrashed = false; ///< is dimmed
    QString fileMark;       ///< what is wrong with its file, if anything
};

/// A page that is being drawn. A QGuiApplication must live, for the text.
class SheetPage
{
public:
    SheetPage(const SheetHeading &heading, const SheetLayout &layout);

    /// Draws a cell, each once.
    void draw(int index, const SheetCell &cell);

    /// Writes `words` across the empty page.
    void drawNotice(const QString &words);

    const QImage &image() const { return m_image; }

private:
    void drawHeading(const SheetHeading &heading);
    void drawPlaceholder(const QRect &box, const QString &words);
    void drawName(int index, const SheetCell &cell);
    void drawLength(const QRect &picture, int seconds);
    void drawMarks(const QRect &picture, const SheetCell &cell);
    QRect drawMark(const QPoint &corner, const QString &words, const QColor &color);
    void drawText(const QRect &line, const QString &text, const QColor &color,
                  Qt::Alignment alignment, Qt::TextElideMode elision);
    void setFont(int pixels, bool isBold = false);

    const SheetLayout m_layout;
    QImage m_image;
    QPainter m_painter; // last, for it draws on the image
};

#endif // PHOTOLIB_ENGINE_CONTACT_SHEET_H
