#include "cameradb/query_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

namespace {

const qint32 highestDate = std::numeric_limits<qint32>::max();
const qint32 lowestDate = std::numeric_limits<qint32>::min();
const qint64 wholeRange = qint64(1) << 32; ///< two dates apart by it have equal low 32 bits

// Dates made unique the plain way: look for the date among those handed out, from the
// last to the first, and start over with the next second when it is there.
class PlainDates
{
public:
    qint32 take(qint32 date)
    {
        std::size_t i = m_taken.size();
        while (i > 0) {
            --i;
            if (m_taken[i] == date) {
                date = static_cast<qint32>(static_cast<quint32>(date) + 1U);
                i = m_taken.size();
            }
        }
        m_taken.push_back(date);
        return date;
    }

private:
    std::vector<long> m_taken;
};

class UniqueDates : public QueryFixture
{
protected:
    // The modification dates that the photos 1, 2, ... of the database get.
    std::vector<qint32> dates()
    {
        const SqliteOwner db = database.open();
        EXPECT_EQ(queryCameraPhotos(db.get(), model.get()), 1);
        std::vector<qint32> result;
        for (const Camera_Data *photo : qAsConst(model->assets))
            result.push_back(photo->modificationDate);
        return result;
    }

    // Stores photos 1, 2, ... that come in this order with these dates: each is stored a
    // whole range of 32 bits later than the one before.
    std::vector<qint32> ask(const std::vector<qint32> &stamps)
    {
        database.rows.assets.clear();
        model = emptyModel();
        for (std::size_t i = 0; i < stamps.size(); ++i)
            database.rows.assets.push_back(
                photoRow(static_cast<int>(i) + 1, static_cast<qint64>(i) * wholeRange + stamps[i]));
        return dates();
    }

    static std::vector<qint32> plainly(const std::vector<qint32> &stamps)
    {
        PlainDates plain;
        std::vector<qint32> result;
        result.reserve(stamps.size());
        for (const qint32 stamp : stamps)
            result.push_back(plain.take(stamp));
        return result;
    }
};

TEST_F(UniqueDates, FollowEachOtherFromOneSecondOn)
{
    EXPECT_EQ(ask({100, 100, 100, 101}), (std::vector<qint32>{100, 101, 102, 103}));
}

TEST_F(UniqueDates, AreGivenInRowOrderWhichIsThatOfTheFractions)
{
    database.rows.assets = {photoRow(1), photoRow(2), photoRow(3), photoRow(4)};
    database.rows.assets[0].modificationDate = 100.75;
    database.rows.assets[1].modificationDate = 100.25;
    database.rows.assets[2].modificationDate = 101.5;
    database.rows.assets[3].modificationDate = 100.5;
    EXPECT_EQ(dates(), (std::vector<qint32>{102, 100, 103, 101}));
}

TEST_F(UniqueDates, LeaveDistinctDatesAlone)
{
    EXPECT_EQ(ask({-4, 0, 7, 9, 2000}), (std::vector<qint32>{-4, 0, 7, 9, 2000}));
}

TEST_F(UniqueDates, FillAGapAndJumpOverTheDatesBehindIt)
{
    EXPECT_EQ(ask({10, 12, 10, 10, 12}), (std::vector<qint32>{10, 12, 11, 13, 14}));
}

TEST_F(UniqueDates, GoOnAtTheLowestDateAfterTheHighest)
{
    EXPECT_EQ(ask({highestDate, highestDate, highestDate, lowestDate}),
              (std::vector<qint32>{highestDate, lowestDate, lowestDate + 1, lowestDate + 2}));
}

TEST_F(UniqueDates, SurviveALongRunOfOneSecond)
{
    const std::vector<qint32> stamps(2000, 420000000);
    const std::vector<qint32> unique = ask(stamps);
    ASSERT_EQ(unique.size(), stamps.size());
    for (std::size_t i = 0; i < unique.size(); ++i)
        ASSERT_EQ(unique[i], 420000000 + static_cast<qint32>(i));
}

TEST_F(UniqueDates, MatchThePlainScanOnALongRun)
{
    std::vector<qint32> stamps(400, highestDate - 150);
    for (std::size_t i = 200; i < stamps.size(); ++i)
        stamps[i] = highestDate - 150 + static_cast<qint32>(i % 40);
    EXPECT_EQ(ask(stamps), plainly(stamps));
}

struct Range {
    const char *name;
    qint64 lowest;
    int size;
    bool ascending;
};

class UniqueDatesInARange : public UniqueDates, public testing::WithParamInterface<Range>
{
};

TEST_P(UniqueDatesInARange, MatchThePlainScan)
{
    std::mt19937 random(20010101); // NOLINT: a fixed seed repeats a failure
    std::uniform_int_distribution<int> offset(0, GetParam().size - 1);
    std::uniform_int_distribution<std::size_t> count(1, 60);
    for (int round = 0; round < 60; ++round) {
        std::vector<qint32> stamps(count(random));
        for (qint32 &stamp : stamps)
            stamp = static_cast<qint32>(GetParam().lowest + offset(random));
        if (GetParam().ascending)
            std::sort(stamps.begin(), stamps.end());
        ASSERT_EQ(ask(stamps), plainly(stamps)) << "round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Ranges, UniqueDatesInARange,
    testing::Values(Range{"Few", 420000000, 5, false}, Range{"Many", 420000000, 40, false},
                    Range{"Sparse", -100, 200, false}, Range{"AroundZero", -10, 20, false},
                    Range{"AroundTheHighest", qint64(highestDate) - 12, 25, false},
                    Range{"UpToTheHighest", qint64(highestDate) - 12, 13, false},
                    Range{"FromTheLowest", lowestDate, 13, false},
                    Range{"OnlyTheHighest", highestDate, 1, false},
                    Range{"AscendingFew", 420000000, 5, true},
                    Range{"AscendingMany", 420000000, 50, true},
                    Range{"AscendingUpToTheHighest", qint64(highestDate) - 20, 21, true},
                    Range{"AscendingAroundTheHighest", qint64(highestDate) - 12, 25, true}),
    rowName<Range>);

} // namespace
