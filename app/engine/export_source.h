#ifndef PHOTOLIB_ENGINE_EXPORT_SOURCE_H
#define PHOTOLIB_ENGINE_EXPORT_SOURCE_H

#include "devices/device_file_system.h"
#include "engine/export_role.h"

#include <QByteArray>
#include <QString>

#include <functional>

/// The content of a file that the program makes.
struct MadeFile {
    QByteArray bytes;
    FileError failure; ///< why there is none, unless its kind is None
};

/// A file of a photo or video that may be exported.
struct ExportSource {
    ExportRole role = ExportRole::Original;
    QByteArray source;    ///< what records know it by: for a file of the device its path there
    QByteArray tail;      ///< between the photo's name and the extension: "_edited"
    QByteArray extension; ///< with its dot: ".JPG"; may be empty
    QString label;        ///< names it in messages
    bool isWanted = true; ///< otherwise only its name is kept free

    // Of a wanted file:
    FileInfo info;     ///< of a file that the program makes, its foretold size and its photo's time
    FileError failure; ///< why there is none, unless its kind is None
    bool isInCloud = false;         ///< that it is in iCloud is why
    std::function<MadeFile()> make; ///< makes it, on the session's thread; null for one to copy
};

#endif // PHOTOLIB_ENGINE_EXPORT_SOURCE_H
