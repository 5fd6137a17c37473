#include "engine/contact_sheet.h"

#include "engine/photo_text.h"

#include <QFontMetrics>

#include <cmath>

namespace {

// Pixels.
constexpr int margin = 36;
constexpr int gap = 20; // between the boxes of two pictures in a row
constexpr int boxSize = 184;
constexpr int nameGap = 7;
constexpr int nameHeight = 17;
constexpr int rowGap = 18;
constexpr int titleHeight = 30;
constexpr int subtitleHeight = 20;
constexpr int headingGap = 24;
constexpr int rowHeight = boxSize + nameGap + nameHeight + rowGap;
constexpr int bodyTop = margin + titleHeight + subtitleHeight + headingGap;

constexpr int titleSize = 22;
constexpr int subtitleSize = 14;
constexpr int nameSize = 12;
constexpr int badgeSize = 11;

constexpr int fewestColumns = 5;   // else a heading has no room
constexpr double mostGrowth = 2.0; // small pictures look worse the larger they are shown
constexpr double dimmed = 0.35;

const QColor background(0xf5, 0xf5, 0xf3);
const QColor darkText(0x22, 0x22, 0x22);
const QColor greyText(0x70, 0x70, 0x70);
const QColor frame(0, 0, 0, 0x30);
const QColor emptyFill(0xe9, 0xe9, 0xe6);
const QColor emptyFrame(0xc9, 0xc9, 0xc4);
const QColor badgeFill(0, 0, 0, 0xb4);
const QColor missingFill(0xa8, 0x3a, 0x2c);
const QColor trashFill(0x5c, 0x60, 0x66);

QSize fittedSize(const QSize &size)
{
    const QSize box(boxSize, boxSize);
    const QSize most = (QSizeF(size) * mostGrowth).toSize();
    const QSize fitted = size.scaled(box.boundedTo(most), Qt::KeepAspectRatio);
    return fitted.expandedTo(QSize(1, 1)); // of a picture that is next to a line
}

// At the bottom, so that a picture that is not high is next to its own name.
QRect placed(const QSize &size, const QRect &box)
{
    return {box.x() + (box.width() - size.width()) / 2, box.bottom() + 1 - size.height(),
            size.width(), size.height()};
}

} // namespace

int SheetLayout::columnsFor(int cells)
{
    constexpr double widerThanHigh = 1.15;
    return std::max(fewestColumns, static_cast<int>(std::ceil(std::sqrt(cells * widerThanHigh))));
}

QSize SheetLayout::size() const
{
    const int rows = std::max(1, (m_cells + m_columns - 1) / m_columns);
    return {2 * margin + m_columns * (boxSize + gap) - gap,
            bodyTop + rows * rowHeight - rowGap + margin};
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
    return {margin + index % m_columns * (boxSize + gap), bodyTop + index / m_columns * rowHeight,
            boxSize, boxSize};
}

QRect SheetLayout::nameLine(int index) const
{
    const QRect box = pictureBox(index);
    return {box.x(), box.bottom() + 1 + nameGap, box.width(), nameHeight};
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
    QRect shown = box;
    m_painter.setOpacity(cell.isTrashed ? dimmed : 1.0);
    if (cell.picture.isNull()) {
        drawPlaceholder(box, cell.placeholder);
    } else {
        shown = placed(fittedSize(cell.picture.size()), box);
        m_painter.drawImage(
            shown.topLeft(),
            cell.picture.scaled(shown.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        m_painter.setPen(frame);
        m_painter.setBrush(Qt::NoBrush);
        m_painter.drawRect(QRectF(shown).adjusted(0.5, 0.5, -0.5, -0.5));
    }
    m_painter.setOpacity(1.0);
    if (cell.isVideo)
        drawLength(shown, cell.seconds);
    drawMarks(shown, cell);
    drawName(index, cell);
}

void SheetPage::drawPlaceholder(const QRect &box, const QString &words)
{
    m_painter.setPen(QPen(emptyFrame, 1));
    m_painter.setBrush(emptyFill);
    m_painter.drawRect(QRectF(box).adjusted(0.5, 0.5, -0.5, -0.5));
    setFont(nameSize);
    drawText(box, words, greyText, Qt::AlignHCenter, Qt::ElideRight);
}

void SheetPage::drawName(int index, const SheetCell &cell)
{
    setFont(nameSize);
    drawText(m_layout.nameLine(index), cell.name, cell.isTrashed ? greyText : darkText,
             Qt::AlignHCenter, Qt::ElideMiddle);
}

// A badge in the lower right corner: a play mark and, where it is known, the length.
void SheetPage::drawLength(const QRect &picture, int seconds)
{
    constexpr int height = 18;
    constexpr int inset = 5;
    constexpr int markWidth = 7;
    setFont(badgeSize, true);
    const QString length = seconds > 0 ? durationText(seconds) : QString();
    const int textWidth = m_painter.fontMetrics().horizontalAdvance(length);
    const int width = inset + markWidth + inset + (textWidth > 0 ? textWidth + inset : 0);
    const QRect badge(picture.right() + 1 - inset - width, picture.bottom() + 1 - inset - height,
                      width, height);
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(badgeFill);
    m_painter.drawRoundedRect(badge, 4, 4);
    const QPointF left(badge.x() + inset + 0.5, badge.y() + height / 2.0);
    m_painter.setBrush(Qt::white);
    const QPointF mark[] = {left + QPointF(0, -4.5), left + QPointF(markWidth, 0),
                            left + QPointF(0, 4.5)};
    m_painter.drawPolygon(mark, 3);
    drawText(badge.adjusted(inset + markWidth + inset, 0, 0, 0), length, Qt::white, Qt::AlignLeft,
             Qt::ElideNone);
}

// Badges below each other in the upper left corner.
void SheetPage::drawMarks(const QRect &picture, const SheetCell &cell)
{
    constexpr int inset = 5;
    QPoint corner = picture.topLeft() + QPoint(inset, inset);
    if (cell.isTrashed)
        corner.ry() = drawMark(corner, QStringLiteral("in the trash"), trashFill).bottom() + inset;
    if (!cell.fileMark.isEmpty())
        drawMark(corner, cell.fileMark, missingFill);
}

QRect SheetPage::drawMark(const QPoint &corner, const QString &words, const QColor &color)
{
    constexpr int height = 17;
    constexpr int inset = 6;
    setFont(badgeSize, true);
    const int width = m_painter.fontMetrics().horizontalAdvance(words) + 2 * inset;
    const QRect badge(corner, QSize(width, height));
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(color);
    m_painter.drawRoundedRect(badge, 4, 4);
    drawText(badge, words, Qt::white, Qt::AlignHCenter, Qt::ElideNone);
    return badge;
}
