#ifndef PHOTOLIB_CLASSIC_DEVICE_CLOCK_H
#define PHOTOLIB_CLASSIC_DEVICE_CLOCK_H

#include <QtGlobal>

/// The instant in seconds since 1970-01-01 00:00:00 UTC, at which a classic iPod's clock
/// showed `deviceSeconds` since 1904-01-01 00:00:00. The iPod does not tell its time zone;
/// it is taken for that of this computer, which is where it was filled. 0, which stands for
/// no time, and what is before 1970 give 0.
quint32 unixTime(quint32 deviceSeconds);

#endif // PHOTOLIB_CLASSIC_DEVICE_CLOCK_H
