#ifndef PHOTOLIB_CLI_TEXT_DRAWING_H
#define PHOTOLIB_CLI_TEXT_DRAWING_H

#include "base/qt_messages.h"

#include <QGuiApplication>

#include <memory>

/// What text needs of Qt, as long as it lives. No display is needed, unless somebody asks for
/// another platform. On the thread that Qt is to see as the main one.
class TextDrawing
{
public:
    /// Says on stderr when no font is installed. Throws std::bad_alloc when there is no memory
    /// for text beside `otherBytes` that the drawing takes, and Error where Qt cannot
    /// draw text; nothing is left behind in any case.
    explicit TextDrawing(qint64 otherBytes);

private:
    const QtMessages m_messages; // of a platform without a session, say
    std::unique_ptr<const QGuiApplication> m_application;
};

#endif // PHOTOLIB_CLI_TEXT_DRAWING_H
