#include "bench_database.h"
#include "bench_host.h"
#include "boundary/photo_records.h"
#include "ios/photo_manager.h"
#include "measure.h"
#include "memory_use.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <sys/mman.h>

// What very large libraries take in memory and time, and whether both grow as the library does.

namespace {

// What is promised. The program fails beyond it.
const double mostHeapPerAsset = 450;     // bytes, with all lists but those of the albums' members
const double mostHeapPerMembership = 16; // bytes
const double mostPeakPerAsset = 900;     // bytes of resident memory, memberships and all
const double mostExponent = 1.3;         // of the time in the size; caches serve small ones better

// On a memory disk, so that no disk's speed enters.
const char *const workRoot = "/dev/shm/photolib-size-bench";

// What a run tells of itself, besides what is measured from outside.
struct Sizes {
    double parseSeconds;
    double albumSeconds; // to get all of them
    double photoSeconds;
    double heapBytes;
    double memberBytes; // of them in the lists of the albums' members
};

struct Result {
    Sizes sizes;
    double peakBytes;
    double assets;
    double memberships;

    double heapPerAsset() const { return (sizes.heapBytes - sizes.memberBytes) / assets; }
    double heapPerMembership() const { return sizes.memberBytes / memberships; }
    double peakPerAsset() const { return peakBytes / assets; }
};

double membershipsOf(const Library &library)
{
    return double(library.userAlbums) * library.members +
           (library.hasCameraRoll ? library.assets : 0);
}

// Of the processor: what else the machine does must not count.
double processorSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}

bool listAlbums(photo_manager &manager, const Library &library)
{
    const int synthetic = library.hasCameraRoll ? 3 : 4;
    const int ofDevice = library.userAlbums + (library.hasCameraRoll ? 1 : 0);
    double members = 0;
    int place = 0;
    for (const quint64 key : manager.albumIDs()) {
        albumItem album;
        if (!manager.getAlbum(key, &album))
            return false;
        members += manager.m_mapAlbum2Photos.contains(key) ? 0 : album.photoIDs.size();
        ++place;
    }
    return place == synthetic + ofDevice && members == membershipsOf(library);
}

bool listPhotos(photo_manager &manager, const Library &library)
{
    const QList<quint64> keys = manager.photoIDs();
    for (const quint64 key : keys) {
        photoItem photo;
        if (!manager.getPhoto(key, &photo) || photo.id != key)
            return false;
    }
    return keys.size() == library.assets;
}

double memberBytesOf(const CameraDB &model)
{
    double bytes = 0;
    for (const Camera_Album *album : model.albums)
        bytes += double(heapBytesOf(album->assetKeys.d));
    return bytes;
}

bool parseAndList(const std::string &root, const std::string &workFolder, const Library &library,
                  Sizes *sizes)
{
    BenchDevice device(root, workFolder);
    const qint64 heapBefore = memoryUse().heapBytes;
    photo_manager *const manager = new photo_manager(&device);
    double start = processorSeconds();
    if (!manager->parseLib())
        return false;
    sizes->parseSeconds = processorSeconds() - start;
    sizes->heapBytes = double(memoryUse().heapBytes - heapBefore);
    sizes->memberBytes = memberBytesOf(*manager->m_pCameraDB);
    start = processorSeconds();
    if (!listAlbums(*manager, library))
        return false;
    sizes->albumSeconds = processorSeconds() - start;
    start = processorSeconds();
    const bool isListed = listPhotos(*manager, library);
    sizes->photoSeconds = processorSeconds() - start;
    return isListed;
}

// Memory that a run's process shares with this one.
Sizes *sharedSizes()
{
    void *const memory =
        mmap(nullptr, sizeof(Sizes), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        std::perror("bench: no shared memory");
        std::exit(1);
    }
    return static_cast<Sizes *>(memory);
}

Result report(const char *name, const Library &library)
{
    static Sizes *const sizes = sharedSizes();
    const std::string root = std::string(workRoot) + "/device";
    const std::string workFolder = std::string(workRoot) + "/work/";
    std::filesystem::create_directories(workFolder);
    writeLibrary(root, library);
    const Cost cost = measure([&] { return parseAndList(root, workFolder, library, sizes); });
    std::filesystem::remove_all(workRoot);
    const Result result = {*sizes, cost.peakBytes, double(library.assets), membershipsOf(library)};
    std::printf("%9d %7d %11.0f  %-14s %8.2f %8.2f %8.2f %9.0f %10.1f %9.0f %8.0f\n",
                library.assets, library.userAlbums + (library.hasCameraRoll ? 1 : 0),
                result.memberships, name, sizes->parseSeconds, sizes->albumSeconds,
                sizes->photoSeconds, result.heapPerAsset(), result.heapPerMembership(),
                result.peakPerAsset(), result.peakBytes / 1048576);
    std::fflush(stdout);
    return result;
}

bool isWithin(const char *what, double value, double most)
{
    std::printf("%-45s %8.2f, at most %7.2f%s\n", what, value, most,
                value <= most ? "" : "  TOO MUCH");
    return value <= most;
}

double exponent(double small, double large)
{
    const double growth = 10; // of the library
    return std::log(large / small) / std::log(growth);
}

bool isLinear(const Result &small, const Result &large)
{
    bool isFine = isWithin("heap bytes an asset", large.heapPerAsset(), mostHeapPerAsset);
    isFine &= isWithin("heap bytes a membership", large.heapPerMembership(), mostHeapPerMembership);
    isFine &= isWithin("bytes an asset at the peak", large.peakPerAsset(), mostPeakPerAsset);
    isFine &= isWithin("growth exponent of the parse",
                       exponent(small.sizes.parseSeconds, large.sizes.parseSeconds), mostExponent);
    isFine &= isWithin("growth exponent of all albums",
                       exponent(small.sizes.albumSeconds, large.sizes.albumSeconds), mostExponent);
    isFine &= isWithin("growth exponent of all photos",
                       exponent(small.sizes.photoSeconds, large.sizes.photoSeconds), mostExponent);
    return isFine;
}

bool compare(const char *name, const Library &small)
{
    Library large = small;
    large.assets *= 10;
    large.userAlbums *= 10;
    if (small.hasCameraRoll)
        large.userAlbums += 9; // the Camera Roll is one of the albums
    const Result ofSmall = report(name, small);
    return isLinear(ofSmall, report(name, large));
}

} // namespace

int main()
{
    std::filesystem::remove_all(workRoot);
    std::printf("%9s %7s %11s  %-14s %8s %8s %8s %9s %10s %9s %8s\n", "assets", "albums", "members",
                "library", "parse s", "albums s", "photos s", "heap each", "a member", "peak each",
                "peak MiB");
    bool isFine = compare("no camera roll", {100000, false, false, 1000, 500});
    isFine &= compare("camera roll", {100000, true, false, 999, 400});
    return isFine ? 0 : 1;
}
