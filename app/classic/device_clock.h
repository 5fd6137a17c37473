#ifndef PHOTOLIB_CLASSIC_DEVICE_CLOCK_H
#define PHOTOLIB_CLASSIC_DEVICE_CLOCK_H

#include <QtGlobal>

/// The date and time that a classic iPod's clock showed `deviceSeconds` after 1904-01-01 00:00:00,
/// in seconds since 1970-01-01 00:00:00, to be read as UTC. The iPod does not tell its time zone,
/// so this is no instant; but it is what the iPod shows, whatever the time zone of this computer.
/// 0, which stands for no time, and what is before 1970 give 0.
quint32 clockSecondsSince1970(quint32 deviceSeconds);

#endif // PHOTOLIB_CLASSIC_DEVICE_CLOCK_H
