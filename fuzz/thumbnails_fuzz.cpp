// Records of packed thumbnail files and ready thumbnails through the thumbnail of a photo.
//
// An input is: which of the packed files the device has (8 bits, one a file; that one of
// ready ones in 4 more), the photo's record in them (32 bits), a ready thumbnail (a piece)
// and the content of the packed file.

#include "fuzz/fuzz_host.h"
#include "fuzz/fuzz_input.h"
#include "ios/photo_manager.h"

namespace {

const char *const packedNames[] = {"332x332", "240x240", "166x166", "158x158",
                                   "120x120", "3319",    "4031",    "3309"};
const char *const readyNames[] = {"5005.JPG", "5003.JPG", "3507.JPG", "3505.JPG"};
constexpr quint64 photoKey = 41;

void addPhoto(CameraDB *model, qint32 index)
{
    auto *const photo = new Camera_Data();
    photo->db = model;
    photo->pk = photoKey;
    photo->directory = QStringLiteral("DCIM/100APPLE");
    photo->fileName = QStringLiteral("IMG_0001.JPG");
    photo->thumbnailIndex = index;
    model->assets[photoKey] = photo;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    return initializeFuzzing(argc, argv);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    FakeHost host;
    FakeIPod device;
    const quint8 packed = input.byte();
    const quint8 ready = input.byte();
    photo_manager manager(&device);
    manager.m_pCameraDB = new CameraDB();
    addPhoto(manager.m_pCameraDB, static_cast<qint32>(input.u32()));
    manager.m_pVDev = vDevOpen(VDevDevice, FakeHost::DeviceName);
    const QByteArray readyFile = input.piece();
    for (int i = 0; i < 4; ++i) {
        if (ready >> i & 1)
            host.setDeviceFile(QByteArray("/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/") +
                                   readyNames[i],
                               readyFile);
    }
    const QByteArray packedFile = input.rest();
    for (int i = 0; i < 8; ++i) {
        if (packed >> i & 1)
            host.setDeviceFile(QByteArray("/PhotoData/Thumbnails/") + packedNames[i] + ".ithmb",
                               packedFile);
    }
    QByteArray out;
    manager.getPhotoThumbnail(photoKey, out);
    manager.getPhotoThumbnail(photoKey, out);
    manager.getSourcePhoto(photoKey, out);
    return 0;
}
