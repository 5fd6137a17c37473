#include "bench_host.h"
#include "boundary/photo_records.h"
#include "boundary/photolib.h"
#include "library_bytes.h"
#include "long_run_device.h"
#include "memory_use.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// Whether memory stays flat through thousands of parses and a million requests in one process,
// apart from what the plug-in leaves behind by contract, which is counted to the byte.
//
//   long_run [--short]     --short: some of each without a look at memory, for memcheck

namespace {

[[noreturn]] void fail(const std::string &what)
{
    std::fprintf(stderr, "long_run: %s\n", what.c_str());
    std::exit(1);
}

void require(bool isTrue, const char *what)
{
    if (!isTrue)
        fail(std::string("wrong result: ") + what);
}

// --- What is left behind by contract.

struct Remainder {
    std::string name;
    qint64 bytesEach = 0;
    int filesEach = 0;
    int count = 0;
};

const char *const syncText = "text of the sync list, which stays with libplist";
const char *const thumbnailFile = "thumbnail file, which stays open";
const char *const deviceHandles = "device handles behind a file that does not open";
const char *const earlierModel = "model of the parse before";
const char *const replacedRecords = "records replaced by rows of the same key";
const char *const orphanedRecords = "records of a parse that failed";

class Contract
{
public:
    void name(const std::string &name, qint64 bytesEach, int filesEach = 0)
    {
        m_remainders.push_back(Remainder{name, bytesEach, filesEach, 0});
    }

    void leave(const char *name)
    {
        for (Remainder &remainder : m_remainders) {
            if (remainder.name == name) {
                ++remainder.count;
                return;
            }
        }
        fail(std::string("nothing is named ") + name);
    }

    // All parts of a library.
    void leaveAll(const std::vector<NamedBytes> &parts)
    {
        for (const NamedBytes &part : parts)
            leave(part.name.c_str());
    }

    void forget()
    {
        for (Remainder &remainder : m_remainders)
            remainder.count = 0;
    }

    qint64 bytes() const
    {
        qint64 bytes = 0;
        for (const Remainder &remainder : m_remainders)
            bytes += remainder.bytesEach * remainder.count;
        return bytes;
    }

    int files() const
    {
        int files = 0;
        for (const Remainder &remainder : m_remainders)
            files += remainder.filesEach * remainder.count;
        return files;
    }

    void print() const
    {
        for (const Remainder &remainder : m_remainders) {
            if (remainder.count > 0)
                std::printf("  %9d times %7lld bytes, %d files: %s\n", remainder.count,
                            static_cast<long long>(remainder.bytesEach), remainder.filesEach,
                            remainder.name.c_str());
        }
    }

private:
    std::vector<Remainder> m_remainders;
};

// --- What is done.

std::unique_ptr<photo_manager> parsed(LongRunDevice &device)
{
    std::unique_ptr<photo_manager> manager(new photo_manager(device.iPod()));
    require(manager->parseLib(), "parse");
    require(manager->photoCnt() == LongRunDevice::assets, "number of assets");
    return manager;
}

void askForPhoto(photo_manager_int &library, quint64 key)
{
    photoItem photo;
    require(library.getPhoto(key, &photo) && photo.id == key && !photo.path.isEmpty(), "photo");
}

void askForThumbnail(photo_manager_int &library, quint64 key)
{
    const int imageBytes = 120 * 120 * 3 + 54;
    QByteArray picture;
    require(library.getPhotoThumbnail(key, picture) == 0, "thumbnail");
    require(picture.size() == (key % 2 == 0 ? 3000 : imageBytes), "size of a thumbnail");
}

void askForSource(photo_manager_int &library, quint64 key)
{
    QByteArray bytes("old");
    require(library.getSourcePhoto(key, bytes) == 0 && bytes == "old", "source");
}

void askForAlbum(photo_manager_int &library, quint64 key)
{
    albumItem album;
    require(library.getAlbum(key, &album) && album.id == key, "album");
}

void list(photo_manager_int &library)
{
    require(library.getUUID() == QString::fromLatin1(syncedLibrary), "uuid");
    require(library.photoIDs().size() == LongRunDevice::assets, "list of photos");
    for (const quint64 key : library.albumIDs())
        askForAlbum(library, key);
    for (quint64 key = 1; key <= 20; ++key)
        askForPhoto(library, key);
    for (quint64 key = 2; key <= 8; key += 2)
        askForThumbnail(library, key);
    askForSource(library, 1);
}

void edit(photo_manager_int &library)
{
    const quint64 everything = 16777215;
    albumItem album;
    photoItem added, second;
    require(library.addAlbum(&album) > 0, "new album");
    require(library.addPhoto2Album(&added, album.id) == 0, "new photo");
    require(library.addPhoto2Album(&second, &album) == 0, "new photo by the record");
    require(library.updateAlbum(&album) == 0, "update");
    require(library.rmAlbum(album.id) == 0, "removal");
    albumItem all;
    require(library.getAlbum(everything, &all) && all.photoIDs.removeAll(second.id) == 1, "all");
    require(library.updateAlbum(&all) == 0, "removal of a photo");
    require(library.photoCnt() == LongRunDevice::assets + 1, "photos after the edits");
}

// The n-th of very many requests.
void request(photo_manager_int &library, int n)
{
    const quint64 number = static_cast<quint64>(n / 4);
    const quint64 asset = 1 + number % LongRunDevice::assets;
    switch (n % 4) {
    case 0:
        return askForPhoto(library, asset);
    case 1:
        return askForThumbnail(library, asset);
    case 2:
        return askForSource(library, asset);
    default:
        return askForAlbum(library, 1 + number % LongRunDevice::albums);
    }
}

// The names of the next functions stand in memcheck's list of what may be left behind.

void parseAndDelete(LongRunDevice &device, int n, Contract *contract)
{
    const std::unique_ptr<photo_manager_int> library(getPhotolib(device.iPod()));
    require(library->parseLib(), "parse");
    list(*library);
    edit(*library);
    contract->leave(syncText);
    if (n % 10 != 0)
        return;
    askForThumbnail(*library, 1);
    contract->leave(thumbnailFile);
}

void parseAndRelease(LongRunDevice &device, const std::vector<NamedBytes> &parts,
                     Contract *contract)
{
    photo_manager_int *library = getPhotolib(device.iPod());
    require(library->parseLib(), "parse");
    list(*library);
    releasePhotolib(&library);
    require(library == nullptr, "release");
    contract->leave(syncText);
    contract->leaveAll(parts);
}

void parseAgain(photo_manager &library, Contract *contract)
{
    require(library.parseLib(), "next parse");
    contract->leave(syncText);
    contract->leave(earlierModel);
}

void parseEqualKeys(LongRunDevice &device, Contract *contract)
{
    parsed(device);
    contract->leave(syncText);
    contract->leave(replacedRecords);
}

void parseWithoutJournals(LongRunDevice &device, Contract *contract)
{
    list(*parsed(device));
    contract->leave(syncText);
    contract->leave(deviceHandles);
}

void parseWithoutJoinTable(LongRunDevice &device, Contract *contract)
{
    photo_manager library(device.iPod());
    require(!library.parseLib() && library.photoCnt() == 0, "parse that fails");
    contract->leave(orphanedRecords);
}

// --- How memory is watched.

// One kind of work, many times over.
struct Phase {
    std::string name;
    int count;
    std::function<void(int)> work;
    // What grows by contract as a list does, in bytes so far.
    std::function<qint64()> listBytes = [] { return qint64(0); };
};

class Watch
{
public:
    Watch(bool isShort, Contract *contract) : m_isShort(isShort), m_contract(contract) {}

    // Does the work and tells whether memory stayed within the contract.
    bool run(const Phase &phase)
    {
        // What is allocated once in a process is there before it is looked at.
        for (int i = 0; i < (m_isShort ? 0 : warmUps); ++i)
            phase.work(i);
        m_contract->forget();
        m_start = memoryUse();
        m_listStart = phase.listBytes();
        m_isFlat = true;
        std::printf("%d %s\n", phase.count, phase.name.c_str());
        if (!m_isShort)
            std::printf("  %5s %12s %12s %6s %15s %10s %10s\n", "", "heap", "resident", "files",
                        "by contract", "of a list", "beyond");
        report(phase, 0);
        for (int i = 0; i < phase.count; ++i) {
            phase.work(i);
            if ((i + 1) % (phase.count / steps) == 0)
                report(phase, (i + 1) / (phase.count / steps));
        }
        if (!m_isShort)
            m_contract->print();
        std::fflush(stdout);
        return m_isShort || m_isFlat;
    }

private:
    static const int warmUps = 10;
    static const int steps = 10;

    void report(const Phase &phase, int step)
    {
        if (m_isShort)
            return;
        const MemoryUse now = memoryUse();
        const qint64 listed = phase.listBytes() - m_listStart;
        const qint64 allowed = m_contract->bytes() + listed;
        const qint64 beyond = now.heapBytes - m_start.heapBytes - allowed;
        const int filesBeyond = now.openFiles - m_start.openFiles - m_contract->files();
        const bool isFlat = beyond == 0 && filesBeyond == 0 &&
                            now.residentBytes - m_start.residentBytes <= residentBound(allowed);
        std::printf("  %3d %% %12lld %12lld %6d %15lld %10lld %10lld%s\n", 10 * step,
                    static_cast<long long>(now.heapBytes),
                    static_cast<long long>(now.residentBytes), now.openFiles,
                    static_cast<long long>(m_contract->bytes()), static_cast<long long>(listed),
                    static_cast<long long>(beyond), isFlat ? "" : "  TOO MUCH");
        m_isFlat = m_isFlat && isFlat;
    }

    // The blocks are small, and the words beside each take about half as much again.
    static qint64 residentBound(qint64 allowed) { return 2 * allowed + 4194304; }

    const bool m_isShort;
    Contract *m_contract;
    MemoryUse m_start;
    qint64 m_listStart = 0;
    bool m_isFlat = true;
};

// --- All of it.

class LongRun
{
public:
    explicit LongRun(bool isShort)
        : m_isShort(isShort), m_parses(isShort ? 10 : 1000), m_requests(isShort ? 400 : 1000000),
          m_watch(isShort, &m_contract)
    {
        // So that the sample below holds nothing that is allocated once.
        for (int i = 0; i < 2; ++i)
            list(*parsed(m_device));
        nameRemainders();
    }

    bool run()
    {
        bool isFlat = m_watch.run({"parses, each deleted", m_parses,
                                   [this](int n) { parseAndDelete(m_device, n, &m_contract); }});
        isFlat &= m_watch.run({"parses, each released without its destructor", m_parses,
                               [this](int) { parseAndRelease(m_device, m_parts, &m_contract); }});
        isFlat &= runOnOneObject();
        isFlat &= runOnFlaws();
        isFlat &= runRequests();
        return isFlat;
    }

private:
    void nameRemainders()
    {
        std::unique_ptr<photo_manager> sample = parsed(m_device);
        const QList<Camera_Data *> assets = sample->m_pCameraDB->assets.values();
        const QList<Camera_Album *> albums = sample->m_pCameraDB->albums.values();
        m_contract.name(syncText, static_cast<qint64>(std::strlen(syncedLibrary)) + 1);
        m_contract.name(thumbnailFile, fileHandleBytes(), 1);
        m_contract.name(replacedRecords,
                        recordBytes(assets.mid(0, LongRunDevice::repeatedAssets),
                                    albums.mid(0, LongRunDevice::repeatedAlbums), false));
        m_contract.name(orphanedRecords, recordBytes(assets, albums, false));
        const qint64 records = recordBytes(assets, albums, true);
        m_parts = takeApart(std::move(sample));
        for (const NamedBytes &part : m_parts)
            m_contract.name(part.name, part.bytes);
        require(m_isShort || bytesOf("records") == records, "two counts of the records' bytes");
        m_contract.name(earlierModel, records + bytesOf("model"));
    }

    qint64 bytesOf(const char *part) const
    {
        for (const NamedBytes &each : m_parts) {
            if (each.name == part)
                return each.bytes;
        }
        fail(std::string("no part is named ") + part);
    }

    bool runOnOneObject()
    {
        const std::unique_ptr<photo_manager> library = parsed(m_device);
        photo_manager *const it = library.get();
        return m_watch.run({"parses of one object, which add to what the first built", m_parses,
                            [this, it](int) { parseAgain(*it, &m_contract); },
                            [it] { return heapBytesOf(it->m_listAlbumIDs.d); }});
    }

    bool runOnFlaws()
    {
        LongRunDevice equalKeys("equal-keys", Flaw::EqualKeys);
        LongRunDevice noJournals("no-journals", Flaw::NoJournals);
        LongRunDevice noJoinTable("no-join-table", Flaw::NoJoinTable);
        m_contract.name(deviceHandles, 2 * deviceHandleBytes(*noJournals.iPod()));
        tellFailures(false);
        bool isFlat = m_watch.run({"parses with rows of equal keys", m_parses,
                                   [&](int) { parseEqualKeys(equalKeys, &m_contract); }});
        isFlat &= m_watch.run({"parses without journals", m_parses,
                               [&](int) { parseWithoutJournals(noJournals, &m_contract); }});
        isFlat &= m_watch.run({"parses that fail", m_parses,
                               [&](int) { parseWithoutJoinTable(noJoinTable, &m_contract); }});
        tellFailures(true);
        return isFlat;
    }

    bool runRequests()
    {
        const std::unique_ptr<photo_manager> library = parsed(m_device);
        photo_manager *const it = library.get();
        for (int n = 0; n < 4 * LongRunDevice::assets; ++n)
            request(*it, n);
        return m_watch.run({"requests for photos, thumbnails, sources and albums", m_requests,
                            [it](int n) { request(*it, n); }});
    }

    const bool m_isShort;
    const int m_parses;
    const int m_requests;
    LongRunDevice m_device{"sound", Flaw::None};
    std::vector<NamedBytes> m_parts;
    Contract m_contract;
    Watch m_watch;
};

} // namespace

int main(int argc, char **argv)
{
    const bool isShort = argc == 2 && std::strcmp(argv[1], "--short") == 0;
    // No buffer that is allocated in the middle.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    const bool isFlat = LongRun(isShort).run();
    std::printf("%s\n", isFlat ? "memory is flat" : "MEMORY GREW beyond the contract");
    return isFlat ? 0 : 1;
}
