// Records of packed thumbnail files and ready thumbnails through the thumbnail of a photo.
//
// An input is: which of the packed files the device has (8 bits, one a file); which of the ready
// ones (4 bits), whether the packed files hold whole records and whether the photo's folder and
// name follow (1 bit each); the photo's record in them (32 bits); a ready thumbnail (a piece);
// maybe the folder and the name (pieces); and the content of the packed files, or, of whole
// records, the trailer and what their pixels repeat.

#include "fuzz/fuzz_host.h"
#include "fuzz/fuzz_input.h"
#include "ios/photo_manager.h"

namespace {

struct PackedFile {
    const char *name;
    int pixelBytes; // of a record
};
const PackedFile packedFiles[] = {{"332x332", 223104}, {"240x240", 115200}, {"166x166", 55776},
                                  {"158x158", 50560},  {"120x120", 28800},  {"3319", 50240},
                                  {"4031", 28800},     {"3309", 8192}};
constexpr int trailerBytes = 28;
constexpr quint8 wholeRecords = 1 << 4;
constexpr quint8 ownNames = 1 << 5;
const char *const readyNames[] = {"5005.JPG", "5003.JPG", "3507.JPG", "3505.JPG"};
constexpr quint64 photoKey = 41;

Camera_Data *addPhoto(CameraDB *model, qint32 index)
{
    auto *const photo = new Camera_Data();
    photo->db = model;
    photo->pk = photoKey;
    photo->directory = QStringLiteral("DCIM/100APPLE");
    photo->fileName = QStringLiteral("IMG_0001.JPG");
    photo->thumbnailIndex = index;
    model->assets[photoKey] = photo;
    return photo;
}

// Two records alike, so that a small input reaches the pixels of a large one.
QByteArray records(int pixelBytes, const QByteArray &content)
{
    const QByteArray trailer = content.left(trailerBytes).leftJustified(trailerBytes, '\0');
    QByteArray pattern = content.mid(trailerBytes);
    if (pattern.isEmpty())
        pattern = QByteArray(1, '\x2a');
    const QByteArray pixels = pattern.repeated(pixelBytes / pattern.size() + 1).left(pixelBytes);
    return pixels + trailer + pixels + trailer;
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
    Camera_Data *const photo = addPhoto(manager.m_pCameraDB, static_cast<qint32>(input.u32()));
    manager.m_pVDev = vDevOpen(VDevDevice, FakeHost::DeviceName);
    const QByteArray readyFile = input.piece();
    if (ready & ownNames) {
        photo->directory = QString::fromLatin1(input.piece());
        photo->fileName = QString::fromLatin1(input.piece());
    }
    for (int i = 0; i < 4; ++i) {
        if (ready >> i & 1)
            host.setDeviceFile(QByteArray("/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/") +
                                   readyNames[i],
                               readyFile);
    }
    const QByteArray content = input.rest();
    for (int i = 0; i < 8; ++i) {
        if (packed >> i & 1)
            host.setDeviceFile(
                QByteArray("/PhotoData/Thumbnails/") + packedFiles[i].name + ".ithmb",
                ready & wholeRecords ? records(packedFiles[i].pixelBytes, content) : content);
    }
    QByteArray out;
    manager.getPhotoThumbnail(photoKey, out);
    manager.getPhotoThumbnail(photoKey, out);
    manager.getSourcePhoto(photoKey, out);
    return 0;
}
