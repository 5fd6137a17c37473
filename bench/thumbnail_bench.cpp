#include "bench_host.h"
#include "host/device_files.h"
#include "thumbnail_files.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <unistd.h>

// How long the conversion of packed thumbnails takes, against copying as many bytes.

namespace {

typedef std::vector<unsigned char> Bytes;

const int rounds = 101;
const int pictures = 200;
const std::size_t hotBytes = 4 << 20; // moved in a round with one picture

// On a memory disk, so that no disk's speed enters.
const char *const deviceRoot = "/dev/shm/photolib-thumbnail-bench";

double secondsOf(const std::function<void()> &work)
{
    typedef std::chrono::steady_clock clock;
    const clock::time_point start = clock::now();
    work();
    return std::chrono::duration<double>(clock::now() - start).count();
}

// The times of some works, in the same turn each: what is compared are the times of one
// turn, so that a slow moment of the machine hits all of them.
typedef std::vector<double> Turn;

std::vector<Turn> takeTurns(const std::vector<std::function<void()>> &works)
{
    std::vector<Turn> turns;
    for (int round = 0; round <= rounds; ++round) {
        Turn turn;
        for (const std::function<void()> &work : works)
            turn.push_back(secondsOf(work));
        if (round > 0) // the first one touches the memory for the first time
            turns.push_back(turn);
    }
    return turns;
}

double medianOf(const std::vector<Turn> &turns, const std::function<double(const Turn &)> &value)
{
    std::vector<double> values;
    values.reserve(turns.size());
    for (const Turn &turn : turns)
        values.push_back(value(turn));
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The records and results of some pictures. The floor copies half of the bytes that the
// conversion reads and writes: a copy moves each of them twice.
class PictureSet
{
public:
    PictureSet(const ThumbnailFormat &format, int count)
        : m_format(format), m_manager(nullptr),
          m_copied((static_cast<std::size_t>(format.type.dataSize) + format.imageBytes()) / 2),
          m_results(static_cast<std::size_t>(count), Bytes(format.imageBytes())),
          m_copies(static_cast<std::size_t>(count), Bytes(2 * m_copied))
    {
        for (int i = 0; i < count; ++i)
            m_records.push_back(makeRecord(format, static_cast<unsigned>(i)));
    }

    void convertAll()
    {
        for (std::size_t i = 0; i < m_records.size(); ++i) {
            PhotoThumb thumb;
            thumb.data = m_records[i].data();
            std::memcpy(thumb.info, m_records[i].data() + m_format.type.dataSize,
                        sizeof thumb.info);
            m_manager.convertThmb2BMP(&thumb, &m_format.type, m_results[i].data());
        }
    }

    void copyAll()
    {
        for (Bytes &bytes : m_copies)
            std::memcpy(bytes.data() + m_copied, bytes.data(), m_copied);
    }

    std::size_t copiedBytes() const { return m_copied * m_records.size(); }

private:
    ThumbnailFormat m_format;
    photo_manager m_manager;
    std::size_t m_copied;
    std::vector<Bytes> m_records, m_results, m_copies;
};

// Relative to the speed of copying.
double conversionSpeed(const ThumbnailFormat &format, int count, std::size_t leastBytes)
{
    PictureSet set(format, count);
    const std::size_t repeats = leastBytes / set.copiedBytes() + 1;
    const auto repeated = [repeats](const std::function<void()> &work) {
        return [repeats, work] {
            for (std::size_t i = 0; i < repeats; ++i)
                work();
        };
    };
    const std::vector<Turn> turns =
        takeTurns({repeated([&] { set.copyAll(); }), repeated([&] { set.convertAll(); })});
    return medianOf(turns, [](const Turn &turn) { return turn[0] / turn[1]; });
}

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "bench: %s\n", what);
    std::exit(1);
}

// A library of photos whose thumbnail indexes count up from 0.
class ThumbnailDevice
{
public:
    explicit ThumbnailDevice(const ThumbnailFormat &format)
        : m_device(deviceRoot, std::string()), m_manager(&m_device)
    {
        writeThumbnails(deviceRoot, format, pictures);
        m_manager.m_pVDev = vDevOpen(VDevDevice, deviceRoot);
        m_manager.m_pCameraDB = new CameraDB();
        for (int i = 0; i < pictures; ++i)
            m_manager.m_pCameraDB->assets.insert(quint64(i), photo(i));
    }

    ~ThumbnailDevice() { std::filesystem::remove_all(deviceRoot); }

    void request(quint64 id, std::size_t resultBytes)
    {
        QByteArray result;
        if (m_manager.getPhotoThumbnail(id, result) != 0 ||
            static_cast<std::size_t>(result.size()) != resultBytes)
            fail("a thumbnail is missing");
    }

    // What a request asks the file layer for before it comes to the packed file.
    void lookForReadyPicture()
    {
        const char *const names[] = {"5005.JPG", "5003.JPG", "3507.JPG", "3505.JPG"};
        const std::string folder = "/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/";
        for (const char *name : names) {
            if (vFileOpen(m_manager.m_pVDev, (folder + name).c_str(), 0))
                fail("a thumbnail that should not be there");
        }
    }

private:
    static Camera_Data *photo(int index)
    {
        Camera_Data *asset = new Camera_Data();
        asset->thumbnailIndex = index;
        asset->directory = QString::fromLatin1("DCIM/100APPLE");
        asset->fileName = QString::fromLatin1("IMG_0001.JPG");
        return asset;
    }

    BenchDevice m_device;
    photo_manager m_manager;
};

// The least that a request can take: one read of the record and a copy of the result.
class RequestFloor
{
public:
    explicit RequestFloor(const ThumbnailFormat &format)
        : m_file(open((std::string(deviceRoot) + "/PhotoData/Thumbnails/" + format.file).c_str(),
                      O_RDONLY)),
          m_record(format.recordBytes()), m_result(format.resultBytes(), 1),
          m_copy(format.resultBytes())
    {
    }
    ~RequestFloor() { close(m_file); }
    RequestFloor(const RequestFloor &) = delete;
    RequestFloor &operator=(const RequestFloor &) = delete;

    void readAndCopy(int index)
    {
        const off_t offset = off_t(m_record.size()) * index;
        if (pread(m_file, m_record.data(), m_record.size(), offset) != ssize_t(m_record.size()))
            fail("a record is missing");
        std::memcpy(m_copy.data(), m_result.data(), m_result.size());
    }

private:
    const int m_file;
    Bytes m_record, m_result, m_copy;
};

struct RequestCost {
    double floor;          // microseconds
    double lookUps;        // microseconds
    double request;        // microseconds
    double ratio;          // of the request to the floor
    double withoutLookUps; // of what the request takes beside the look-ups to the floor
};

RequestCost requestCost(const ThumbnailFormat &format)
{
    ThumbnailDevice device(format);
    RequestFloor floor(format);
    const auto forEach = [](const std::function<void(int)> &work) {
        return [work] {
            for (int i = 0; i < pictures; ++i)
                work(i);
        };
    };
    const std::vector<Turn> turns =
        takeTurns({forEach([&](int i) { floor.readAndCopy(i); }), forEach([&](int i) {
                       // One after the other, for reading drives the look-ups out of the cache.
                       device.lookForReadyPicture();
                       floor.readAndCopy(i);
                   }),
                   forEach([&](int i) { device.request(quint64(i), format.resultBytes()); })});
    const auto each = [&turns](const std::function<double(const Turn &)> &value) {
        return medianOf(turns, value) / pictures * 1e6;
    };
    return {each([](const Turn &turn) { return turn[0]; }),
            each([](const Turn &turn) { return turn[1] - turn[0]; }),
            each([](const Turn &turn) { return turn[2]; }),
            medianOf(turns, [](const Turn &turn) { return turn[2] / turn[0]; }),
            medianOf(turns, [](const Turn &turn) { return 1 + (turn[2] - turn[1]) / turn[0]; })};
}

void reportFormat(const ThumbnailFormat &format)
{
    const double hot = conversionSpeed(format, 1, hotBytes);
    const double inTurn = conversionSpeed(format, pictures, 0);
    const RequestCost cost = requestCost(format);
    std::printf("%-14s %6.2f %8.2f %9.1f %9.1f %9.1f %7.2f %9.2f\n", format.file, hot, inTurn,
                cost.floor, cost.lookUps, cost.request, cost.ratio, cost.withoutLookUps);
    std::fflush(stdout);
}

} // namespace

int main()
{
    std::filesystem::remove_all(deviceRoot);
    std::printf("medians of %d rounds; times in microseconds\n"
                "hot, in turn: speed of the conversion against that of a memcpy which reads and\n"
                "  writes as many bytes, for one picture and for %d in turn\n"
                "floor: one read of a record and a memcpy of its result\n"
                "look-ups: of the ready pictures that a request opens first, here without success\n"
                "ratio: of a request to the floor, with and without the look-ups\n",
                rounds, pictures);
    std::printf("%-14s %6s %8s %9s %9s %9s %7s %9s\n", "format", "hot", "in turn", "floor",
                "look-ups", "request", "ratio", "(without)");
    for (const ThumbnailFormat &format : thumbnailFormats())
        reportFormat(format);
    return 0;
}
