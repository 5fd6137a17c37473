#include "engine/sheet_drawing.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "engine/jpeg_file.h"
#include "engine/library_session.h"
#include "engine/png_file.h"
#include "engine/sheet_cell.h"
#include "engine/worker_pool.h"

namespace {

void requireUncancelled(const CancelToken &cancel)
{
    if (cancel.isCancelled())
        throw Error(Error::Cancelled, "interrupted");
}

// Reads the cells of all pages, ahead of those that are taken, and has them decoded meanwhile.
class CellReader
{
public:
    CellReader(LibrarySession &session, const SheetRequest &request, const SheetStyle &style,
               WorkerPool &pool, const CancelToken &cancel)
        : m_session(session), m_request(request), m_style(style), m_cancel(cancel), m_cells(pool)
    {
    }

    FinishedCell next()
    {
        for (; m_read < m_request.ids.size() && !m_cells.isFull(); ++m_read) {
            requireUncancelled(m_cancel);
            read(m_request.ids[m_read]);
        }
        FinishedCell cell = m_cells.takeFirst();
        requireUncancelled(m_cancel); // for what is cancelled has no picture
        if (cell.unreadable.kind != FileError::None)
            noteUnreadable(cell);
        return cell;
    }

private:
    // One with a mark is noted already.
    void noteUnreadable(const FinishedCell &cell)
    {
        m_session.requireDevice();
        if (cell.cell.fileMark.isEmpty())
            m_session.noteUnreadable(cell.name, cell.unreadable);
    }

    void read(quint64 id)
    {
        UndrawnCell cell = readCell(m_session, id, m_request.options.labels);
        m_cells.add([cell = std::move(cell), style = m_style, &cancel = m_cancel] {
            return finishedCell(cell, style, cancel);
        });
    }

    LibrarySession &m_session;
    const SheetRequest &m_request;
    const SheetStyle m_style;
    const CancelToken &m_cancel;
    int m_read = 0;
    OrderedWork<FinishedCell> m_cells;
};

// Hands pages on while the next one is drawn, on a thread of its own: compressing a page takes
// longer than drawing it.
class PageWriter
{
public:
    PageWriter(SheetObserver &observer, const PictureFormat &format, const CancelToken &cancel,
               bool isOverlapping)
        : m_observer(observer), m_writeFile(&format == &jpegFormat() ? writeJpeg : writePng),
          m_cancel(cancel), m_isOverlapping(isOverlapping), m_thread(1), m_pages(m_thread)
    {
    }

    void write(int page, int pictures, const QImage &image)
    {
        const auto file = [this, image](const ByteSink &sink) {
            m_writeFile(image, m_cancel, sink);
        };
        m_pages.add([this, page, pictures, file] { m_observer.pageDrawn(page, pictures, file); });
        if (!m_isOverlapping)
            finish();
    }

    void finish()
    {
        while (!m_pages.isEmpty())
            m_pages.takeFirst();
    }

private:
    SheetObserver &m_observer;
    void (*const m_writeFile)(const QImage &picture, const CancelToken &cancel,
                              const ByteSink &sink);
    const CancelToken &m_cancel;
    const bool m_isOverlapping;
    WorkerPool m_thread;
    OrderedWork<void> m_pages;
};

class SheetDrawing
{
public:
    SheetDrawing(LibrarySession &session, const SheetRequest &request, int threads,
                 SheetObserver &observer, const CancelToken &cancel)
        : m_request(request), m_plan(request.options, request.ids.size()), m_observer(observer),
          m_cancel(cancel), m_pool(threads),
          m_cells(session, request, m_plan.style(), m_pool, cancel),
          m_writer(observer, *request.format, cancel, m_plan.hasRoomForTwoPages())
    {
    }

    void draw()
    {
        for (int page = 0; page < m_plan.pages(); ++page) {
            requireUncancelled(m_cancel);
            const QImage image = drawnPage(page);
            m_writer.finish(); // with the page before
            m_writer.write(page, m_plan.cellsOn(page), image);
        }
        m_writer.finish();
        if (m_videosWithout > 0)
            m_observer.lacksVideos(m_videosWithout);
    }

private:
    QImage drawnPage(int page)
    {
        SheetPage sheet(heading(page), m_plan.layout(page));
        for (int i = 0; i < m_plan.cellsOn(page); ++i) {
            const FinishedCell finished = m_cells.next();
            for (const QString &fault : finished.faults)
                m_observer.damaged(fault);
            sheet.draw(i, finished.cell);
            m_videosWithout += finished.isVideoWithout ? 1 : 0;
            m_observer.drawn(m_plan.firstCell(page) + i + 1);
        }
        if (m_plan.cells() == 0)
            sheet.drawNotice(QStringLiteral("There is no photo or video."));
        return sheet.takeImage();
    }

    SheetHeading heading(int page) const
    {
        SheetHeading heading = {m_request.title, m_request.subtitle};
        if (m_plan.pages() > 1 && !heading.subtitle.isEmpty())
            heading.subtitle +=
                QStringLiteral(" \u00b7 page %1 of %2").arg(page + 1).arg(m_plan.pages());
        return heading;
    }

    const SheetRequest &m_request;
    const SheetPlan m_plan;
    SheetObserver &m_observer;
    const CancelToken &m_cancel;
    int m_videosWithout = 0;
    WorkerPool m_pool;
    CellReader m_cells;
    PageWriter m_writer;
};

} // namespace

void drawSheet(LibrarySession &session, const SheetRequest &request, int threads,
               SheetObserver &observer, const CancelToken &cancel)
{
    SheetDrawing(session, request, threads, observer, cancel).draw();
}
