#include "engine/device_hash.h"

#include "base/cancel_token.h"
#include "base/sha256.h"
#include "support/device_folder.h"
#include "support/watched_files.h"

#include <gtest/gtest.h>

#include <fcntl.h>

namespace {

constexpr int mebibyte = 1 << 20;

// A file on a device, and the same bytes in one of this computer's.
class ContentOfADeviceFile : public testing::Test
{
protected:
    ContentOfADeviceFile()
    {
        m_scratch.write("device/photo", m_content);
        m_scratch.write("local", m_content);
        m_files = std::make_unique<WatchedFiles>(m_scratch.path("device"));
    }

    UniqueFd local() const
    {
        return UniqueFd(::open(m_scratch.path("local").constData(), O_RDONLY | O_CLOEXEC));
    }

    /// Has both files be longer before each of the first 64 reads.
    void growWhileRead()
    {
        constexpr int times = 64;
        m_files->beforeRead = [this] {
            if (m_files->count(WatchedFiles::Read) >= times)
                return;
            for (const char *name : {"device/photo", "local"})
                m_scratch.lengthen(name, mebibyte);
        };
    }

    const QByteArray m_content = QByteArray(mebibyte + 1, 'x');
    ScratchFolder m_scratch;
    std::unique_ptr<WatchedFiles> m_files;
    const CancelToken m_cancel;
    FileError m_error;
};

TEST_F(ContentOfADeviceFile, IsReadWhole)
{
    EXPECT_EQ(sha256Hex(m_content), sha256OfDeviceFile(*m_files, "photo", &m_error, m_cancel));
    EXPECT_TRUE(hasContentOf(*m_files, "photo", local().get(), &m_error, m_cancel));
}

TEST_F(ContentOfADeviceFile, IsNotReadToAnEndThatDoesNotCome)
{
    growWhileRead();
    EXPECT_TRUE(sha256OfDeviceFile(*m_files, "photo", &m_error, m_cancel).isNull());
    EXPECT_EQ(FileError::Failed, m_error.kind);
    EXPECT_GE(4, m_files->count(WatchedFiles::Read));
}

TEST_F(ContentOfADeviceFile, IsNotComparedToAnEndThatDoesNotCome)
{
    growWhileRead();
    EXPECT_FALSE(hasContentOf(*m_files, "photo", local().get(), &m_error, m_cancel));
    EXPECT_EQ(FileError::Failed, m_error.kind);
    EXPECT_GE(4, m_files->count(WatchedFiles::Read));
}

} // namespace
