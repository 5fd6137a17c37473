#ifndef PHOTOLIB_CAMERADB_CAMERA_DB_PARSE_H
#define PHOTOLIB_CAMERADB_CAMERA_DB_PARSE_H

#include "cameradb/camera_db.h"
#include "photolib_export.h"

/// Copies the photo database of `device` and its journals into its local data folder
/// (or the system's temporary folder), and reads the copy. Returns a model that the
/// caller owns together with its records, or null: without a device, or after logging
/// when the database could not be copied or read, or on a cancel. Forgets an earlier
/// cancel. One parse at a time in a process.
PHOTOLIB_EXPORT CameraDB *cameraDBParse(IIPod *device);

/// The same into the model `cameraDb`, without forgetting a cancel. Returns 1 on
/// success; 0 when the database opened but a query failed, with the records filed so
/// far in the model; -1, with the model untouched, when the database was not copied,
/// the parse was cancelled, there is no model, or the copy does not open. The copies
/// stay in the local folder. A database made to yield more than its files can hold, or to
/// run for ever, is cut short: its rows end there, without a log line.
PHOTOLIB_EXPORT int parseCameraDB(IIPod *device, CameraDB *cameraDb);

/// Stops a parse that is copying, within one block of 4 MiB; a database that is
/// already open is read to its end. May be called from any thread and from a signal
/// handler, and returns at once.
PHOTOLIB_EXPORT void cancleParse();

#endif // PHOTOLIB_CAMERADB_CAMERA_DB_PARSE_H
