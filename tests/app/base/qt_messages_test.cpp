#include "base/qt_messages.h"

#include <gtest/gtest.h>

#include <QtDebug>

#include <future>
#include <thread>

namespace {

TEST(QtMessages, AreHeardByTheInnermost)
{
    const QtMessages outer;
    {
        const QtMessages inner;
        qWarning("first");
        qWarning("second");
        EXPECT_EQ("first", inner.first());
    }
    EXPECT_EQ("", outer.first());
    qWarning("third");
    EXPECT_EQ("third", outer.first());
}

TEST(QtMessages, AreHeardWhenThoseOfAnotherThreadHaveEnded)
{
    std::promise<void> hasBegun;
    std::promise<void> mayEnd;
    std::thread other([&] {
        const QtMessages messages;
        hasBegun.set_value();
        mayEnd.get_future().wait();
    });
    hasBegun.get_future().wait();
    const QtMessages messages;
    mayEnd.set_value();
    other.join();
    qWarning("a warning");
    EXPECT_EQ("a warning", messages.first());
}

TEST(QtMessages, OfAnotherThreadAreNotHeard)
{
    const QtMessages messages;
    std::thread([] { qWarning("theirs"); }).join();
    EXPECT_EQ("", messages.first());
}

} // namespace
