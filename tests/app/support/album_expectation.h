#ifndef PHOTOLIB_TESTS_APP_ALBUM_EXPECTATION_H
#define PHOTOLIB_TESTS_APP_ALBUM_EXPECTATION_H

#include "support/device_sql.h"

#include <QtGlobal>

/// An album as a library is to show it.
struct ExpectedAlbum {
    quint64 id;
    std::string uuid; ///< in hexadecimal digits
    std::string name;
    int type;
    std::vector<quint64> photos;
};

/// What the rules for albums need of a photo or video of the library.
struct ExpectedMember {
    quint64 id;
    bool isVideo;
    bool isPanorama;
    bool isInCameraFolder;
};

/// The albums in display order, by plain SQL: the library's own ones, and then those of the
/// device. `assets` is the whole library, by id.
std::vector<ExpectedAlbum> expectedAlbums(const DeviceSql &database,
                                          const std::vector<ExpectedMember> &assets);

#endif // PHOTOLIB_TESTS_APP_ALBUM_EXPECTATION_H
