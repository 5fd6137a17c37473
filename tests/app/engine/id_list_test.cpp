#include "engine/id_list.h"

#include "base/error.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// As many as nobody would wait for, were each looked for among all others.
constexpr int many = 300000;

// A device may choose them so that a table by their remainders or halves has one row for all.
QList<quint64> manyIds()
{
    QList<quint64> ids;
    ids.reserve(many);
    for (quint64 i = 1; i <= many; ++i)
        ids.append(i << 32 | i << 1);
    return ids;
}

std::vector<std::string> textsOf(const QList<quint64> &ids)
{
    std::vector<std::string> texts;
    texts.reserve(size_t(ids.size()));
    for (const quint64 id : ids)
        texts.push_back(std::to_string(id));
    return texts;
}

std::string errorOf(const std::vector<std::string> &texts, const QList<quint64> &ids)
{
    try {
        knownIds(texts, ids, "unknown");
        return std::string();
    } catch (const Error &error) {
        return error.what();
    }
}

TEST(IdLists, KeepTheFirstOfEachId)
{
    EXPECT_EQ((QList<quint64>{3, 1, 2}), withoutDuplicates({3, 1, 3, 2, 1}));
    EXPECT_EQ(QList<quint64>(), withoutDuplicates({}));
}

TEST(IdLists, HoldTheIdsThatAreNamedOnceAndInTheirOrder)
{
    EXPECT_EQ((QList<quint64>{3, 18446744073709551615U}),
              knownIds({"3", "18446744073709551615", "03", "3"}, {1, 18446744073709551615U, 2, 3},
                       "unknown"));
}

TEST(IdLists, NameTheFirstIdThatIsNotKnown)
{
    EXPECT_EQ("9: unknown", errorOf({"1", "9", "8"}, {2, 1}));
    EXPECT_EQ("18446744073709551617: unknown", errorOf({"18446744073709551617"}, {2, 1}));
    EXPECT_EQ("1: unknown", errorOf({"1"}, {}));
}

TEST(IdLists, TakeNoTimeForEachPairOfManyIds)
{
    const QList<quint64> ids = manyIds();
    QList<quint64> reversed = ids;
    std::reverse(reversed.begin(), reversed.end());
    EXPECT_TRUE(knownIds(textsOf(reversed), ids, "unknown") == reversed);
    EXPECT_TRUE(withoutDuplicates(ids + ids) == ids);
}

} // namespace
