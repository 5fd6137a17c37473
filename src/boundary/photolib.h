#ifndef PHOTOLIB_BOUNDARY_PHOTOLIB_H
#define PHOTOLIB_BOUNDARY_PHOTOLIB_H

#include "photolib_export.h"

class IIPod;
class photo_manager_int;

extern "C" {

/// Makes the photo library object for `iPod`, which must not be null and must outlive
/// it. The object is not parsed yet. Returns null when memory runs out, after logging
/// it. The caller owns the object. Managers must not be made concurrently.
PHOTOLIB_EXPORT photo_manager_int *getPhotolib(IIPod *iPod);

/// Frees the storage of `**pp` and sets `*pp` to null; a null `pp` or `*pp` is fine.
/// The destructor does not run, so the parsed library, the device handle and the
/// object's locks are not freed: hosts that bring their own teardown count on that. A
/// host that wants them freed deletes the object through the interface instead.
PHOTOLIB_EXPORT void releasePhotolib(photo_manager_int **pp);
}

/// Stops the parse of an iOS device that is copying, within one block of 4 MiB; a database that
/// is already open is read to its end, and a parse that begins later forgets the call. May be
/// called from any thread and from a signal handler, and returns at once. Not `extern "C"`: in
/// the loaded library it is called `_Z11cancleParsev`.
PHOTOLIB_EXPORT void cancleParse();

#endif // PHOTOLIB_BOUNDARY_PHOTOLIB_H
