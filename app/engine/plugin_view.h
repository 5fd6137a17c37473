#ifndef PHOTOLIB_ENGINE_PLUGIN_VIEW_H
#define PHOTOLIB_ENGINE_PLUGIN_VIEW_H

#include "boundary/photo_records.h"

#include <QByteArray>
#include <QDateTime>

class LibrarySession;

// What the plug-in itself answers, for people who write hosts for it.

/// What it answers when it is asked for a photo or video.
struct PluginPhoto {
    enum Filled {
        Nothing,
        Identity,   ///< what comes before `thumbPath` in the record, as for a missing file
        Everything, ///< all that it ever fills for a device of this kind
    };

    photoItem record; ///< what is not filled is as it is in a new record
    Filled filled = Nothing;
    bool isUsable = false; ///< it was given, and its file is on the device
    QDateTime createDate;  ///< invalid where the plug-in gives none
    QDateTime modifyDate;  ///< likewise
};

/// Asks for `id`. A file that cannot be read is noted in `session`. Throws Error when the device
/// is gone.
PluginPhoto pluginPhoto(LibrarySession &session, quint64 id);

/// What it answers when it is asked for a thumbnail.
struct PluginThumbnail {
    int result = 0;
    QByteArray bytes;
};

/// Asks for that of `id`. Throws Error when the device is gone.
PluginThumbnail pluginThumbnail(LibrarySession &session, quint64 id);

#endif // PHOTOLIB_ENGINE_PLUGIN_VIEW_H
