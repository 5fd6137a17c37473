#ifndef PHOTOLIB_HOST_IIPOD_H
#define PHOTOLIB_HOST_IIPOD_H

#include <QString>

/// The connected device, as the host hands it to `getPhotolib`.
///
/// The host implements this class and owns the object; it must outlive every
/// manager made for it. The plug-in calls the five named operations only. Hosts
/// built by different compilers' releases meet here through the order of the virtual
/// operations, so the slots are fixed (counted from 1, the destructor taking the
/// first two): the reserved ones keep the named ones in place, are never called, and
/// need not be overridden.
///
/// No operation may throw. The queries answer at once; they are called on the thread
/// that uses the manager.
class IIPod
{
public:
    /// Slots 1 and 2: the host destroys its device, the plug-in never does.
    virtual ~IIPod() {}

    virtual void reserved3() {}
    virtual void reserved4() {}
    virtual void reserved5() {}
    virtual void reserved6() {}
    virtual void reserved7() {}
    virtual void reserved8() {}

    /// Slot 9. Whether the device's files must not be read now (for instance because it is
    /// locked). While it answers true no file is copied and a library parse fails.
    /// Called from the thread that parses.
    virtual bool isAccessBlocked() = 0;

    virtual void reserved10() {}
    virtual void reserved11() {}
    virtual void reserved12() {}
    virtual void reserved13() {}
    virtual void reserved14() {}
    virtual void reserved15() {}
    virtual void reserved16() {}
    virtual void reserved17() {}

    /// Slot 18. The name under which `vDevOpen(VDevDevice, ...)` opens this device. Called
    /// from the thread that parses.
    virtual QString devicePath() = 0;

    virtual void reserved19() {}

    /// Slot 20. The drive that holds a classic iPod's disk, in the form that
    /// "%1:/Photos%2" turns into a path. Not called for iOS devices.
    virtual QString driveName() = 0;

    virtual void reserved21() {}
    virtual void reserved22() {}
    virtual void reserved23() {}
    virtual void reserved24() {}
    virtual void reserved25() {}
    virtual void reserved26() {}
    virtual void reserved27() {}
    virtual void reserved28() {}
    virtual void reserved29() {}
    virtual void reserved30() {}
    virtual void reserved31() {}
    virtual void reserved32() {}
    virtual void reserved33() {}
    virtual void reserved34() {}
    virtual void reserved35() {}
    virtual void reserved36() {}
    virtual void reserved37() {}
    virtual void reserved38() {}
    virtual void reserved39() {}
    virtual void reserved40() {}

    /// Slot 41. True for a device with the iOS photo database (Photos.sqlite), false for a
    /// classic iPod. Asked once, by `getPhotolib`.
    virtual bool isIOSDevice() = 0;

    virtual void reserved42() {}
    virtual void reserved43() {}
    virtual void reserved44() {}
    virtual void reserved45() {}
    virtual void reserved46() {}
    virtual void reserved47() {}
    virtual void reserved48() {}

    /// Slot 49. A folder of the host computer, with its closing separator, where copies of
    /// the device's database files are kept; file names are appended to the text as
    /// it stands. Empty for the system's temporary folder. Called from the thread
    /// that parses.
    virtual QString localDataPath() = 0;
};

#endif // PHOTOLIB_HOST_IIPOD_H
