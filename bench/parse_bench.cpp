#include "bench_database.h"
#include "bench_host.h"
#include "ios/photo_manager.h"
#include "measure.h"
#include "parse_floor.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace {

const int runsEach = 5;

struct Result {
    Cost floor;
    Cost parse;

    double ratio() const { return parse.seconds / floor.seconds; }
};

// On a memory disk, so that no disk's speed enters.
const char *const workRoot = "/dev/shm/photolib-bench";

bool parseLibrary(const std::string &root, const std::string &workFolder, int assets)
{
    BenchDevice device(root, workFolder);
    photo_manager *manager = new photo_manager(&device);
    return manager->parseLib() && manager->photoCnt() == assets;
}

// Floor and parse take turns, so that a slow moment of the machine hits both.
Result measureLibrary(const Library &library)
{
    const std::string root = std::string(workRoot) + "/device";
    const std::string workFolder = std::string(workRoot) + "/work/";
    std::filesystem::create_directories(workFolder);
    writeLibrary(root, library);
    std::vector<Cost> floors, parses;
    for (int run = 0; run < runsEach; ++run) {
        floors.push_back(measure([&] {
            return parseFloor(root, workFolder, library.isZasset) ==
                   static_cast<std::size_t>(library.assets);
        }));
        parses.push_back(measure([&] { return parseLibrary(root, workFolder, library.assets); }));
    }
    std::filesystem::remove_all(workRoot);
    return {median(floors), median(parses)};
}

Result report(const char *name, const Library &library)
{
    const Result result = measureLibrary(library);
    std::printf("%9d  %-22s %9.3f %9.3f %7.2f %10.0f\n", library.assets, name, result.floor.seconds,
                result.parse.seconds, result.ratio(), result.parse.peakBytes / library.assets);
    std::fflush(stdout);
    return result;
}

double exponent(const Result &small, int smallAssets, const Result &large, int largeAssets)
{
    return std::log(large.parse.seconds / small.parse.seconds) /
           std::log(double(largeAssets) / smallAssets);
}

} // namespace

int main()
{
    const int few = 10000, many = 100000, most = 1000000;
    std::filesystem::remove_all(workRoot);
    std::printf("medians of %d runs\n", runsEach);
    std::printf("%9s  %-22s %9s %9s %7s %10s\n", "assets", "library", "floor s", "parse s", "ratio",
                "bytes each");
    const Result small = report("camera roll", {few, true, false});
    const Result distinct = report("camera roll", {many, true, false});
    report("no camera roll", {many, false, false});
    Library zasset = {many, true, false};
    zasset.isZasset = true;
    report("camera roll, ZASSET", zasset);
    const Result oneDate = report("one date for all", {many, true, true});
    const Result large = report("camera roll", {most, true, false});
    report("no camera roll", {most, false, false});
    std::printf("growth exponent from %d to %d assets: %.3f\n", few, most,
                exponent(small, few, large, most));
    std::printf("one date against distinct dates: %.2f\n",
                oneDate.parse.seconds / distinct.parse.seconds);
    return 0;
}
