// How long an export takes against copying the same files by cp, and one that finds nothing to do.
// With a number, of as many photos.

#include "base/cancel_token.h"
#include "catalog/catalog.h"
#include "catalog_database.h"
#include "opened_files.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

const int usualPhotos = 2000;
const std::size_t photoBytes = 2 << 20;
const int runsEach = 3;
const double mostAgainstCp = 1.25;
const double mostSecondsPerThousand = 0.1;

const std::string workRoot = PHOTOLIB_BENCH_FOLDER "/export-bench";
const std::string device = workRoot + "/device";
const std::string exported = workRoot + "/exported";
const std::string copied = workRoot + "/copied";
const std::string messages = workRoot + "/messages";

[[noreturn]] void fail(const std::string &what)
{
    std::fprintf(stderr, "bench: %s\n", what.c_str());
    std::exit(1);
}

// A photo that is in the trash would not be exported, but copied.
void keepAllOutOfTheTrash(const std::string &database)
{
    sqlite3 *db = nullptr;
    const std::string sql = "UPDATE ZASSET SET ZTRASHEDSTATE = 0, ZTRASHEDDATE = NULL;"
                            "UPDATE ZADDITIONALASSETATTRIBUTES SET ZORIGINALFILESIZE = " +
                            std::to_string(photoBytes);
    if (sqlite3_open(database.c_str(), &db) != SQLITE_OK ||
        sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail("the library cannot be written");
    sqlite3_close(db);
}

std::vector<std::string> writeLibrary(int photos)
{
    const std::string database = device + "/PhotoData/Photos.sqlite";
    fs::create_directories(device + "/PhotoData");
    CatalogSize size;
    size.assets = photos;
    size.keywords = photos / 10 + 1;
    size.people = photos / 20 + 1;
    writeCatalogDatabase(database, size);
    keepAllOutOfTheTrash(database);
    CancelToken cancel;
    std::vector<std::string> paths;
    for (const Asset &asset : readCatalog(QString::fromStdString(database), cancel).assets)
        paths.push_back(device + '/' + asset.path().toStdString());
    if (paths.size() != std::size_t(photos))
        fail("the library is not whole");
    return paths;
}

void writePhotos(const std::vector<std::string> &paths)
{
    std::mt19937_64 random;
    std::vector<std::mt19937_64::result_type> bytes(photoBytes / sizeof(random()));
    for (const std::string &path : paths) {
        std::generate(bytes.begin(), bytes.end(), [&random] { return random(); });
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream file(path, std::ios::binary);
        file.write(reinterpret_cast<const char *>(bytes.data()), std::streamsize(photoBytes));
        if (!file.flush())
            fail(path + ": cannot be written");
    }
}

std::vector<std::string> foldersOf(const std::vector<std::string> &paths)
{
    std::set<std::string> folders;
    for (const std::string &path : paths)
        folders.insert(fs::path(path).parent_path().string());
    return {folders.begin(), folders.end()};
}

// In a process of its own: the command with its output in a file.
[[noreturn]] void become(const std::vector<std::string> &command)
{
    std::vector<char *> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    const int output = open(messages.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

void writeToDisk()
{
    const int fd = open(workRoot.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 || syncfs(fd) != 0)
        fail("the disk cannot be waited for");
    close(fd);
}

struct Times {
    double command = 1e9; // seconds
    double onDisk = 1e9;  // until all of it is on the disk
};

Times timesOf(const std::vector<std::string> &command)
{
    typedef std::chrono::steady_clock clock;
    const auto seconds = [](clock::duration time) {
        return std::chrono::duration<double>(time).count();
    };
    writeToDisk();
    const clock::time_point start = clock::now();
    const pid_t child = fork();
    if (child == 0)
        become(command);
    int status = 0;
    if (waitpid(child, &status, 0) != child || status != 0) {
        std::ifstream text(messages);
        fail(command[0] + " " + command[1] + ": " +
             std::string(std::istreambuf_iterator<char>(text), {}));
    }
    Times times;
    times.command = seconds(clock::now() - start);
    writeToDisk();
    times.onDisk = seconds(clock::now() - start);
    return times;
}

void keepBest(Times *best, const Times &times)
{
    best->command = std::min(best->command, times.command);
    best->onDisk = std::min(best->onDisk, times.onDisk);
}

int fileCount(const std::string &folder)
{
    int count = 0;
    for (const auto &entry : fs::recursive_directory_iterator(folder))
        count += entry.is_regular_file() && entry.file_size() == photoBytes ? 1 : 0;
    return count;
}

Times copyByCp(int photos)
{
    fs::remove_all(copied);
    const Times times = timesOf({"cp", "-a", device, copied});
    if (fileCount(copied) != photos)
        fail("cp did not copy all");
    fs::remove_all(copied);
    return times;
}

Times runExport()
{
    return timesOf({PHOTOLIB_PROGRAM, "export", exported, "-d", device});
}

// The last one is left for the exports that find nothing to do.
Times copyByExport(int photos, OpenedFiles *opened)
{
    fs::remove_all(exported);
    opened->count();
    const Times times = runExport();
    if (opened->count() < photos)
        fail("the openings of photos are not all counted");
    if (fileCount(exported) != photos)
        fail("the export did not copy all");
    return times;
}

bool isWithin(const char *what, double value, double most)
{
    std::printf("%s: %.3f, at most %.3f%s\n", what, value, most, value > most ? ": MISSED" : "");
    return value <= most;
}

// Both take turns, so that a slow moment of the machine hits both.
bool compareCopies(int photos, OpenedFiles *opened)
{
    Times cp, program;
    for (int run = 0; run < runsEach; ++run) {
        keepBest(&cp, copyByCp(photos));
        keepBest(&program, copyByExport(photos, opened));
    }
    std::printf("%-16s %9s %9s %9s\n", "", "s", "on disk s", "MiB/s");
    const double mebibytes = double(photos) * photoBytes / (1 << 20);
    for (const auto &[name, times] : {std::make_pair("cp -a", cp), {"photolib export", program}})
        std::printf("%-16s %9.3f %9.3f %9.0f\n", name, times.command, times.onDisk,
                    mebibytes / times.command);
    std::printf("until all is on the disk: %.3f times\n", program.onDisk / cp.onDisk);
    return isWithin("export against cp -a", program.command / cp.command, mostAgainstCp);
}

bool repeatExport(int photos, OpenedFiles *opened)
{
    Times again, opening;
    opened->count();
    for (int run = 0; run < runsEach; ++run) {
        keepBest(&again, runExport());
        keepBest(&opening, timesOf({PHOTOLIB_PROGRAM, "albums", "-d", device}));
    }
    const int photosOpened = opened->count();
    if (fileCount(exported) != photos)
        fail("the export copied something again");
    std::printf("\nphotolib export again: %.3f s; opening the library alone: %.3f s\n",
                again.command, opening.command);
    const bool isQuick = isWithin("seconds for 1,000 files that are exported already",
                                  again.command * 1000 / photos, mostSecondsPerThousand);
    return isWithin("photos opened", photosOpened, 0) && isQuick;
}

} // namespace

int main(int argc, char **argv)
{
    const int photos = argc > 1 ? std::atoi(argv[1]) : usualPhotos;
    fs::remove_all(workRoot);
    fs::create_directories(workRoot);
    setenv("XDG_CACHE_HOME", (workRoot + "/cache").c_str(), 1);
    const std::vector<std::string> paths = writeLibrary(photos);
    writePhotos(paths);
    OpenedFiles opened(foldersOf(paths));
    std::printf("best of %d runs, %d photos of %zu bytes\n", runsEach, photos, photoBytes);
    std::fflush(stdout);
    const bool isCopiedQuickly = compareCopies(photos, &opened);
    const bool isRepeatedQuickly = repeatExport(photos, &opened);
    fs::remove_all(workRoot);
    return isCopiedQuickly && isRepeatedQuickly ? 0 : 1;
}
