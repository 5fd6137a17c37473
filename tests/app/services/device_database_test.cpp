#include "host/device_database.h"

#include "services/log_output.h"

#include <gtest/gtest.h>

namespace {

TEST(DeviceDatabase, SaysThatClassicIpodsAreNotReadYet)
{
    const LogCapture log;
    EXPECT_FALSE(getPhotoDBInt(nullptr));
    EXPECT_EQ(QList<QByteArray>{"The photo database of a classic iPod can not be read yet"},
              log.failures());
}

TEST(DeviceDatabase, LeavesAThumbnailThatItDoesNotDecodeAlone)
{
    const LogCapture log;
    QByteArray raw = "pixels";
    QByteArray out = "untouched";
    itdb_photo photo;
    photo.formatId = 1019;
    EXPECT_NE(0, unpackiThmb(nullptr, raw, photo, out));
    EXPECT_EQ("untouched", out);
    EXPECT_EQ(QList<QByteArray>{"A thumbnail of the format 1019 can not be decoded yet"},
              log.failures());
}

TEST(DeviceDatabase, AcceptsTheReleaseOfNoDatabase)
{
    iitdb *none = nullptr;
    releaseITunesDBInt(&none);
    releaseITunesDBInt(nullptr);
    EXPECT_FALSE(none);
}

} // namespace
