// Readings on several threads, and such as are given up from another one.

#include "support/catalog_fixture.h"
#include "support/threads.h"

#include "base/error.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

namespace {

LibraryTablesWriter someLibrary()
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    for (int id = 1; id <= 200; ++id) {
        writer.addPhoto(id);
        writer.addAttributes(id, id, {{"ZTITLE", "Title " + std::to_string(id)}});
        writer.addKeyword(id, "Keyword " + std::to_string(id));
        writer.addKeywordOf(id, id);
        writer.addPerson(id, "Person " + std::to_string(id));
        writer.addFace(id, id);
        writer.addAlbum(id);
        writer.addMember(id, id, id);
    }
    return writer;
}

// Holds the statements that read certain tables until all of these have started, and then until
// they may go on.
class HeldStatements
{
public:
    explicit HeldStatements(const std::set<std::string> &tables) : m_awaited(tables)
    {
        s_current = this;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(watch));
    }

    ~HeldStatements()
    {
        sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(watch));
        s_current = nullptr;
    }

    HeldStatements(const HeldStatements &) = delete;
    HeldStatements &operator=(const HeldStatements &) = delete;

    // False when they never do.
    bool waitForAll()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::minutes(1),
                                  [this] { return areAllStarted(); });
    }

    void letGoOn()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_mayGoOn = true;
        m_changed.notify_all();
    }

    // All tables that statements have read from.
    std::set<std::string> started()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_started;
    }

private:
    static int watch(sqlite3 *db, const char **, const sqlite3_api_routines *)
    {
        return sqlite3_trace_v2(db, SQLITE_TRACE_STMT, begin, nullptr);
    }

    static int begin(unsigned, void *, void *, void *sql)
    {
        const std::string text = static_cast<const char *>(sql);
        const std::size_t from = text.find("FROM Z");
        if (from != std::string::npos)
            s_current->hold(text.substr(from + 5, text.find(' ', from + 5) - from - 5));
        return 0;
    }

    void hold(const std::string &table)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_started.insert(table);
        m_changed.notify_all();
        if (m_awaited.count(table))
            m_changed.wait(lock, [this] { return m_mayGoOn; });
    }

    bool areAllStarted() const
    {
        return std::includes(m_started.begin(), m_started.end(), m_awaited.begin(),
                             m_awaited.end());
    }

    static HeldStatements *s_current;
    const std::set<std::string> m_awaited;
    std::mutex m_mutex; // guards what follows
    std::condition_variable m_changed;
    std::set<std::string> m_started;
    bool m_mayGoOn = false;
};

HeldStatements *HeldStatements::s_current = nullptr;

std::vector<FieldTexts> fieldsOf(const std::vector<Asset> &assets)
{
    std::vector<FieldTexts> fields;
    for (const Asset &asset : assets)
        fields.push_back(fieldsOf(asset));
    return fields;
}

class ReadingThreads : public CatalogFixture
{
protected:
    Error::Kind failure(const LibraryTablesWriter &writer)
    {
        try {
            catalogOf(writer);
        } catch (const Error &error) {
            return error.kind();
        }
        return Error::Failed;
    }
};

TEST_F(ReadingThreads, AllEndWhenAnotherOneCancels)
{
    const std::set<std::string> tables = {"ZASSET", "ZADDITIONALASSETATTRIBUTES"};
    HeldStatements statements(tables);
    std::thread canceller([&] {
        EXPECT_TRUE(statements.waitForAll());
        m_cancel.cancel();
        statements.letGoOn();
    });
    EXPECT_EQ(Error::Cancelled, failure(someLibrary()));
    canceller.join();
    std::set<std::string> all = tables;
    all.insert("Z_PRIMARYKEY");
    EXPECT_EQ(all, statements.started());
}

TEST_F(ReadingThreads, OfOneDatabaseAtATimeReadTheSame)
{
    const Catalog expected = catalogOf(someLibrary());
    EXPECT_EQ(200U, expected.assets.size());
    const QString path = QString::fromUtf8(m_scratch.path("Photos.sqlite"));
    std::vector<Catalog> catalogs(4);
    runOnThreads(4, [&](int number) {
        CancelToken cancel;
        catalogs[static_cast<std::size_t>(number)] = readCatalog(path, cancel);
    });
    for (const Catalog &catalog : catalogs) {
        EXPECT_EQ(fieldsOf(expected.assets), fieldsOf(catalog.assets));
        EXPECT_EQ(unread(expected), unread(catalog));
        EXPECT_EQ(missing(expected), missing(catalog));
    }
}

} // namespace
