#include "classic/device_clock.h"

quint32 clockSecondsSince1970(quint32 deviceSeconds)
{
    constexpr quint32 from1904To1970 = 2082844800;
    return deviceSeconds < from1904To1970 ? 0 : deviceSeconds - from1904To1970;
}
