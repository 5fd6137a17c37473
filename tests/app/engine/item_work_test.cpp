#include "engine/item_work.h"

#include "base/cancel_token.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <stdexcept>

namespace {

class HeardFailures : public ItemObserver
{
public:
    QStringList texts;

    void failed(const ItemFailure &failure) override { texts.append(failure.text()); }
};

class ItemWork : public testing::Test
{
protected:
    HeardFailures m_heard;
    CancelToken m_cancel;
    QList<int> m_begun;
};

TEST_F(ItemWork, GoesOnAfterEachFailureAndTellsItAsItComes)
{
    const auto work = [this](int i) {
        m_begun.append(i);
        EXPECT_EQ(i / 2, m_heard.texts.size()); // those before it
        if (i % 2 == 1)
            throw ItemFailure{QString::number(i), QStringLiteral("odd")};
    };
    EXPECT_EQ(2, workOnEach(5, m_heard, m_cancel, work));
    EXPECT_EQ((QList<int>{0, 1, 2, 3, 4}), m_begun);
    EXPECT_EQ((QStringList{"1: odd", "3: odd"}), m_heard.texts);
}

TEST_F(ItemWork, EndsWhenItIsCancelled)
{
    const auto work = [this](int i) {
        m_begun.append(i);
        if (i == 1) {
            m_cancel.cancel();
            throw ItemFailure{QStringLiteral("b"), QStringLiteral("late")};
        }
    };
    EXPECT_EQ(1, workOnEach(5, m_heard, m_cancel, work));
    EXPECT_EQ((QList<int>{0, 1}), m_begun);
    EXPECT_EQ(0, workOnEach(5, m_heard, m_cancel, work));
    EXPECT_EQ((QList<int>{0, 1}), m_begun);
}

TEST_F(ItemWork, EndsByAnythingElseThatIsThrown)
{
    const auto work = [this](int i) {
        m_begun.append(i);
        throw std::runtime_error("gone");
    };
    EXPECT_THROW(workOnEach(5, m_heard, m_cancel, work), std::runtime_error);
    EXPECT_EQ(QList<int>{0}, m_begun);
}

} // namespace
