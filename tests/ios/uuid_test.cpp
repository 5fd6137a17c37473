#include "ios/album_fixture.h"
#include "ios/uuid_text.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

// The 37 bytes that `convterHexFormat` writes, without the NUL.
std::string textOf(const QByteArray &bytes)
{
    std::array<char, 39> out;
    out.fill('~');
    // Exactly 16 bytes, so that the sanitizer sees a read of more.
    const std::vector<char> in(bytes.begin(), bytes.end());
    convterHexFormat(in.data(), out.data() + 1);
    EXPECT_EQ(out.front(), '~');
    EXPECT_EQ(out[37], '\0');
    EXPECT_EQ(out.back(), '~');
    return {out.data() + 1, 36};
}

TEST(UuidText, IsGroupedAndUpperCaseInTheOrderOfTheBytes)
{
    EXPECT_EQ(textOf(QByteArray::fromHex("000102030405060708090a0b0c0d0e0f")),
              "00010203-0405-0607-0809-0A0B0C0D0E0F");
    EXPECT_EQ(textOf(QByteArray::fromHex("ffeeddccbbaa99887766554433221180")),
              "FFEEDDCC-BBAA-9988-7766-554433221180");
    EXPECT_EQ(textOf(QByteArray(16, '\0')), "00000000-0000-0000-0000-000000000000");
}

TEST(UuidText, SpellsEveryByteAtEveryPlace)
{
    const std::string digits = "0123456789ABCDEF";
    const std::vector<std::size_t> places = {0,  2,  4,  6,  9,  11, 14, 16,
                                             19, 21, 24, 26, 28, 30, 32, 34};
    for (std::size_t place = 0; place < places.size(); ++place) {
        for (std::size_t value = 0; value < 256; ++value) {
            QByteArray bytes(16, '\0');
            bytes[static_cast<int>(place)] = static_cast<char>(value);
            std::string expected = "00000000-0000-0000-0000-000000000000";
            expected[places[place]] = digits[value / 16];
            expected[places[place] + 1] = digits[value % 16];
            ASSERT_EQ(textOf(bytes), expected);
        }
    }
}

// --- New uuids.

// Qt offers newer generators, but the draws must be those of this one.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

void seed(qint64 seconds)
{
    qsrand(static_cast<uint>(seconds));
}

quint32 draw()
{
    return static_cast<quint32>(qrand());
}

QT_WARNING_POP

qint64 secondsNow()
{
    return QDateTime::currentDateTimeUtc().toSecsSinceEpoch();
}

void appendLowestFirst(QByteArray &bytes, quint32 value)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes.append(static_cast<char>(value >> shift & 0xff));
}

// The uuids that are tried in that second, in order.
QList<QByteArray> candidatesOf(qint64 seconds, int count)
{
    QList<QByteArray> candidates;
    seed(seconds);
    for (int i = 0; i < count; ++i) {
        const quint32 first = draw();
        const quint32 second = draw();
        QByteArray candidate(8, '\0');
        appendLowestFirst(candidate, second);
        appendLowestFirst(candidate, first);
        candidates.append(candidate);
    }
    return candidates;
}

QByteArray textKey(const QByteArray &uuid)
{
    return QByteArray::fromStdString(textOf(uuid));
}

class NewUuid : public AlbumFixture
{
protected:
    using Uuids = QList<QByteArray>;

    // Makes `count` uuids within one second, with those of its candidates in use that
    // `inUse` picks; gives the candidates.
    template <class InUse>
    Uuids makeInOneSecond(int count, const InUse &inUse)
    {
        const int candidateCount = 8;
        Uuids candidates;
        qint64 seconds = 0;
        do {
            seconds = secondsNow();
            candidates = candidatesOf(seconds, candidateCount);
            manager.m_mapUsedUUID = inUse(candidates);
            made.clear();
            for (int i = 0; i < count; ++i)
                made.append(manager.makeNewUID());
        } while (secondsNow() != seconds);
        return candidates;
    }

    Uuids made;
};

using NewUuidThreads = NewUuid;
using Used = QMap<QByteArray, bool>;

TEST_F(NewUuid, HasEightZeroBytesAndTheTwoDrawsLowestByteFirst)
{
    const Uuids candidates = makeInOneSecond(1, [](const Uuids &) { return Used(); });
    EXPECT_EQ(made, Uuids{candidates[0]});
    EXPECT_EQ(made[0].size(), 16);
    EXPECT_EQ(made[0].left(8), QByteArray(8, '\0'));
    EXPECT_EQ(textOf(made[0]).substr(0, 19), "00000000-0000-0000-");
    EXPECT_EQ(manager.m_mapUsedUUID, (Used{{candidates[0], true}}));
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(NewUuid, DiffersFromThoseOfTheSameSecond)
{
    const Uuids candidates = makeInOneSecond(3, [](const Uuids &) { return Used(); });
    EXPECT_EQ(made, candidates.mid(0, 3));
    EXPECT_EQ(manager.m_mapUsedUUID,
              (Used{{candidates[0], true}, {candidates[1], true}, {candidates[2], true}}));
}

TEST_F(NewUuid, SeedsAndDrawsOnTheCallersThread)
{
    quint32 next = 0;
    quint32 expected = 0;
    qint64 seconds = 0;
    do {
        seconds = secondsNow();
        candidatesOf(seconds, 1);
        expected = draw();
        manager.m_mapUsedUUID.clear();
        manager.makeNewUID();
        next = draw();
    } while (secondsNow() != seconds);
    EXPECT_EQ(next, expected);
}

TEST_F(NewUuid, IsNoneThatIsInUseAsBytes)
{
    const Uuids candidates = makeInOneSecond(1, [](const Uuids &all) {
        return Used{{all[0], true}, {all[1], true}};
    });
    EXPECT_EQ(made, Uuids{candidates[2]});
    EXPECT_EQ(manager.m_mapUsedUUID,
              (Used{{candidates[0], true}, {candidates[1], true}, {candidates[2], true}}));
}

TEST_F(NewUuid, IsNoneThatIsInUseAsText)
{
    const Uuids candidates = makeInOneSecond(1, [](const Uuids &all) {
        return Used{{textKey(all[0]), true}};
    });
    EXPECT_EQ(made, Uuids{candidates[1]});
    EXPECT_EQ(manager.m_mapUsedUUID, (Used{{textKey(candidates[0]), true}, {candidates[1], true}}));
}

TEST_F(NewUuid, IsTheFirstInUseInNeitherForm)
{
    const Uuids candidates = makeInOneSecond(1, [](const Uuids &all) {
        return Used{{textKey(all[0]), true}, {all[1], true}, {textKey(all[3]), true}};
    });
    EXPECT_EQ(made, Uuids{candidates[2]});
}

TEST_F(NewUuid, IsNoneThatIsAKeyWhateverItsValue)
{
    const Uuids candidates = makeInOneSecond(1, [](const Uuids &all) {
        return Used{{all[0], false}, {textKey(all[1]), false}};
    });
    EXPECT_EQ(made, Uuids{candidates[2]});
    EXPECT_TRUE(manager.m_mapUsedUUID.value(candidates[2]));
    EXPECT_FALSE(manager.m_mapUsedUUID.value(candidates[0], true));
}

TEST_F(NewUuid, IsComparedOverItsWholeLength)
{
    const Uuids candidates = makeInOneSecond(1, [](const Uuids &all) {
        return Used{{QByteArray(), true},
                    {QByteArray(1, '\0'), true},
                    {QByteArray(8, '\0'), true},
                    {QByteArray(16, '\0'), true},
                    {all[0].left(15), true},
                    {all[0].right(8), true},
                    {all[0] + '\0', true},
                    {textKey(all[0]).toLower(), true},
                    {textKey(all[0]).left(35), true},
                    {textKey(all[0]) + '\0', true},
                    {textKey(all[0]) + QByteArray(4, '\0'), true}};
    });
    EXPECT_EQ(made, Uuids{candidates[0]});
    EXPECT_EQ(manager.m_mapUsedUUID.size(), 12);
}

TEST_F(NewUuid, IsAllLettersAAndNotInUseWithoutAModel)
{
    dropModel();
    EXPECT_EQ(manager.makeNewUID(), QByteArray(16, 'a'));
    EXPECT_EQ(manager.makeNewUID(), QByteArray(16, 'a'));
    EXPECT_TRUE(manager.m_mapUsedUUID.isEmpty());
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(NewUuid, SeedsTheCallersThreadAlsoWithoutAModel)
{
    dropModel();
    quint32 next = 0;
    quint32 expected = 0;
    qint64 seconds = 0;
    do {
        seconds = secondsNow();
        seed(seconds);
        expected = draw();
        draw();
        manager.makeNewUID();
        next = draw();
    } while (secondsNow() != seconds);
    EXPECT_EQ(next, expected);
}

TEST_F(NewUuidThreads, LeaveItsLockFree)
{
    manager.makeNewUID();
    EXPECT_TRUE(isFreeElsewhere(manager.m_mutex));
    dropModel();
    manager.makeNewUID();
    EXPECT_TRUE(isFreeElsewhere(manager.m_mutex));
}

TEST_F(NewUuidThreads, NeedNoRecordLock)
{
    manager.m_recMutex.lock();
    QByteArray elsewhere;
    std::thread([&] { elsewhere = manager.makeNewUID(); }).join();
    manager.m_recMutex.unlock();
    EXPECT_TRUE(manager.m_mapUsedUUID.contains(elsewhere));
}

TEST_F(NewUuidThreads, GiveEveryThreadItsOwn)
{
    constexpr int Threads = 4;
    constexpr int PerThread = 50;
    std::vector<Uuids> found(Threads);
    std::vector<std::thread> threads;
    threads.reserve(Threads);
    for (Uuids &mine : found) {
        threads.emplace_back([&] {
            for (int i = 0; i < PerThread; ++i)
                mine.append(manager.makeNewUID());
        });
    }
    for (std::thread &thread : threads)
        thread.join();

    Used all;
    for (const Uuids &mine : found) {
        for (const QByteArray &uuid : mine) {
            EXPECT_EQ(uuid.size(), 16);
            all[uuid] = true;
        }
    }
    EXPECT_EQ(all.size(), Threads * PerThread);
    EXPECT_EQ(manager.m_mapUsedUUID, all);
}

} // namespace
