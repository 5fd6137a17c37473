// The property list that names the library through the parse of the library: an input is its
// bytes.

#include "fuzz/fuzz_host.h"
#include "fuzz/fuzz_input.h"
#include "ios/photo_manager.h"
#include "support/photos_database.h"

namespace {

const QByteArray &smallDatabase()
{
    static const QByteArray bytes = PhotosDatabase().bytes();
    return bytes;
}

// The step of a parse that reads the list, on its own: the database before it takes a hundred
// times as long.
void readList(photo_manager &manager)
{
    manager.m_pVDev = vDevOpen(VDevDevice, FakeHost::DeviceName);
    manager.m_pCameraDB = new CameraDB();
    manager.readLibraryUuid();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    return initializeFuzzing(argc, argv);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    FakeHost host(FakeHost::Disk::Real);
    FakeIPod device;
    device.localData = copiesFolder();
    host.setDeviceFile("/Photos/Sync/CurrentLibraryUUID.plist", input.rest());
    photo_manager manager(&device);
    if (size % 16 == 0) {
        host.setDeviceFile("/PhotoData/Photos.sqlite", smallDatabase());
        manager.parseLib();
    } else {
        readList(manager);
    }
    manager.getUUID();
    return 0;
}
