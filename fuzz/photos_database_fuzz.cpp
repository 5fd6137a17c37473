// Photos.sqlite and its write-ahead log through the parse of the database.
//
// An input is a database file; or, when it does not begin as one, the length of the database
// in 32 bits, the database, and the log.

#include "cameradb/camera_db_parse.h"
#include "cameradb/owned_model.h"
#include "fuzz/fuzz_host.h"
#include "fuzz/fuzz_input.h"

// Of two rows with one key the second record takes the first one's place in the model, and the
// first is left to nobody. What makes records is `asset_reader::read`, which GCC's reports
// shorten.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:asset_reader::read\n"
           "leak:^read$\n"
           "leak:selectCameraAblumValues\n";
}

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
    QByteArray database = input.rest();
    if (!database.startsWith("SQLite format 3")) {
        FuzzInput pieces(data, size);
        const quint32 length = pieces.u32();
        const QByteArray files = pieces.rest();
        database = files.left(static_cast<int>(qMin<quint32>(length, 1U << 30)));
        host.setDeviceFile("/PhotoData/Photos.sqlite-wal", files.mid(database.size()));
    }
    host.setDeviceFile("/PhotoData/Photos.sqlite", database);
    const OwnedModel model(cameraDBParse(&device));
    return 0;
}
