#ifndef PHOTOLIB_ENGINE_FILE_STATE_H
#define PHOTOLIB_ENGINE_FILE_STATE_H

/// Whether the device has the file of a photo or video.
enum class FileState {
    There,
    Missing,
    Unreadable, ///< the device does not say, for it may not be asked or fails
};

#endif // PHOTOLIB_ENGINE_FILE_STATE_H
