#include "base/cancel_token.h"
#include "catalog/catalog.h"
#include "catalog_database.h"
#include "measure.h"

#include <sqlite3.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>

namespace {

const int runsEach = 5;

// On a memory disk, so that no disk's speed enters.
const char *const workRoot = "/dev/shm/photolib-catalog-bench";

struct Result {
    Cost floor;
    Cost reading;

    double ratio() const { return reading.seconds / floor.seconds; }
};

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "bench: %s\n", what);
    std::exit(1);
}

// The statements that a reading runs on its tables, as it hands them to SQLite.
class StatementsOfReadings
{
public:
    StatementsOfReadings() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(watch)); }
    ~StatementsOfReadings() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(watch)); }

    StatementsOfReadings(const StatementsOfReadings &) = delete;
    StatementsOfReadings &operator=(const StatementsOfReadings &) = delete;

    static const std::vector<std::string> &all() { return s_all; }

private:
    static int watch(sqlite3 *db, const char **, const sqlite3_api_routines *)
    {
        return sqlite3_trace_v2(db, SQLITE_TRACE_STMT, keep, nullptr);
    }

    static int keep(unsigned, void *, void *, void *sql)
    {
        const std::string text = static_cast<const char *>(sql);
        const std::lock_guard<std::mutex> lock(s_mutex);
        if (text.compare(0, 6, "SELECT") == 0)
            s_all.push_back(text);
        return 0;
    }

    static std::mutex s_mutex; // a reading has several threads
    static std::vector<std::string> s_all;
};

std::mutex StatementsOfReadings::s_mutex;
std::vector<std::string> StatementsOfReadings::s_all;

bool isWhole(const Catalog &catalog, const CatalogSize &size)
{
    return catalog.unread.empty() && catalog.missing.empty() &&
           catalog.assets.size() == static_cast<std::size_t>(size.assets) &&
           catalog.people.size() == static_cast<std::size_t>(size.people);
}

bool read(const std::string &path, const CatalogSize &size)
{
    CancelToken cancel;
    // It lives as long as the process, which ends when it is measured.
    const Catalog *const catalog = new Catalog(readCatalog(QString::fromStdString(path), cancel));
    return isWhole(*catalog, size);
}

// Steps the statements without a look at what they give.
bool step(const std::string &path, const std::vector<std::string> &statements)
{
    sqlite3 *db = nullptr;
    if (sqlite3_open(path.c_str(), &db) != SQLITE_OK)
        return false;
    for (const std::string &sql : statements) {
        sqlite3_stmt *stmt = nullptr;
        if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK)
            return false;
        while (sqlite3_step(stmt) == SQLITE_ROW) {
        }
        if (sqlite3_finalize(stmt) != SQLITE_OK)
            return false;
    }
    return sqlite3_close(db) == SQLITE_OK;
}

std::vector<std::string> statementsOf(const std::string &path, const CatalogSize &size)
{
    const StatementsOfReadings statements;
    if (!read(path, size))
        fail("the catalog is not whole");
    return StatementsOfReadings::all();
}

// Both take turns, so that a slow moment of the machine hits both.
Result measureReading(const CatalogSize &size, const std::vector<std::string> &statements)
{
    std::filesystem::remove_all(workRoot);
    std::filesystem::create_directories(workRoot);
    const std::string path = std::string(workRoot) + "/Photos.sqlite";
    writeCatalogDatabase(path, size);
    std::vector<Cost> floors, readings;
    for (int run = 0; run < runsEach; ++run) {
        floors.push_back(measure([&] { return step(path, statements); }));
        readings.push_back(measure([&] { return read(path, size); }));
    }
    std::filesystem::remove_all(workRoot);
    return {median(floors), median(readings)};
}

Result report(const CatalogSize &size, const std::vector<std::string> &statements)
{
    const Result result = measureReading(size, statements);
    std::printf("%9d %9d %8d %9.3f %9.3f %7.2f %10.0f\n", size.assets, size.keywords, size.people,
                result.floor.seconds, result.reading.seconds, result.ratio(),
                result.reading.peakBytes / size.assets);
    std::fflush(stdout);
    return result;
}

// From a small library of the same tables.
std::vector<std::string> statements()
{
    const CatalogSize size = {1000, 100, 50};
    std::filesystem::remove_all(workRoot);
    std::filesystem::create_directories(workRoot);
    const std::string path = std::string(workRoot) + "/Photos.sqlite";
    writeCatalogDatabase(path, size);
    return statementsOf(path, size);
}

} // namespace

int main()
{
    const CatalogSize few = {10000, 1000, 500}, many = {100000, 10000, 5000},
                      most = {1000000, 100000, 50000};
    const std::vector<std::string> steps = statements();
    std::printf("medians of %d runs, reading of catalogs against stepping its %zu statements\n",
                runsEach, steps.size());
    std::printf("%9s %9s %8s %9s %9s %7s %10s\n", "assets", "keywords", "people", "floor s",
                "read s", "ratio", "bytes each");
    const Result small = report(few, steps);
    report(many, steps);
    const Result large = report(most, steps);
    std::printf("growth exponent from %d to %d assets: %.3f\n", few.assets, most.assets,
                std::log(large.reading.seconds / small.reading.seconds) /
                    std::log(double(most.assets) / few.assets));
    return 0;
}
