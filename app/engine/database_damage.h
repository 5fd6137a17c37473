#ifndef PHOTOLIB_ENGINE_DATABASE_DAMAGE_H
#define PHOTOLIB_ENGINE_DATABASE_DAMAGE_H

#include "base/cancel_token.h"

#include <QString>

/// Whether rows that a photo library is read from cannot be reached in the local copy `database` of
/// an iOS device's photo database, which nobody else has open.
///
/// The plug-in takes an error among the rows for their end, so a library may look complete that is
/// not. All rows of the photos, albums and memberships are read again here, in time linear to the
/// size of the database. What a damaged page left behind that still looks like rows goes unnoticed.
///
/// Throws Error when the copy itself cannot be read, and std::bad_alloc. Once `cancel` is cancelled
/// the answer means nothing.
bool isDamaged(const QString &database, CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_DATABASE_DAMAGE_H
