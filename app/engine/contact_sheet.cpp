#include "engine/contact_sheet.h"

#include "engine/photo_text.h"

#include <QFontMetrics>

#include <algorithm>
#include <cmath>

namespace {

// Pixels.
constexpr int margin = 36;
constexpr int gap = 20; // between the boxes of two pictures in a row
constexpr int labelGap = 7;
constexpr int labelHeight = 17;
constexpr int rowGap = 18;
constexpr int titleHeight = 30;
constexpr int subtitleHeight = 20;
constexpr int headingGap = 24;
constexpr int bodyTop = margin + titleHeight + subtitleHeight + headingGap;
constexpr int headingWidth = 1000; // has room for most headings

constexpr int titleSize = 22;
constexpr int subtitleSize = 14;
constexpr int labelSize = 12;
constexpr int badgeSize = 11;

constexpr double mostGrowth = 2.0; // small pictures look worse the larger they are shown
constexpr double dimmed = 0.35;
constexpr int tinyBox = 64; // pixels; badges of the usual size hide the picture in a smaller one

constexpr qint64 longestSide = 32767;  // Qt draws no text beyond
constexpr qint64 mostPixels = 1 << 28; // 1 GiB

const QColor background(0xf5, 0xf5, 0xf3);
const QColor darkText(0x22, 0x22, 0x22);
const QColor greyText(0x70, 0x70, 0x70);
const QColor frame(0, 0, 0, 0x30);
const QColor emptyFill(0xe9, 0xe9, 0xe6);
const QColor emptyFrame(0xc9, 0xc9, 0xc4);
const QColor badgeFill(0, 0, 0, 0xb4);
const QColor missingFill(0xa8, 0x3a, 0x2c);
const QColor trashFill(0x5c, 0x60, 0x66);

// At the bottom, so that a picture that is not high is next to its own name.
QRect placed(const QSize &size, const QRect &box)
{
    return {box.x() + (box.width() - size.width()) / 2, box.bottom() + 1 - size.height(),
            size.width(), size.height()};
}

} // namespace

QSize SheetStyle::shownSize(const QSize &size) const
{
    const QSize box(boxSize, boxSize);
    const QSize most = (QSizeF(size) * mostGrowth).toSize();
    const QSize fitted = size.scaled(box.boundedTo(most), Qt::KeepAspectRatio);
    return fitted.expandedTo(QSize(1, 1)); // of a picture that is next to a line
}

int SheetLayout::columnsFor(int cells, const SheetStyle &style)
{
    // Cells of the usual style are less high than others, and this suits them.
    constexpr double widerThanHigh = 1.15;
    const SheetLayout usual(1, 1);
    const SheetLayout one(1, 1, style);
    const double shape = double(one.rowHeight() * usual.columnWidth()) /
                         double(usual.rowHeight() * one.columnWidth());
    const qint64 width = one.columnWidth();
    const auto fewest = int((headingWidth + gap + width - 1) / width);
    return std::max(fewest, int(std::ceil(std::sqrt(cells * widerThanHigh * shape))));
}

qint64 SheetLayout::columnWidth() const
{
    return m_style.boxSize + gap;
}

int SheetLayout::rowHeight() const
{
    const int labels = m_style.labelLines > 0 ? labelGap + m_style.labelLines * labelHeight : 0;
    return m_style.boxSize + labels + rowGap;
}

qint64 SheetLayout::width() const
{
    return m_columns * columnWidth() - gap + qint64(2) * margin;
}

qint64 SheetLayout::height() const
{
    const qint64 rows = m_cells > 0 ? (qint64(m_cells) + m_columns - 1) / m_columns : 1;
    return bodyTop + rows * rowHeight() - rowGap + margin;
}

bool SheetLayout::isDrawable() const
{
    return width() <= longestSide && height() <= longestSide && width() * height() <= mostPixels;
}

QRect SheetLayout::title() const
{
    return {margin, margin, size().width() - 2 * margin, titleHeight};
}

QRect SheetLayout::subtitle() const
{
    return {margin, margin + titleHeight, size().width() - 2 * margin, subtitleHeight};
}

QRect SheetLayout::pictureBox(int index) const
{
    const int boxSize = m_style.boxSize;
    return {margin + index % m_columns * int(columnWidth()),
            bodyTop + index / m_columns * rowHeight(), boxSize, boxSize};
}

QRect SheetLayout::labelLine(int index, int line) const
{
    const QRect box = pictureBox(index);
    return {box.x(), box.bottom() + 1 + labelGap + line * labelHeight, box.width(), labelHeight};
}

QRect SheetLayout::body() const
{
    return {margin, bodyTop, size().width() - 2 * margin, size().height() - bodyTop - margin};
}

SheetPage::SheetPage(const SheetHeading &heading, const SheetLayout &layout)
    : m_layout(layout), m_image(layout.size(), QImage::Format_RGB32)
{
    if (m_image.isNull())
        throw std::bad_alloc();
    m_image.fill(background);
    m_painter.begin(&m_image);
    m_painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    drawHeading(heading);
}

// What the painter still draws on would be copied.
QImage SheetPage::takeImage()
{
    m_painter.end();
    return std::move(m_image);
}

void SheetPage::setFont(int pixels, bool isBold)
{
    QFont font(QStringLiteral("sans-serif"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(pixels);
    font.setBold(isBold);
    m_painter.setFont(font);
}

void SheetPage::drawText(const QRect &line, const QString &text, const QColor &color,
                         Qt::Alignment alignment, Qt::TextElideMode elision)
{
    if (text.isEmpty())
        return; // and no font is looked for
    m_painter.setPen(color);
    m_painter.drawText(line, int(alignment | Qt::AlignVCenter) | Qt::TextSingleLine,
                       m_painter.fontMetrics().elidedText(text, elision, line.width()));
}

void SheetPage::drawHeading(const SheetHeading &heading)
{
    setFont(titleSize, true);
    drawText(m_layout.title(), heading.title, darkText, Qt::AlignLeft, Qt::ElideMiddle);
    setFont(subtitleSize);
    drawText(m_layout.subtitle(), heading.subtitle, greyText, Qt::AlignLeft, Qt::ElideMiddle);
}

void SheetPage::drawNotice(const QString &words)
{
    setFont(subtitleSize);
    drawText(m_layout.body(), words, greyText, Qt::AlignHCenter, Qt::ElideRight);
}

void SheetPage::draw(int index, const SheetCell &cell)
{
    const QRect box = m_layout.pictureBox(index);
    m_painter.setOpacity(cell.isTrashed ? dimmed : 1.0);
    const QRect shown = drawPicture(box, cell);
    m_painter.setOpacity(1.0);
    if (cell.isVideo)
        drawLength(shown, cell.seconds);
    drawMarks(shown, box, cell);
    drawLabels(index, cell);
}

// Returns where it is.
QRect SheetPage::drawPicture(const QRect &box, const SheetCell &cell)
{
    if (cell.picture.isNull()) {
        drawPlaceholder(box, cell.placeholder);
        return box;
    }
    const QRect shown = placed(cell.picture.size(), box);
    m_painter.drawImage(shown.topLeft(), cell.picture);
    m_painter.setPen(frame);
    m_painter.setBrush(Qt::NoBrush);
    m_painter.drawRect(QRectF(shown).adjusted(0.5, 0.5, -0.5, -0.5));
    return shown;
}

void SheetPage::drawPlaceholder(const QRect &box, const QString &words)
{
    m_painter.setPen(QPen(emptyFrame, 1));
    m_painter.setBrush(emptyFill);
    m_painter.drawRect(QRectF(box).adjusted(0.5, 0.5, -0.5, -0.5));
    setFont(labelSize);
    drawText(box, words, greyText, Qt::AlignHCenter, Qt::ElideRight);
}

// The first line tells them apart, and the others are less dark.
void SheetPage::drawLabels(int index, const SheetCell &cell)
{
    setFont(labelSize);
    for (int i = 0; i < cell.labels.size() && i < m_layout.style().labelLines; ++i) {
        const QRect line = m_layout.labelLine(index, i);
        const CellLabel &label = cell.labels[i];
        const bool hasRoom = m_painter.fontMetrics().horizontalAdvance(label.text) <= line.width();
        const bool isShort = !hasRoom && !label.shortText.isEmpty();
        drawText(line, isShort ? label.shortText : label.text,
                 i > 0 || cell.isTrashed ? greyText : darkText, Qt::AlignHCenter, Qt::ElideMiddle);
    }
}

// A badge in the lower right corner: a play mark and, where it is known and has room, the length.
void SheetPage::drawLength(const QRect &picture, qint64 seconds)
{
    const bool isTiny = m_layout.style().boxSize < tinyBox;
    const int height = isTiny ? 10 : 18;
    const int inset = isTiny ? 3 : 5;
    const double markWidth = isTiny ? 5 : 7;
    setFont(badgeSize, true);
    QString length = seconds > 0 ? durationText(seconds) : QString();
    if (m_painter.fontMetrics().horizontalAdvance(length) > m_layout.style().boxSize / 2)
        length.clear();
    const int textWidth = m_painter.fontMetrics().horizontalAdvance(length);
    const int textLeft = inset + int(markWidth) + inset;
    const int width = textLeft + (textWidth > 0 ? textWidth + inset : 0);
    const QRect badge(picture.right() + 1 - inset - width, picture.bottom() + 1 - inset - height,
                      width, height);
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(badgeFill);
    m_painter.drawRoundedRect(badge, 4, 4);
    drawPlayMark(QPointF(badge.x() + inset + 0.5, badge.y() + height / 2.0), markWidth);
    drawText(badge.adjusted(textLeft, 0, 0, 0), length, Qt::white, Qt::AlignLeft, Qt::ElideNone);
}

void SheetPage::drawPlayMark(const QPointF &left, double width)
{
    const double halfHeight = width * 9 / 14;
    const QPointF mark[] = {left + QPointF(0, -halfHeight), left + QPointF(width, 0),
                            left + QPointF(0, halfHeight)};
    m_painter.setBrush(Qt::white);
    m_painter.drawPolygon(mark, 3);
}

// Badges below each other in the upper left corner.
void SheetPage::drawMarks(const QRect &picture, const QRect &box, const SheetCell &cell)
{
    const int inset = m_layout.style().boxSize < tinyBox ? 2 : 5;
    QPoint corner = picture.topLeft() + QPoint(inset, inset);
    if (cell.isTrashed)
        corner.ry() =
            drawMark(corner, box, QStringLiteral("in the trash"), trashFill).bottom() + inset;
    if (!cell.fileMark.isEmpty())
        drawMark(corner, box, cell.fileMark, missingFill);
}

// Without the words where the box has no room for them; further to the left where it has.
QRect SheetPage::drawMark(const QPoint &corner, const QRect &box, const QString &words,
                          const QColor &color)
{
    constexpr int height = 17;
    constexpr int inset = 6;
    setFont(badgeSize, true);
    const int width = m_painter.fontMetrics().horizontalAdvance(words) + 2 * inset;
    const bool hasRoom = width <= box.width();
    const int side = height / 2;
    const QPoint left(std::min(corner.x(), std::max(box.x(), box.right() + 1 - width)), corner.y());
    const QRect badge =
        hasRoom ? QRect(left, QSize(width, height)) : QRect(corner, QSize(side, side));
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(color);
    m_painter.drawRoundedRect(badge, 4, 4);
    if (hasRoom)
        drawText(badge, words, Qt::white, Qt::AlignHCenter, Qt::ElideNone);
    return badge;
}
