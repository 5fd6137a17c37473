#ifndef PHOTOLIB_ENGINE_SHEET_PLAN_H
#define PHOTOLIB_ENGINE_SHEET_PLAN_H

#include "engine/contact_sheet.h"

#include <QVector>

/// What may stand under a picture.
enum class SheetLabel {
    Name,
    Date, ///< when it was taken
    Id,
};

/// How a contact sheet is to look.
struct SheetOptions {
    int columns = 0;                                 ///< of each page; 0 for as many as suit
    int boxSize = 184;                               ///< pixels, as in `SheetStyle`
    int perPage = 400;                               ///< pictures; such a page takes some 80 MB
    QVector<SheetLabel> labels = {SheetLabel::Name}; ///< from top to bottom
};

/// How the cells of a contact sheet are shared out among pages. The first page is the largest.
class SheetPlan
{
public:
    /// For `cells` cells; without any there is one empty page. Throws Error of the kind WrongUsage
    /// when a page would be too large to be drawn.
    SheetPlan(const SheetOptions &options, int cells);

    const SheetOptions &options() const { return m_options; }
    SheetStyle style() const { return {m_options.boxSize, m_options.labels.size()}; }

    int cells() const { return m_cells; }
    int pages() const;

    /// The number of the first cell of a page, and how many it has. Pages are counted from 0.
    int firstCell(int page) const { return page * m_options.perPage; }
    int cellsOn(int page) const { return qMin(m_options.perPage, m_cells - firstCell(page)); }

    SheetLayout layout(int page) const;

    /// What drawing takes at most with so many threads, in bytes: pages, thumbnails and stacks.
    qint64 neededBytes(int threads) const;

    /// Whether a page can be drawn while the one before is written, without a want of memory.
    bool hasRoomForTwoPages() const;

private:
    qint64 pageBytes() const;
    void requireDrawable() const;

    const SheetOptions m_options;
    const int m_cells;
    const int m_columns;
};

#endif // PHOTOLIB_ENGINE_SHEET_PLAN_H
