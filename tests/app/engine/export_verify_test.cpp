#include "engine/export_verify.h"

#include "base/error.h"
#include "support/device_folder.h"
#include "support/export_records.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <unistd.h>

namespace {

class Progress : public VerifyObserver
{
public:
    void verified(const VerifyProgress &progress) override
    {
        EXPECT_LE(m_last.doneBytes, progress.doneBytes);
        EXPECT_LE(progress.doneBytes, progress.totalBytes);
        m_last = progress;
        if (m_hook)
            m_hook();
    }

    VerifyProgress m_last;
    std::function<void()> m_hook;
};

class VerifiedFolder : public testing::Test
{
protected:
    /// Writes a file as an exporter would, to be recorded by `record`.
    void exportFile(const QByteArray &path, const QByteArray &bytes)
    {
        m_scratch.write("out/" + path, bytes);
        m_files.push_back(recordedFile(path, bytes));
    }

    void exportAlbumFile(RecordedAlbumFile::Kind kind, const QByteArray &path,
                         const QByteArray &target)
    {
        m_albumFiles.push_back({kind, path, target});
    }

    void exportLink(const QByteArray &path, const QByteArray &target, const QByteArray &text)
    {
        exportAlbumFile(RecordedAlbumFile::Link, path, target);
        makeLink(path, text);
    }

    void makeLink(const QByteArray &path, const QByteArray &text) const
    {
        m_scratch.makeFolder("out/" + path.left(path.lastIndexOf('/')));
        m_scratch.makeLink("out/" + path, text);
    }

    void makeHardLink(const QByteArray &from, const QByteArray &to) const
    {
        m_scratch.makeFolder("out/" + to.left(qMax(to.lastIndexOf('/'), 0)));
        ASSERT_EQ(0, ::link(place(from).constData(), place(to).constData()));
    }

    void remove(const QByteArray &path) const { ASSERT_EQ(0, ::unlink(place(path).constData())); }

    void record() const { writeRecord(out(), m_files, m_albumFiles); }

    VerifiedExport verify()
    {
        m_progress.m_last = VerifyProgress();
        return verifyExport(out(), m_progress, m_cancel);
    }

    /// Each file that is not good as "STATE PATH: CAUSE", after the number of those that are.
    QList<QByteArray> verified()
    {
        const VerifiedExport result = verify();
        QList<QByteArray> lines = {QByteArray::number(result.good) + " good"};
        for (const VerifiedFault &fault : result.faults)
            lines.append(wordFor(fault.state) + (' ' + fault.path) +
                         (fault.cause.isEmpty() ? QByteArray() : ": " + fault.cause.toUtf8()));
        return lines;
    }

    std::string failure()
    {
        try {
            verify();
            return {};
        } catch (const Error &error) {
            return error.what();
        }
    }

    QByteArray out() const { return m_scratch.path("out"); }
    QByteArray place(const QByteArray &path) const { return out() + '/' + path; }

    using Lines = QList<QByteArray>;

    ScratchFolder m_scratch;
    std::vector<RecordedFile> m_files;
    std::vector<RecordedAlbumFile> m_albumFiles;
    Progress m_progress;
    CancelToken m_cancel;
};

TEST_F(VerifiedFolder, IsGoodAsItWasExported)
{
    exportFile("2020/01/IMG_0001.JPG", "picture");
    exportFile("2020/01/IMG_0001.MOV", QByteArray(3000000, 'f'));
    exportFile("empty", "");
    exportFile("caf\xe9\n", "picture");
    record();
    const Lines before = m_scratch.everythingIn();
    EXPECT_EQ(Lines{"4 good"}, verified());
    EXPECT_EQ(before, m_scratch.everythingIn());
    EXPECT_EQ(3000014, m_progress.m_last.totalBytes);
    EXPECT_EQ(3000014, m_progress.m_last.doneBytes);
    EXPECT_EQ(4, m_progress.m_last.doneFiles);
    EXPECT_EQ(4, m_progress.m_last.files);
}

TEST_F(VerifiedFolder, HasChangedWhenAFileHasAnotherContentOrSize)
{
    exportFile("a", "picture");
    exportFile("b", "picture");
    exportFile("c", "picture");
    record();
    m_scratch.write("out/a", "pictura");
    m_scratch.write("out/c", "pic");
    EXPECT_EQ(
        (Lines{"1 good", "changed a: has another content", "changed c: has 3 bytes instead of 7"}),
        verified());
}

TEST_F(VerifiedFolder, HasChangedWhenOneByteBehindTheFirstBlocksIsAnother)
{
    QByteArray bytes(2500000, 'x');
    exportFile("film", bytes);
    record();
    bytes[2400000] = 'y';
    m_scratch.write("out/film", bytes);
    EXPECT_EQ((Lines{"0 good", "changed film: has another content"}), verified());
}

TEST_F(VerifiedFolder, HasChangedWhenSomethingElseStandsInPlaceOfAFile)
{
    for (const QByteArray path : {"folder", "link", "pipe"}) {
        exportFile(path, "picture");
        remove(path);
    }
    record();
    m_scratch.write("same", "picture");
    m_scratch.makeFolder("out/folder");
    makeLink("link", m_scratch.path("same"));
    m_scratch.makePipe("out/pipe");
    EXPECT_EQ((Lines{"0 good", "changed folder: is a folder", "changed link: is a link",
                     "changed pipe: is no regular file"}),
              verified());
}

TEST_F(VerifiedFolder, MissesWhatWasMovedOrDeleted)
{
    exportFile("2020/a", "picture");
    exportFile("2020/b", "film");
    exportFile("2021/c", "text");
    record();
    remove("2020/a");
    m_scratch.write("out/2020/z", "film");
    remove("2020/b");
    remove("2021/c");
    ASSERT_EQ(0, ::rmdir(place("2021").constData()));
    EXPECT_EQ(
        (Lines{"0 good", "missing 2020/a", "missing 2020/b", "extra 2020/z", "missing 2021/c"}),
        verified());
}

TEST_F(VerifiedFolder, TellsEverythingExtraButFoldersAndItsOwnRecord)
{
    exportFile("2020/a", "picture");
    record();
    m_scratch.write("out/.hidden", "text");
    m_scratch.write("out/2020/b", "text");
    m_scratch.write("out/2021/.photolib/c", "text");
    m_scratch.write("out/.photolib/notes", "text");
    m_scratch.makeFolder("out/2022/empty");
    makeLink("2020/link", "a");
    m_scratch.makePipe("out/2020/pipe");
    EXPECT_EQ((Lines{"1 good", "extra .hidden", "extra 2020/b", "extra 2020/link",
                     "extra 2020/pipe", "extra 2021/.photolib/c"}),
              verified());
}

TEST_F(VerifiedFolder, IsNotLeftThroughALinkInPlaceOfAFolder)
{
    exportFile("2020/a", "picture");
    record();
    m_scratch.makeFolder("elsewhere");
    ASSERT_EQ(0, ::rename(place("2020/a").constData(), m_scratch.path("elsewhere/a").constData()));
    ASSERT_EQ(0, ::rmdir(place("2020").constData()));
    m_scratch.write("elsewhere/b", "text");
    makeLink("2020", m_scratch.path("elsewhere"));
    EXPECT_EQ((Lines{"0 good", "extra 2020", "missing 2020/a"}), verified());
}

TEST_F(VerifiedFolder, IsNotWalkedInACircle)
{
    exportFile("2020/a", "picture");
    record();
    makeLink("2020/circle", "..");
    EXPECT_EQ((Lines{"1 good", "extra 2020/circle"}), verified());
}

TEST_F(VerifiedFolder, MayBeDeep)
{
    QByteArray path;
    for (int i = 0; i < 100; ++i)
        path += "folder/";
    exportFile(path + "a", "picture");
    record();
    m_scratch.write("out/" + path + "b", "text");
    EXPECT_EQ((Lines{"1 good", "extra " + path + "b"}), verified());
}

TEST_F(VerifiedFolder, HoldsOlderCopiesToo)
{
    exportFile("a", "old");
    m_files.back().isCurrent = false;
    exportFile("a (2)", "new");
    record();
    m_scratch.write("out/a", "odd");
    EXPECT_EQ((Lines{"1 good", "changed a: has another content"}), verified());
}

TEST_F(VerifiedFolder, HasGoodLinksInItsAlbumsWhenTheyLeadToWhatTheyStandFor)
{
    exportFile("2020/a", "picture");
    exportLink("Albums/One/a", "2020/a", "../../2020/a");
    exportLink("Albums/Two/a", "2020/a", ".././/../2020/a");
    record();
    EXPECT_EQ(Lines{"3 good"}, verified());
}

TEST_F(VerifiedFolder, HasChangedWhenALinkOfAnAlbumLeadsElsewhere)
{
    exportFile("2020/a", "picture");
    exportFile("2020/b", "picture");
    exportLink("Albums/absolute", "2020/a", place("2020/a"));
    exportLink("Albums/elsewhere", "2020/a", "../2020/b");
    exportLink("Albums/out", "2020/a", "../../out/2020/a");
    exportAlbumFile(RecordedAlbumFile::Link, "Albums/file", "2020/a");
    m_scratch.write("out/Albums/file", "picture");
    exportAlbumFile(RecordedAlbumFile::Link, "Albums/missing", "2020/a");
    record();
    EXPECT_EQ((Lines{"2 good", "changed Albums/absolute: leads elsewhere",
                     "changed Albums/elsewhere: leads elsewhere", "changed Albums/file: is no link",
                     "missing Albums/missing", "changed Albums/out: leads elsewhere"}),
              verified());
}

TEST_F(VerifiedFolder, HasChangedWhenALinkOfAnAlbumLeadsToNothing)
{
    exportFile("2020/a", "picture");
    exportLink("Albums/a", "2020/a", "../2020/a");
    record();
    remove("2020/a");
    EXPECT_EQ((Lines{"0 good", "missing 2020/a", "changed Albums/a: leads to nothing"}),
              verified());
}

TEST_F(VerifiedFolder, HasGoodCopiesInItsAlbumsWhenTheirContentIsThatOfWhatTheyStandFor)
{
    exportFile("2020/a", "picture");
    exportFile("2020/b", "film");
    exportAlbumFile(RecordedAlbumFile::HardLink, "Albums/a", "2020/a");
    makeHardLink("2020/a", "Albums/a");
    exportAlbumFile(RecordedAlbumFile::HardLink, "Albums/alike", "2020/a");
    m_scratch.write("out/Albums/alike", "picture");
    exportAlbumFile(RecordedAlbumFile::Copy, "Albums/b", "2020/b");
    m_scratch.write("out/Albums/b", "film");
    record();
    EXPECT_EQ(Lines{"5 good"}, verified());
    EXPECT_EQ(29, m_progress.m_last.totalBytes);
    EXPECT_EQ(29, m_progress.m_last.doneBytes);
}

TEST_F(VerifiedFolder, HasChangedWhenACopyInAnAlbumHas)
{
    exportFile("2020/a", "picture");
    exportAlbumFile(RecordedAlbumFile::HardLink, "Albums/a", "2020/a");
    makeHardLink("2020/a", "Albums/a");
    exportAlbumFile(RecordedAlbumFile::Copy, "Albums/b", "2020/a");
    m_scratch.write("out/Albums/b", "picturE");
    exportAlbumFile(RecordedAlbumFile::Copy, "Albums/c", "2020/unknown");
    m_scratch.write("out/Albums/c", "picture");
    record();
    EXPECT_EQ((Lines{"2 good", "changed Albums/b: has another content",
                     "changed Albums/c: stands for a file that is not in the record"}),
              verified());
    m_scratch.write("out/2020/a", "pictura");
    EXPECT_EQ(
        (Lines{"0 good", "changed 2020/a: has another content",
               "changed Albums/a: has another content", "changed Albums/b: has another content",
               "changed Albums/c: stands for a file that is not in the record"}),
        verified());
}

// As a disk lists it that does not tell case and the composition of letters apart: one file that
// has both names.
TEST_F(VerifiedFolder, HasOneFileUnderTwoSpellingsOfItsName)
{
    exportFile("2020/IMG.JPG", "picture");
    exportFile("2020/Z\xc3\xbcrich.JPG", "picture");
    record();
    makeHardLink("2020/IMG.JPG", "2020/img.jpg");
    makeHardLink("2020/Z\xc3\xbcrich.JPG", "2020/zu\xcc\x88rich.jpg");
    EXPECT_EQ(Lines{"2 good"}, verified());
}

TEST_F(VerifiedFolder, TellsFilesApartThatOnlyHaveSimilarNamesOrOnlyTheSameContent)
{
    exportFile("2020/IMG.JPG", "picture");
    record();
    m_scratch.write("out/2020/img.jpg", "picture");
    makeHardLink("2020/IMG.JPG", "2020/other.jpg");
    EXPECT_EQ((Lines{"1 good", "extra 2020/img.jpg", "extra 2020/other.jpg"}), verified());
}

TEST_F(VerifiedFolder, MayHaveARecordWithSizesThatNoDiskHolds)
{
    exportFile("a", "picture");
    exportFile("b", "picture");
    for (RecordedFile &file : m_files)
        file.size = std::numeric_limits<qint64>::max();
    record();
    EXPECT_EQ((Lines{"0 good", "changed a: has 7 bytes instead of 9223372036854775807",
                     "changed b: has 7 bytes instead of 9223372036854775807"}),
              verified());
}

TEST_F(VerifiedFolder, CanBeVerifiedWhileAnExporterIsAtWork)
{
    exportFile("a", "picture");
    m_scratch.makeFolder("out");
    OpenRecord open(out());
    open.record.add(m_files);
    EXPECT_EQ(Lines{"1 good"}, verified());
}

TEST_F(VerifiedFolder, NeedsARecord)
{
    EXPECT_EQ(out().toStdString() + ": No such file or directory", failure());
    m_scratch.write("out/a", "picture");
    EXPECT_EQ(out().toStdString() + ": has no record of an export", failure());
    EXPECT_FALSE(m_scratch.exists("out/.photolib"));
}

TEST_F(VerifiedFolder, IsVerifiedNoFurtherOnceThatIsCancelled)
{
    exportFile("a", "picture");
    exportFile("b", "picture");
    exportFile("c", "picture");
    record();
    m_progress.m_hook = [this] {
        if (m_progress.m_last.doneFiles == 1)
            m_cancel.cancel();
    };
    try {
        verify();
        ADD_FAILURE() << "not cancelled";
    } catch (const Error &error) {
        EXPECT_EQ(Error::Cancelled, error.kind());
        EXPECT_STREQ("interrupted: 1 of 3 files verified", error.what());
    }
}

TEST_F(VerifiedFolder, IsVerifiedNoFurtherInTheMiddleOfAFile)
{
    exportFile("film", QByteArray(5000000, 'x'));
    record();
    m_progress.m_hook = [this] { m_cancel.cancel(); };
    EXPECT_EQ("interrupted: 0 of 1 files verified", failure());
    EXPECT_LT(m_progress.m_last.doneBytes, 2000000);
}

TEST_F(VerifiedFolder, CountsFilesByTheirState)
{
    exportFile("a", "picture");
    exportFile("b", "picture");
    record();
    remove("b");
    m_scratch.write("out/c", "text");
    m_scratch.write("out/d", "text");
    const VerifiedExport result = verify();
    EXPECT_EQ(1, result.count(VerifiedState::Good));
    EXPECT_EQ(0, result.count(VerifiedState::Changed));
    EXPECT_EQ(1, result.count(VerifiedState::Missing));
    EXPECT_EQ(2, result.count(VerifiedState::Extra));
}

} // namespace
