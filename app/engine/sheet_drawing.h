#ifndef PHOTOLIB_ENGINE_SHEET_DRAWING_H
#define PHOTOLIB_ENGINE_SHEET_DRAWING_H

#include "base/byte_sink.h"
#include "engine/picture_format.h"
#include "engine/sheet_plan.h"

#include <QList>
#include <QString>

#include <functional>

class CancelToken;
class LibrarySession;

/// A contact sheet that is wanted.
struct SheetRequest {
    QList<quint64> ids; ///< of the photos and videos of the library to show, in that order
    SheetOptions options;
    const PictureFormat *format = &pngFormat(); ///< of the pages: JPEG or PNG
    QString title;                              ///< heads each page; empty for none
    QString subtitle; ///< the same below; where there are some pages, with the page's number
};

/// Hears how the drawing goes and takes the pages. What an operation throws ends the drawing and is
/// thrown to its caller.
class SheetObserver
{
public:
    virtual ~SheetObserver() {}

    /// `done` pictures are drawn, in all. On the thread that draws.
    virtual void drawn(int done) = 0;

    /// A thumbnail is damaged: `fault` names it and tells the cause. On the thread that draws.
    virtual void damaged(const QString &fault) = 0;

    /// `count` videos, at least one, have no thumbnail on the device, and so no picture. Last of
    /// all, on the thread that draws.
    virtual void lacksVideos(int count) { Q_UNUSED(count) }

    /// The page `page`, counted from 0 and with `pictures` pictures, is drawn: `writeFile` gives
    /// the bytes of its picture file to a sink, and throws what ends the drawing. For one page
    /// after the other, on a thread that does nothing else.
    virtual void pageDrawn(int page, int pictures,
                           const std::function<void(const ByteSink &sink)> &writeFile) = 0;
};

/// Draws the contact sheet, with `threads` threads that decode and read originals: the same pages
/// whatever their number. The plug-in and `session` are used on the calling thread alone. A
/// QGuiApplication must live, for the text. Throws Error: of the kind WrongUsage when a page would
/// be too large, Cancelled soon after `cancel` is, Disconnected when the device is gone.
void drawSheet(LibrarySession &session, const SheetRequest &request, int threads,
               SheetObserver &observer, const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_SHEET_DRAWING_H
