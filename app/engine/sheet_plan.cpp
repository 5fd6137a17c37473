#include "engine/sheet_plan.h"

#include "base/error.h"

namespace {

constexpr qint64 bytesOfAPixel = 4;

int columnsOf(const SheetOptions &options, int cells)
{
    if (options.columns > 0)
        return options.columns;
    const SheetStyle style = {options.boxSize, options.labels.size()};
    return SheetLayout::columnsFor(qMin(options.perPage, cells), style);
}

} // namespace

SheetPlan::SheetPlan(const SheetOptions &options, int cells)
    : m_options(options), m_cells(cells), m_columns(columnsOf(options, cells))
{
    requireDrawable();
}

int SheetPlan::pages() const
{
    return qMax(1, int((qint64(m_cells) + m_options.perPage - 1) / m_options.perPage));
}

SheetLayout SheetPlan::layout(int page) const
{
    return SheetLayout(cellsOn(page), m_columns, style());
}

qint64 SheetPlan::pageBytes() const
{
    const SheetLayout largest = layout(0);
    return bytesOfAPixel * largest.width() * largest.height();
}

bool SheetPlan::hasRoomForTwoPages() const
{
    constexpr qint64 much = 256 << 20;
    return pages() > 1 && pageBytes() <= much;
}

qint64 SheetPlan::neededBytes(int threads) const
{
    constexpr qint64 ofAThread = 12 << 20; // its stack, a thumbnail and what it compresses
    const qint64 ofPictures =
        bytesOfAPixel * m_options.boxSize * m_options.boxSize * (2 * threads + 1);
    const int all = 2 * threads + 2; // that decode, that compress, that reads and that writes
    return pageBytes() * (hasRoomForTwoPages() ? 2 : 1) + ofAThread * all + ofPictures;
}

void SheetPlan::requireDrawable() const
{
    const SheetLayout largest = layout(0);
    if (largest.isDrawable())
        return;
    throw Error(Error::WrongUsage,
                "a page of " + std::to_string(largest.width()) + " x " +
                    std::to_string(largest.height()) +
                    " pixels is too large; choose a smaller --size, --columns or --per-page");
}
