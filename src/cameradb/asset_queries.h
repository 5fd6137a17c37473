#ifndef PHOTOLIB_CAMERADB_ASSET_QUERIES_H
#define PHOTOLIB_CAMERADB_ASSET_QUERIES_H

#include "cameradb/asset_schema.h"
#include "cameradb/camera_db.h"
#include "photolib_export.h"

#include <glib.h>
#include <sqlite3.h>

/// The queries that fill a `CameraDB` from one open connection to a copied
/// Photos.sqlite. They read the assets of the table ZGENERICASSET or, where there is none,
/// of ZASSET. Columns that only some database versions have are probed first and replaced
/// by a literal when they are missing.
///
/// Each runs on the calling thread; a connection and a model belong to one thread at a
/// time. A null argument is warned about through `g_return_if_fail_warning` and gives
/// the failure value. Double-quoted literals must be enabled on the connection. An
/// error in the middle of the rows ends a query like the end of the rows, and so do rows
/// that hold more than the database's files can, on a connection that a parse opened; any
/// other is its caller's own and has no limits. A record that a later row of the same key
/// replaces is not freed, for `panoramas` may hold it. When memory runs out the failure
/// value comes back without a log line.

/// Whether the definition of the table of assets contains the text `column`,
/// case-sensitively. False, after logging, when the schema cannot be read. `db` must
/// not be null.
PHOTOLIB_EXPORT bool assetsHasSpecialCol(sqlite3 *db, const QString &column);

/// A new asset record, for the caller to own, from the current row of a photo or video
/// statement. One with more than 15 columns is ZASSET's: the 16th is the duration, the 17th
/// the date of creation, and the directory and the file name are UTF-8. Null when the row
/// lacks a directory, a file name or a uuid, or when `stmt` is null.
PHOTOLIB_EXPORT Camera_Data *selectCameraData(CameraDB *cameraDb, sqlite3_stmt *stmt);

/// A new album record, for the caller to own, from the current row of an album
/// statement. Null only when `stmt` is null.
PHOTOLIB_EXPORT Camera_Album *selectCameraAblumValues(sqlite3_stmt *stmt);

/// Files all photos, oldest modification first, into `assets` and `panoramas`, makes
/// their modification dates pairwise distinct, and raises `maxAssetPk`. Returns 1, or
/// 0 with the model untouched, after logging, when the statement does not prepare.
PHOTOLIB_EXPORT gboolean queryCameraPhotos(sqlite3 *db, CameraDB *cameraDb);

/// Files all videos whose key is still free into `assets` and `videos`, and raises
/// `maxAssetPk`. Returns 1, or 0 with the model untouched, after logging, when the
/// statement does not prepare.
PHOTOLIB_EXPORT gboolean queryCameraVideo(sqlite3 *db, CameraDB *cameraDb);

/// Files the albums of the kinds 2, 1000 and 1001 to 1599 into `albums`, and raises `maxAlbumPk`.
/// Returns 1, or 0 with the model untouched, after logging, when the statement does
/// not prepare.
PHOTOLIB_EXPORT gboolean queryCameraAlbum(sqlite3 *db, CameraDB *cameraDb);

/// Sets the duration and the original file size of the records in `assets` that the
/// additional attributes name; only the size for those of ZASSET, where the attributes know
/// no duration. The last row that names a record holds. Returns 1, or 0 with the records
/// untouched, without a log line, when the statement does not prepare.
PHOTOLIB_EXPORT gboolean queryCameraExtendInfo(sqlite3 *db, QMap<quint64, Camera_Data *> assets);

/// The same for a caller that has read the schema of `db` already, once for all of them.
/// Nothing may be null.
gboolean readCameraPhotos(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb);
gboolean readCameraVideo(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb);
gboolean readCameraAlbum(sqlite3 *db, const asset_schema &schema, CameraDB *cameraDb);
gboolean readCameraExtendInfo(sqlite3 *db, const asset_schema &schema,
                              const QMap<quint64, Camera_Data *> &assets);

#endif // PHOTOLIB_CAMERADB_ASSET_QUERIES_H
