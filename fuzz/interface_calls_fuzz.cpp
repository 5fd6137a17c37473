// Sequences of calls of the interface with arbitrary arguments.
//
// An input is: whether the device is a classic iPod (8 bits), and the calls: the operation in
// 8 bits, and what it needs.

#include "boundary/photo_records.h"
#include "boundary/photolib.h"
#include "fuzz/fuzz_host.h"
#include "fuzz/fuzz_input.h"
#include "ios/photo_manager.h"
#include "support/photos_database.h"

#include <memory>
#include <set>
#include <vector>

namespace {

constexpr int mostCalls = 300;
constexpr int mostParses = 3; // which take a hundred times as long as the other calls

QByteArray databaseBytes()
{
    PhotosDatabase database;
    for (int key = 1; key <= 6; ++key)
        database.rows.assets.push_back(photoRow(key, key % 3));
    database.rows.assets.push_back(videoRow(7));
    for (const int kind : {2, 12, 1505, 1552, 15}) {
        const int key = static_cast<int>(database.rows.albums.size()) + 1;
        database.rows.albums.push_back(albumRow(key, kind));
        database.join().add(key, 1);
        database.join().add(key, key);
    }
    return database.bytes();
}

// Everything that the calls of one input work on.
class Calls
{
public:
    explicit Calls(FuzzInput &input) : m_input(input), m_host(FakeHost::Disk::Real)
    {
        static const QByteArray database = databaseBytes();
        m_host.setDeviceFile("/PhotoData/Photos.sqlite", database);
        m_device.localData = copiesFolder();
        m_device.iosDevice = m_input.byte() % 4 != 0;
        for (int parse = 1; parse <= mostParses; ++parse)
            m_host.onCall("getPhotoDBInt", parse, [this] { addClassicDatabase(); });
        m_library.reset(getPhotolib(&m_device));
    }

    ~Calls()
    {
        // A parse leaves the model of the one before it to whoever still uses it.
        auto *const manager = dynamic_cast<photo_manager *>(m_library.get());
        for (CameraDB *model : m_models) {
            if (model == manager->m_pCameraDB)
                continue;
            qDeleteAll(model->albums);
            qDeleteAll(model->assets);
            delete model;
        }
    }

    Calls(const Calls &) = delete;
    Calls &operator=(const Calls &) = delete;

    void run()
    {
        for (int i = 0; i < mostCalls && !m_input.isAtEnd(); ++i)
            call(m_input.byte());
    }

private:
    void addClassicDatabase();
    void call(int operation);
    void query(int operation);
    void edit(int operation);
    void change(int operation);
    void parse();
    quint64 id();
    photoItem *photoArgument() { return m_input.byte() % 8 == 0 ? nullptr : &m_photo; }
    albumItem *albumArgument() { return m_input.byte() % 8 == 0 ? nullptr : &m_album; }

    FuzzInput &m_input;
    FakeHost m_host;
    FakeIPod m_device;
    std::vector<std::unique_ptr<FakePhotoDB>> m_classicDatabases;
    std::unique_ptr<photo_manager_int> m_library;
    std::set<CameraDB *> m_models;
    int m_parses = 0;
    photoItem m_photo;
    albumItem m_album;
    QByteArray m_bytes;
};

// Each parse of a classic iPod releases the database of the one before it.
void Calls::addClassicDatabase()
{
    m_classicDatabases.push_back(std::make_unique<FakePhotoDB>());
    FakePhotoDB &classic = *m_classicDatabases.back();
    itdb_trk photo;
    itdb_photo variant;
    variant.size = 10;
    variant.fileName = QStringLiteral(":Thumbs:F1019_1.ithmb");
    photo.thumbs = {variant, variant};
    classic.library.addPhoto(1, photo);
    itdb_pl album;
    album.photoIDs = {1, 2};
    classic.library.addAlbum(5, album);
    m_host.setPhotoDatabase(&classic);
}

quint64 Calls::id()
{
    static const quint64 known[] = {0,        1,        2,        3,    4,  5,
                                    6,        7,        1000,     1001, 20, quint64(-1),
                                    16777213, 16777214, 16777215, 8,    9,  0x7fffffff};
    const quint8 choice = m_input.byte();
    if (choice < std::size(known))
        return known[choice];
    return choice % 2 == 0 ? m_photo.id : m_input.u64();
}

void Calls::parse()
{
    if (++m_parses > mostParses)
        return;
    m_library->parseLib();
    auto *const manager = dynamic_cast<photo_manager *>(m_library.get());
    if (manager && manager->m_pCameraDB)
        m_models.insert(manager->m_pCameraDB);
}

void Calls::query(int operation)
{
    switch (operation) {
    case 0:
        m_library->photoIDs();
        m_library->photoCnt();
        break;
    case 1:
        m_library->albumIDs();
        m_library->albumCnt();
        break;
    case 2:
        m_library->getPhoto(id(), photoArgument());
        break;
    case 3:
        m_library->getAlbum(id(), albumArgument());
        break;
    case 4:
        m_library->getPhotoThumbnail(id(), m_bytes);
        break;
    case 5:
        m_library->getSourcePhoto(id(), m_bytes);
        break;
    case 6:
        m_library->getUUID();
        break;
    default:
        m_library->cancleParse();
    }
}

void Calls::edit(int operation)
{
    switch (operation) {
    case 0:
        m_library->addAlbum(albumArgument());
        break;
    case 1:
        m_library->rmAlbum(id());
        break;
    case 2:
        m_library->updateAlbum(albumArgument());
        break;
    case 3:
        m_library->addPhoto2Album(photoArgument(), id());
        break;
    case 4:
        m_library->addPhoto2Album(photoArgument(), albumArgument());
        break;
    default:
        parse();
    }
}

// Of what the caller and the device have.
void Calls::change(int operation)
{
    switch (operation) {
    case 0:
        m_photo.id = id();
        m_photo.type = static_cast<qint32>(m_input.u32());
        break;
    case 1:
        m_photo.name = QString::fromUtf8(m_input.piece());
        m_photo.path = QString::fromUtf8(m_input.piece());
        break;
    case 2:
        m_photo.uuid = m_input.piece();
        break;
    case 3:
        m_album.id = id();
        m_album.type = static_cast<qint32>(m_input.u32());
        break;
    case 4:
        m_album.name = QString::fromUtf8(m_input.piece());
        m_album.uuid = m_input.piece();
        break;
    case 5:
        m_album.photoIDs.append(id());
        break;
    case 6:
        m_album.photoIDs.clear();
        break;
    case 7:
        m_device.accessBlocked = m_input.byte() % 2 != 0;
        break;
    case 8:
        m_host.removeDeviceFile("/PhotoData/Photos.sqlite");
        break;
    default:
        m_host.setDeviceFile(m_photo.path.toUtf8(), m_input.piece());
    }
}

void Calls::call(int operation)
{
    constexpr int queries = 8;
    constexpr int edits = 6;
    constexpr int changes = 10;
    const int kind = operation % (queries + edits + changes);
    if (kind < queries)
        query(kind);
    else if (kind < queries + edits)
        edit(kind - queries);
    else
        change(kind - queries - edits);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    return initializeFuzzing(argc, argv);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    Calls(input).run();
    return 0;
}
