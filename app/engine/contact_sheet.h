#ifndef PHOTOLIB_ENGINE_CONTACT_SHEET_H
#define PHOTOLIB_ENGINE_CONTACT_SHEET_H

#include <QImage>
#include <QPainter>
#include <QRect>
#include <QSize>
#include <QString>
#include <QVector>

/// How large the cells of a contact sheet are.
struct SheetStyle {
    static constexpr int smallestBox = 32; ///< the marks on a picture need so much
    static constexpr int largestBox = 2048;

    int boxSize = 184;  ///< pixels: the side of the square that a picture is fitted into
    int labelLines = 1; ///< lines of text under each picture

    /// The size in which a picture of `size` is shown in a box: it fills the box or, when it is
    /// small, grows to twice its size.
    QSize shownSize(const QSize &size) const;
};

/// Where things are on a page of a contact sheet, in pixels: a heading, and below it a grid
/// of cells, each with a box for the picture and lines of text.
class SheetLayout
{
public:
    /// The columns that suit `cells` cells: the page is about as high as it is wide.
    static int columnsFor(int cells, const SheetStyle &style = SheetStyle());

    SheetLayout(int cells, int columns, const SheetStyle &style = SheetStyle())
        : m_cells(cells), m_columns(columns), m_style(style)
    {
    }

    const SheetStyle &style() const { return m_style; }

    qint64 width() const;
    qint64 height() const;

    /// Whether a picture may be so large, and text be drawn all over it. Only then are the
    /// following of use.
    bool isDrawable() const;

    QSize size() const { return {int(width()), int(height())}; }

    /// The two lines of the heading.
    QRect title() const;
    QRect subtitle() const;

    /// The square that the picture of the cell `index` is fitted into, at its bottom.
    QRect pictureBox(int index) const;

    /// A line of text below it, the first by default.
    QRect labelLine(int index, int line = 0) const;

    /// All of the page below the heading.
    QRect body() const;

private:
    qint64 columnWidth() const;
    int rowHeight() const;

    const int m_cells;
    const int m_columns;
    const SheetStyle m_style;
};

/// What stands at the head of a page.
struct SheetHeading {
    QString title;
    QString subtitle;
};

/// A line of text under a picture.
struct CellLabel {
    QString text;
    QString shortText; ///< in its place where it has no room; empty to leave out its middle
};

/// What one cell shows.
struct SheetCell {
    QVector<CellLabel> labels; ///< for the lines of the layout
    QImage picture;            ///< upright and of the shown size; null when there is none
    QString placeholder;       ///< the words in its place
    bool isVideo = false;
    qint64 seconds = 0;     ///< of a video; 0 when it is not known
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

    /// The page, of which nothing is left in the object: it is not drawn on any more.
    QImage takeImage();

private:
    void drawHeading(const SheetHeading &heading);
    void drawPlaceholder(const QRect &box, const QString &words);
    QRect drawPicture(const QRect &box, const SheetCell &cell);
    void drawLabels(int index, const SheetCell &cell);
    void drawLength(const QRect &picture, qint64 seconds);
    void drawPlayMark(const QPointF &left, double width);
    void drawMarks(const QRect &picture, const QRect &box, const SheetCell &cell);
    QRect drawMark(const QPoint &corner, const QRect &box, const QString &words,
                   const QColor &color);
    void drawText(const QRect &line, const QString &text, const QColor &color,
                  Qt::Alignment alignment, Qt::TextElideMode elision);
    void setFont(int pixels, bool isBold = false);

    const SheetLayout m_layout;
    QImage m_image;
    QPainter m_painter; // last, for it draws on the image
};

#endif // PHOTOLIB_ENGINE_CONTACT_SHEET_H
