#ifndef PHOTOLIB_ENGINE_TAKEN_TEXT_H
#define PHOTOLIB_ENGINE_TAKEN_TEXT_H

#include <QString>

struct Asset;

/// When `asset` was taken by a clock where it was taken, "2019-07-27 09:16"; in UTC and with "Z"
/// at the end where the library does not know that clock. Empty when it has no date, or one that
/// is outside the years 1 to 9999.
QString takenText(const Asset &asset);

#endif // PHOTOLIB_ENGINE_TAKEN_TEXT_H
