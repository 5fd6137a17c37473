#ifndef PHOTOLIB_ENGINE_DEFAULT_DEVICE_H
#define PHOTOLIB_ENGINE_DEFAULT_DEVICE_H

#include "base/cancel_token.h"

#include <QByteArray>

/// The folder of a sample device in the user's cache folder, for a person who named no
/// device.
struct DefaultDevice {
    QByteArray folder;
    bool isNew = false; ///< it has just been made
};

/// Finds the sample device, and makes it when it is not there: other programs and later
/// runs see all of it or nothing. Throws Error, of the kind Cancelled once `cancel` is.
DefaultDevice defaultDevice(const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_DEFAULT_DEVICE_H
