#ifndef PHOTOLIB_TESTS_SUPPORT_FAULT_SWEEP_H
#define PHOTOLIB_TESTS_SUPPORT_FAULT_SWEEP_H

#include "boundary/photolib.h"
#include "classic/reference_ipod_manager.h"
#include "ios/reference_manager.h"
#include "support/expected_leak.h"
#include "support/library_story.h"
#include "support/live_heap.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

/// Tells the story of a library again and again, with other calls of the host going wrong
/// each time, and compares what comes of it with what comes of the reference managers: all
/// answers, calls, log lines, open handles and the memory that stays. Then a new library
/// has to read the healthy device.
class FaultSweep : public testing::Test
{
protected:
    /// The faults of one story.
    struct Faults {
        std::string name;
        std::function<std::optional<CallFault>(const CountedCall &)> plan;
        /// Bytes that the device did not give are read as if it had, so that nobody can say
        /// what becomes of them.
        bool isUnforeseeable = false;
    };

    /// How a library ends.
    enum class End { Deleted, Released };

    explicit FaultSweep(story::Questions asked) : questions(std::move(asked))
    {
        qputenv("TMPDIR", (root.path() + "/temporary").toUtf8());
    }
    ~FaultSweep() override
    {
        if (m_temporary.isNull())
            qunsetenv("TMPDIR");
        else
            qputenv("TMPDIR", m_temporary);
    }

    void SetUp() override
    {
        healthy = tell({});
        calls = healthy.calls;
    }

    void TearDown() override
    {
        std::printf("faults injected: %d, in %d stories\n", injected, stories);
        RecordProperty("faults", injected);
        RecordProperty("stories", stories);
    }

    /// Makes the device of a story; what it returns lives as long as the host.
    virtual std::shared_ptr<void> install(FakeHost &host, FakeIPod &device) = 0;

    /// What the host does after its edits, while calls still go wrong.
    virtual void goOn(story::Host &person, photo_manager_int *library);

    /// Parses once more with the same library, where that is allowed, and tells what it
    /// lists then. The host is well again.
    virtual std::string parseAgain(story::Host &person, photo_manager_int *library,
                                   bool parsed) = 0;

    /// The healthy story's `place`-th call goes wrong, counted from 0.
    Faults single(std::size_t place, const CallFault &fault) const
    {
        const int number = static_cast<int>(place) + 1;
        return {calls[place] + " instead " + testing::PrintToString(fault),
                [number, fault](const CountedCall &call) {
                    return call.number == number ? std::make_optional(fault) : std::nullopt;
                }};
    }

    story::Outcome tell(const Faults &faults) { return tell(faults, End::Deleted, true); }

    /// Tells the story with the faults and compares it with the reference's.
    void sweep(const Faults &faults, End end = End::Deleted)
    {
        const testing::ScopedTrace trace(__FILE__, __LINE__, faults.name);
        const story::Outcome expected = tellReference(faults, end);
        const bool leavesRecords = expected.recordBytes != 0 || faults.isUnforeseeable;
        const int before = injected;
        const story::Outcome outcome = tell(faults, end, leavesRecords);
        EXPECT_GT(injected, before) << "the fault never came";
        ++stories;
        EXPECT_TRUE(outcome.keptAnswers);
        EXPECT_EQ(outcome.newList, wholeList());
        if (faults.isUnforeseeable)
            return;
        EXPECT_EQ(outcome.secondList, expected.secondList);
        expectSame(outcome, expected);
        if (end == End::Deleted)
            expectNoLeak(faults, outcome, expected);
    }

    /// Sweeps what happens when all calls that `isLost` names fail from some call on, for
    /// every call, or every one of `operation`, that can fail.
    void sweepLosses(const std::function<bool(const CountedCall &)> &isLost,
                     const std::string &operation = std::string())
    {
        forEachCall(operation, [&](std::size_t place) {
            const int first = static_cast<int>(place) + 1;
            sweep({"lost from " + calls[place], [first, isLost](const CountedCall &call) {
                       const bool isGone = call.number >= first && isLost(call);
                       return isGone ? std::make_optional(story::refusal(call.operation))
                                     : std::nullopt;
                   }});
        });
    }

    /// Sweeps two failing calls in a row.
    void sweepPairs()
    {
        forEachCall("", [&](std::size_t place) {
            const int first = static_cast<int>(place) + 1;
            sweep({"two from " + calls[place], [first](const CountedCall &call) {
                       const bool fails = call.number == first || call.number == first + 1;
                       return fails ? std::make_optional(story::refusal(call.operation))
                                    : std::nullopt;
                   }});
        });
    }

    /// Sweeps failing calls of `operation` in a story that ends with a release.
    void sweepReleases(const std::string &operation)
    {
        forEachCall(operation, [&](std::size_t place) {
            sweep(single(place, story::refusal(operation)), End::Released);
        });
    }

    /// The operations of the healthy story that can fail.
    std::set<std::string> failingOperations() const
    {
        std::set<std::string> failing;
        for (const std::string &call : calls) {
            if (!story::waysToFail(call).empty())
                failing.insert(story::operationOf(call));
        }
        return failing;
    }

    /// Whether `Outcome::heapLeft` is exact: without a sanitizer, blocks count that the C
    /// library keeps for later.
    static bool countsExactly() { return __sanitizer_get_current_allocated_bytes != nullptr; }

    /// What every new library of the healthy device has to list.
    std::string wholeList() const
    {
        return "photos -> " + std::to_string(questions.listed.size()) + ' ' +
               story::keys(questions.listed);
    }

    const story::Questions questions;
    QTemporaryDir root;
    story::Outcome healthy;
    story::Lines calls; ///< of the healthy story, in the order in which the host counts them
    int injected = 0;
    int stories = 0;

private:
    using Maker = photo_manager_int *(*)(IIPod *);

    static photo_manager_int *makeReference(IIPod *device)
    {
        if (device->isIOSDevice())
            return new ReferenceManager(device);
        return new ReferenceIPodManager(device);
    }

    // Until one fails: the others would mostly say the same.
    void forEachCall(const std::string &operation, const std::function<void(std::size_t)> &body)
    {
        for (std::size_t i = 0; i < calls.size() && !HasFailure(); ++i) {
            const bool isAsked = operation.empty() || story::operationOf(calls[i]) == operation;
            if (isAsked && !story::waysToFail(calls[i]).empty())
                body(i);
        }
    }

    static void expectSame(const char *what, const story::Lines &actual,
                           const story::Lines &expected)
    {
        const std::size_t shorter = std::min(actual.size(), expected.size());
        for (std::size_t i = 0; i < shorter; ++i)
            ASSERT_EQ(actual[i], expected[i]) << what << ", line " << i;
        ASSERT_EQ(actual.size(), expected.size()) << what;
    }

    static void expectSame(const story::Outcome &outcome, const story::Outcome &expected)
    {
        expectSame("answers", outcome.answers, expected.answers);
        expectSame("calls", outcome.trace, expected.trace);
        expectSame("log", outcome.log, expected.log);
        EXPECT_EQ(outcome.handles, expected.handles);
    }

    // What is made once in a process is no leak of a story, so only what stays behind once
    // more counts.
    void expectNoLeak(const Faults &faults, const story::Outcome &outcome,
                      const story::Outcome &expected)
    {
        if (!countsExactly() || outcome.heapLeft == byContract(expected))
            return;
        const int before = injected;
        const story::Outcome again = tellReference(faults, End::Deleted);
        EXPECT_EQ(tell(faults, End::Deleted, again.recordBytes != 0).heapLeft, byContract(again));
        injected = before;
    }

    // The reference frees the records of a failed parse, which the plug-in leaves.
    static qint64 byContract(const story::Outcome &expected)
    {
        return expected.heapLeft + static_cast<qint64>(expected.recordBytes);
    }

    // `leavesRecords`: a failed parse leaves the records that it had read to nobody.
    story::Outcome tell(const Faults &faults, End end, bool leavesRecords)
    {
        return measured(getPhotolib, faults, end, leavesRecords);
    }

    story::Outcome tellReference(const Faults &faults, End end)
    {
        return measured(makeReference, faults, end, true);
    }

    story::Outcome measured(Maker make, const Faults &faults, End end, bool leavesRecords)
    {
        clearFolders();
        const std::size_t before = liveHeapBytes();
        auto told = std::make_unique<story::Outcome>(tellInside(make, faults, end, leavesRecords));
        // Copies fit closely, so that another one is as large.
        const auto outcome = std::make_unique<story::Outcome>(*told);
        told.reset();
        const std::size_t withOutcome = liveHeapBytes();
        const auto another = std::make_unique<story::Outcome>(*outcome);
        const std::size_t outcomeBytes = liveHeapBytes() - withOutcome;
        outcome->heapLeft =
            static_cast<qint64>(withOutcome) - static_cast<qint64>(outcomeBytes + before);
        return *outcome;
    }

    void clearFolders()
    {
        for (const char *name : {"/copies", "/temporary"})
            QDir(root.path() + name).removeRecursively();
        QDir(root.path()).mkdir("temporary");
    }

    story::Outcome tellInside(Maker make, const Faults &faults, End end, bool leavesRecords)
    {
        FakeHost host(FakeHost::Disk::Real);
        FakeIPod device;
        const std::shared_ptr<void> kept = install(host, device);
        if (faults.plan) {
            host.planFaults([&](const CountedCall &call) {
                const std::optional<CallFault> fault = faults.plan(call);
                injected += fault && make == getPhotolib ? 1 : 0;
                return fault;
            });
        }
        std::optional<ExpectedLeak> storageOnly;
        if (end == End::Released)
            storageOnly.emplace(); // a release frees nothing but the object's storage
        photo_manager_int *library = make(&device);
        story::Outcome outcome = ask(host, library, leavesRecords);
        finish(host, library, end);
        outcome.trace = host.trace();
        outcome.handles = host.openHandles();
        for (const LogLine &line : host.log())
            outcome.log.push_back(testing::PrintToString(line));
        outcome.newList = listWithANewOne(device);
        return outcome;
    }

    story::Outcome ask(FakeHost &host, photo_manager_int *library, bool leavesRecords)
    {
        story::Outcome outcome;
        story::Host person(library, questions);
        {
            std::optional<ExpectedLeak> records;
            if (leavesRecords)
                records.emplace();
            outcome.parsed = person.parse();
        }
        person.list();
        person.look();
        person.edit();
        goOn(person, library);
        host.planFaults({});
        outcome.calls = host.calls();
        outcome.secondList = parseAgain(person, library, outcome.parsed);
        outcome.answers = person.answers();
        outcome.keptAnswers = person.keptAnswers();
        if (const auto *reference = dynamic_cast<ReferenceManager *>(library))
            outcome.recordBytes = reference->recordBytes;
        return outcome;
    }

    static void finish(FakeHost &host, photo_manager_int *library, End end)
    {
        if (end == End::Deleted) {
            delete library;
            return;
        }
        const story::Lines before = host.trace();
        releasePhotolib(&library);
        EXPECT_EQ(library, nullptr);
        EXPECT_EQ(host.trace(), before);
    }

    static std::string listWithANewOne(FakeIPod &device)
    {
        const std::unique_ptr<photo_manager_int> library(getPhotolib(&device));
        EXPECT_TRUE(library->parseLib());
        return "photos -> " + std::to_string(library->photoCnt()) + ' ' +
               story::keys(library->photoIDs());
    }

    const QByteArray m_temporary = qgetenv("TMPDIR");
};

inline void FaultSweep::goOn(story::Host &, photo_manager_int *) {}

#endif // PHOTOLIB_TESTS_SUPPORT_FAULT_SWEEP_H
