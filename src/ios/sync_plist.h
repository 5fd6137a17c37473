#ifndef PHOTOLIB_IOS_SYNC_PLIST_H
#define PHOTOLIB_IOS_SYNC_PLIST_H

#include <QByteArray>

struct VDev;

/// The identifier of the library that the device was last synchronised with, from its
/// sync property list, as UTF-8. A null byte array when the device has no such list, or
/// one that does not name a library. Throws std::bad_alloc when memory runs out.
QByteArray readSyncPlist(VDev *device);

#endif // PHOTOLIB_IOS_SYNC_PLIST_H
