#ifndef PHOTOLIB_HOST_PLUGIN_H
#define PHOTOLIB_HOST_PLUGIN_H

#include "boundary/photo_manager_int.h"

#include <memory>
#include <string>

class IIPod;

/// The plug-in, loaded into the process until its end.
class Plugin
{
public:
    /// Loads the library `file`, or, when it is empty, the one that lies beside the program
    /// or in the library folder that belongs to it. Throws Error when there is none
    /// or when it is not the plug-in. Any thread.
    explicit Plugin(const std::string &file);

    /// A new photo library for `device`, which must outlive it. Never null; throws
    /// std::bad_alloc instead. Any thread.
    std::unique_ptr<photo_manager_int> makeLibrary(IIPod *device) const;

private:
    using MakeLibrary = photo_manager_int *(*)(IIPod *);

    MakeLibrary m_makeLibrary;
};

#endif // PHOTOLIB_HOST_PLUGIN_H
