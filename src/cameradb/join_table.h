#ifndef PHOTOLIB_CAMERADB_JOIN_TABLE_H
#define PHOTOLIB_CAMERADB_JOIN_TABLE_H

#include "cameradb/camera_db.h"

struct sqlite3;

/// Appends to each album of `cameraDb` the keys of its members, from the table that
/// joins albums and assets. Its name and those of its columns carry numbers that differ
/// between database versions, so they are found in the schema. Returns false, after
/// logging, when there is no such table or it cannot be read.
bool queryAlbumPhoto(sqlite3 *db, CameraDB *cameraDb);

#endif // PHOTOLIB_CAMERADB_JOIN_TABLE_H
