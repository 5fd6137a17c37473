#include "support/proven_export.h"
#include "support/row_name.h"
#include "support/watched_changes.h"

#include <cerrno>
#include <random>

namespace {

struct WayRow {
    const char *name;
    bool isUpdate; ///< of an export, after changes on the device
    std::function<void(ExportRequest *)> choose;
    bool isCard = false; ///< the disk has no links
};

void PrintTo(const WayRow &row, std::ostream *stream)
{
    *stream << row.name;
}

const WayRow ways[] = {
    {"Files", false, [](ExportRequest *) {}},
    {"FilesOnADiskWithoutLinks", false, [](ExportRequest *) {}, true},
    {"FilesThatAreReadBackWithSidecars", false,
     [](ExportRequest *request) {
         request->verify = true;
         request->sidecars = {SidecarFormat::Json, SidecarFormat::Xmp};
     }},
    {"FilesWithLinksInAlbums", false,
     [](ExportRequest *request) { request->albums = RecordedAlbumFile::Link; }},
    {"FilesWithCopiesInAlbums", false,
     [](ExportRequest *request) { request->albums = RecordedAlbumFile::Copy; }},
    {"ChangedFilesBesideTheOldOnes", true,
     [](ExportRequest *request) { request->update = UpdateChoice::Keep; }},
    {"ChangedFilesInPlaceOfTheOldOnes", true,
     [](ExportRequest *request) { request->update = UpdateChoice::Replace; }},
};

// Exports of which something ends one at each change that it makes on the disk, or at some of them.
class InterruptedExports : public ProvenExports, public testing::WithParamInterface<WayRow>
{
protected:
    InterruptedExports()
    {
        open();
        GetParam().choose(&m_request);
        if (GetParam().isUpdate)
            changeDeviceAfterExport();
        findExpected(m_before);
        resetOut(m_before);
        m_changes = runWatched([this] { exportTo(out()); }, refuseLinks);
    }

    void SetUp() override
    {
        if (!m_changes)
            GTEST_SKIP() << "no system calls can be held up here";
        ASSERT_GE(*m_changes, 40);
        ASSERT_EQ(m_request.albums ? 1U : 0U, m_expected.count("Albums"));
    }

    // What the device has in the end is what `photoFilesOf` finds.
    void changeDeviceAfterExport()
    {
        m_before = m_scratch.path("before");
        EXPECT_EQ("", exportTo(m_before));
        for (const char *path : {"100APPLE/IMG_0001.JPG", "100APPLE/IMG_0001.MOV",
                                 "100APPLE/IMG_0002.HEIC", "101APPLE/IMG_0004.JPG"})
            m_scratch.write(QByteArray("device/DCIM/") + path, QByteArray("new ") + path);
    }

    static int refuseLinks(const DiskChange &change)
    {
        return GetParam().isCard && change.needsLinks ? EPERM : 0;
    }

    static int refuseAllFrom(int number, const DiskChange &change)
    {
        return change.number >= number && !change.isRemoval ? ENOSPC : refuseLinks(change);
    }

    QByteArray m_before; // empty for a first export
    std::optional<int> m_changes;
};

TEST_P(InterruptedExports, GoOnWhenThereIsRoomAgainAtWhateverStepTheDiskWasFull)
{
    for (int n = 1; n <= *m_changes && !HasFailure(); ++n) {
        SCOPED_TRACE(n);
        resetOut(m_before);
        std::string end;
        runWatched([&] { end = exportTo(out()); },
                   [n](const DiskChange &change) { return refuseAllFrom(n, change); });
        const bool isTold = m_result.counts.failed > 0 || !end.empty();
        EXPECT_TRUE(isTold || contentsOf(out()) == m_expected);
        expectNothingHalf();
        expectWholeAfterRerun();
    }
}

TEST_P(InterruptedExports, GoOnWhereverTheyWereKilled)
{
    constexpr int kills = 30; // 210 of all ways
    std::mt19937 random(14);
    std::uniform_int_distribution<int> moments(1, *m_changes);
    int killed = 0;
    for (int i = 0; i < kills && !HasFailure(); ++i) {
        const int moment = moments(random);
        SCOPED_TRACE(moment);
        resetOut(m_before);
        const std::optional<bool> isKilled = isKilledAt(
            moment, [this] { exportTo(out()); }, refuseLinks);
        ASSERT_TRUE(isKilled);
        killed += *isKilled ? 1 : 0;
        expectWholeAfterRerun();
    }
    EXPECT_GE(killed, kills - 4); // some changes are not made every time
}

INSTANTIATE_TEST_SUITE_P(Of, InterruptedExports, testing::ValuesIn(ways), rowName<WayRow>);

} // namespace
