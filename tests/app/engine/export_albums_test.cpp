#include "engine/export_albums.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/unique_fd.h"
#include "engine/album_disk.h"
#include "support/catalogs.h"
#include "support/disk_faults.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Kind = RecordedAlbumFile::Kind;

// A folder with three photos that were exported to it, the second with its film.
class AlbumsExport : public testing::Test
{
protected:
    AlbumsExport()
    {
        EXPECT_TRUE(QDir(path("")).mkpath("export/2019/07"));
        m_folder = UniqueFd(::open(path("export").toUtf8().constData(), O_RDONLY | O_DIRECTORY));
        for (const char *const name : {"IMG_1.JPG", "IMG_2.HEIC", "IMG_2.MOV", "IMG_3.JPG"})
            write(QString("2019/07/") + name, QByteArray("bytes of ") + name);
        m_albums.catalog = &m_catalog;
        m_albums.files[1] = {"2019/07/IMG_1.JPG"};
        m_albums.files[2] = {"2019/07/IMG_2.HEIC", "2019/07/IMG_2.MOV"};
        m_albums.files[3] = {"2019/07/IMG_3.JPG"};
    }

    QString path(const QString &name) const { return m_temporary.filePath(name); }
    QString inExport(const QString &name) const { return path("export/" + name); }

    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(inExport(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QByteArray bytesOf(const QString &name) const
    {
        QFile file(inExport(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
    }

    struct stat statusOf(const QString &name) const
    {
        struct stat status = {};
        EXPECT_EQ(0, ::lstat(inExport(name).toUtf8().constData(), &status)) << name.toStdString();
        return status;
    }

    // Below Albums, in the order of the listing.
    QStringList names() const
    {
        QStringList found;
        const QDir top(inExport("Albums"));
        QDirIterator all(top.path(),
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString each = all.next();
            if (!all.fileInfo().isDir() || all.fileInfo().isSymLink())
                found.append(top.relativeFilePath(each));
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    AlbumsResult run()
    {
        AlbumsResult result = exportAlbums(m_albums, m_folder.get(), m_cancel,
                                           [this](qint64 bytes) { m_copied += bytes; });
        m_albums.recorded = result.files;
        return result;
    }

    AlbumsResult runAs(Kind kind)
    {
        m_albums.kind = kind;
        return run();
    }

    static void expectCounts(const AlbumsResult &result, qint64 made, qint64 unchanged,
                             qint64 removed)
    {
        EXPECT_EQ(made, result.made);
        EXPECT_EQ(unchanged, result.unchanged);
        EXPECT_EQ(removed, result.removed);
        EXPECT_EQ(0U, result.failures.size());
        EXPECT_TRUE(result.isComplete);
    }

    QTemporaryDir m_temporary;
    UniqueFd m_folder;
    Catalog m_catalog;
    AlbumsToExport m_albums;
    CancelToken m_cancel;
    qint64 m_copied = 0;
};

const Kind kinds[] = {RecordedAlbumFile::Link, RecordedAlbumFile::HardLink,
                      RecordedAlbumFile::Copy};

TEST_F(AlbumsExport, HasTheAlbumsOrderInItsListing)
{
    m_catalog.albums = {album(10, "Rome", {3, 2, 1})};
    expectCounts(run(), 4, 0, 0);
    EXPECT_EQ(QStringList({"Rome/001 IMG_3.JPG", "Rome/002 IMG_2.HEIC", "Rome/002 IMG_2.MOV",
                           "Rome/003 IMG_1.JPG"}),
              names());
}

TEST_F(AlbumsExport, NumbersPhotosAsTheAlbumDoesAlsoWhereSomeWereNotExported)
{
    std::vector<qint64> ids = {2000, 1};
    for (qint64 id = 1000; id < 1998; ++id)
        ids.push_back(id);
    m_catalog.albums = {album(10, "Rome", ids)};
    run();
    EXPECT_EQ(QStringList({"Rome/0002 IMG_1.JPG"}), names());
}

TEST_F(AlbumsExport, PutsAlbumsIntoTheirFolders)
{
    m_catalog.albums = {folder(10, "Trips"), within(10, folder(11, "")),
                        within(11, album(12, "Rome", {1})), within(10, album(13, "", {1})),
                        album(14, "Trips", {3})};
    run();
    EXPECT_EQ(QStringList({"Trips/001 IMG_3.JPG", "Trips/Untitled/001 IMG_1.JPG",
                           "Trips/Untitled/Rome/001 IMG_1.JPG"}),
              names());
}

TEST_F(AlbumsExport, LeavesOutAlbumsWithoutExportedPhotos)
{
    m_catalog.albums = {album(10, "Empty"), album(11, "In iCloud", {77}), folder(12, "Folder")};
    expectCounts(run(), 0, 0, 0);
    EXPECT_FALSE(QFileInfo::exists(inExport("Albums")));
}

TEST_F(AlbumsExport, TakesAlbumsOfAllKinds)
{
    for (const AlbumKind kind : {AlbumKind::Shared, AlbumKind::Import, AlbumKind::Smart}) {
        const qint64 id = qint64(kind) + 10;
        m_catalog.albums.push_back(album(id, QByteArray::number(id), {1}));
        m_catalog.albums.back().kind = kind;
    }
    run();
    EXPECT_EQ(3, names().size());
}

TEST_F(AlbumsExport, GivesEachAlbumAFolderOfItsOwn)
{
    m_catalog.albums = {album(10, "Rome", {1}), album(11, "rome", {2}), album(12, "Rome", {3}),
                        album(13, "Rome (2)", {3})};
    run();
    EXPECT_EQ(
        QStringList({"Rome (2) (2)/001 IMG_3.JPG", "Rome (3)/001 IMG_3.JPG", "Rome/001 IMG_1.JPG",
                     "rome (2)/001 IMG_2.HEIC", "rome (2)/001 IMG_2.MOV"}),
        names());
}

TEST_F(AlbumsExport, MakesLinksThatStayRightWhereverTheFolderIsMoved)
{
    m_catalog.albums = {folder(10, "Trips"), within(10, album(11, "Rome", {1}))};
    run();
    ASSERT_TRUE(QDir(path("")).rename("export", "moved"));
    const QByteArray link = path("moved/Albums/Trips/Rome/001 IMG_1.JPG").toUtf8();
    char target[100] = {};
    ASSERT_LT(0, ::readlink(link.constData(), target, sizeof target - 1));
    EXPECT_STREQ("../../../2019/07/IMG_1.JPG", target);
    QFile file(QString::fromUtf8(link));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ("bytes of IMG_1.JPG", file.readAll());
}

TEST_F(AlbumsExport, MakesOtherNamesOfTheFile)
{
    m_catalog.albums = {album(10, "Rome", {1})};
    const AlbumsResult result = runAs(RecordedAlbumFile::HardLink);
    EXPECT_EQ(statusOf("2019/07/IMG_1.JPG").st_ino, statusOf("Albums/Rome/001 IMG_1.JPG").st_ino);
    ASSERT_EQ(1U, result.files.size());
    EXPECT_EQ(RecordedAlbumFile::HardLink, result.files[0].kind);
    EXPECT_EQ("Albums/Rome/001 IMG_1.JPG", result.files[0].path);
    EXPECT_EQ("2019/07/IMG_1.JPG", result.files[0].target);
}

TEST_F(AlbumsExport, MakesCopiesOfEveryByteWithTheirTime)
{
    QByteArray bytes(3 * 256 * 1024 + 7, 'x');
    for (int i = 0; i < bytes.size(); i += 1000)
        bytes[i] = char(i % 251);
    write("2019/07/IMG_1.JPG", bytes);
    write("2019/07/IMG_3.JPG", "");
    const timespec times[] = {{1, 0}, {1234567890, 123456789}};
    ASSERT_EQ(0, ::utimensat(m_folder.get(), "2019/07/IMG_1.JPG", times, 0));
    m_catalog.albums = {album(10, "Rome", {1, 3})};
    expectCounts(runAs(RecordedAlbumFile::Copy), 2, 0, 0);
    EXPECT_EQ(bytes, bytesOf("Albums/Rome/001 IMG_1.JPG"));
    EXPECT_EQ("", bytesOf("Albums/Rome/002 IMG_3.JPG"));
    const struct stat status = statusOf("Albums/Rome/001 IMG_1.JPG");
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_NE(statusOf("2019/07/IMG_1.JPG").st_ino, status.st_ino);
    EXPECT_EQ(1234567890, status.st_mtim.tv_sec);
    EXPECT_EQ(bytes.size(), m_copied);
}

class AlbumsExportOfAKind : public AlbumsExport, public testing::WithParamInterface<Kind>
{
protected:
    AlbumsExportOfAKind() { m_albums.kind = GetParam(); }
};

std::string kindName(const testing::TestParamInfo<Kind> &info)
{
    const char *const all[] = {"Link", "HardLink", "Copy"};
    return all[info.param];
}

INSTANTIATE_TEST_SUITE_P(Kinds, AlbumsExportOfAKind, testing::ValuesIn(kinds), kindName);

TEST_P(AlbumsExportOfAKind, LeavesWhatIsRightAsItIs)
{
    m_catalog.albums = {album(10, "Rome", {1, 2}), album(11, "Rome", {3})};
    run();
    const ino_t inode = statusOf("Albums/Rome/001 IMG_1.JPG").st_ino;
    const QStringList before = names();
    const qint64 copied = m_copied;
    expectCounts(run(), 0, 4, 0);
    EXPECT_EQ(4U, m_albums.recorded.size());
    EXPECT_EQ(before, names());
    EXPECT_EQ(inode, statusOf("Albums/Rome/001 IMG_1.JPG").st_ino);
    EXPECT_EQ(copied, m_copied);
}

TEST_P(AlbumsExportOfAKind, TakesOverWhatWasMadeButNotRecorded)
{
    m_catalog.albums = {album(10, "Rome", {1, 2})};
    run();
    m_albums.recorded.clear();
    expectCounts(run(), 0, 3, 0);
    EXPECT_EQ(3U, m_albums.recorded.size());
    EXPECT_EQ(3, names().size());
}

TEST_P(AlbumsExportOfAKind, FollowsTheAlbumsOrder)
{
    m_catalog.albums = {album(10, "Rome", {1, 2, 3})};
    run();
    m_catalog.albums = {album(10, "Rome", {2, 1, 3})};
    expectCounts(run(), 3, 1, 3);
    EXPECT_EQ(QStringList({"Rome/001 IMG_2.HEIC", "Rome/001 IMG_2.MOV", "Rome/002 IMG_1.JPG",
                           "Rome/003 IMG_3.JPG"}),
              names());
    EXPECT_EQ("bytes of IMG_1.JPG", bytesOf("Albums/Rome/002 IMG_1.JPG"));
}

TEST_P(AlbumsExportOfAKind, FollowsTheAlbumsTitle)
{
    m_catalog.albums = {folder(10, "Trips"), within(10, album(11, "Rome", {1}))};
    run();
    m_catalog.albums = {folder(10, "Trips"), within(10, album(11, "Roma", {1}))};
    expectCounts(run(), 1, 0, 1);
    EXPECT_EQ(QStringList({"Trips/Roma/001 IMG_1.JPG"}), names());
    EXPECT_FALSE(QFileInfo::exists(inExport("Albums/Trips/Rome")));
    m_catalog.albums = {folder(10, "trips"), within(10, album(11, "ROMA", {1}))};
    expectCounts(run(), 1, 0, 1);
    EXPECT_EQ(QStringList({"trips/ROMA/001 IMG_1.JPG"}), names());
}

TEST_P(AlbumsExportOfAKind, RemovesWhatNoAlbumHasAnyMore)
{
    m_catalog.albums = {album(10, "Rome", {1, 2}), album(11, "Oslo", {3})};
    run();
    m_catalog.albums = {album(10, "Rome", {1})};
    expectCounts(run(), 0, 1, 3);
    EXPECT_EQ(QStringList({"Rome/001 IMG_1.JPG"}), names());
    EXPECT_FALSE(QFileInfo::exists(inExport("Albums/Oslo")));
    m_catalog.albums.clear();
    expectCounts(run(), 0, 0, 1);
    EXPECT_FALSE(QFileInfo::exists(inExport("Albums")));
    EXPECT_TRUE(m_albums.recorded.empty());
    EXPECT_EQ("bytes of IMG_1.JPG", bytesOf("2019/07/IMG_1.JPG"));
}

TEST_P(AlbumsExportOfAKind, LeavesWhatAPersonPutThere)
{
    m_catalog.albums = {album(10, "Rome", {1, 3})};
    ASSERT_TRUE(QDir(inExport("")).mkpath("Albums/Rome/002 IMG_3.JPG"));
    write("Albums/Rome/001 IMG_1.JPG", "a person's");
    write("Albums/Rome/notes.txt", "mine");
    expectCounts(run(), 2, 0, 0);
    EXPECT_EQ("a person's", bytesOf("Albums/Rome/001 IMG_1.JPG"));
    EXPECT_EQ("bytes of IMG_1.JPG", bytesOf("Albums/Rome/001 IMG_1 (2).JPG"));
    EXPECT_EQ("bytes of IMG_3.JPG", bytesOf("Albums/Rome/002 IMG_3 (2).JPG"));
    expectCounts(run(), 0, 2, 0);
    m_catalog.albums.clear();
    expectCounts(run(), 0, 0, 2);
    EXPECT_EQ(QStringList({"Rome/001 IMG_1.JPG", "Rome/notes.txt"}), names());
}

TEST_P(AlbumsExportOfAKind, LeavesWhatAPersonPutInThePlaceOfAFile)
{
    m_catalog.albums = {album(10, "Rome", {1})};
    run();
    ASSERT_TRUE(QFile::remove(inExport("Albums/Rome/001 IMG_1.JPG")));
    write("Albums/Rome/001 IMG_1.JPG", "a person's");
    expectCounts(run(), 1, 0, 0);
    EXPECT_EQ(QStringList({"Rome/001 IMG_1 (2).JPG", "Rome/001 IMG_1.JPG"}), names());
    ASSERT_EQ(1U, m_albums.recorded.size());
    EXPECT_EQ("Albums/Rome/001 IMG_1 (2).JPG", m_albums.recorded[0].path);
    EXPECT_EQ("a person's", bytesOf("Albums/Rome/001 IMG_1.JPG"));
}

TEST_P(AlbumsExportOfAKind, MakesAgainWhatWasRemoved)
{
    m_catalog.albums = {album(10, "Rome", {1, 3})};
    run();
    ASSERT_TRUE(QFile::remove(inExport("Albums/Rome/001 IMG_1.JPG")));
    expectCounts(run(), 1, 1, 0);
    EXPECT_EQ("bytes of IMG_1.JPG", bytesOf("Albums/Rome/001 IMG_1.JPG"));
    ASSERT_TRUE(QDir(inExport("Albums")).removeRecursively());
    expectCounts(run(), 2, 0, 0);
    EXPECT_EQ(2, names().size());
}

TEST_P(AlbumsExportOfAKind, BecomesOneOfAnyOtherKind)
{
    m_catalog.albums = {album(10, "Rome", {1})};
    for (const Kind kind : kinds) {
        runAs(GetParam());
        const AlbumsResult result = runAs(kind);
        EXPECT_EQ(kind == GetParam() ? 0 : 1, result.removed);
        const struct stat status = statusOf("Albums/Rome/001 IMG_1.JPG");
        EXPECT_EQ(kind == RecordedAlbumFile::Link, S_ISLNK(status.st_mode));
        EXPECT_EQ(kind == RecordedAlbumFile::HardLink,
                  status.st_ino == statusOf("2019/07/IMG_1.JPG").st_ino);
        EXPECT_EQ(QStringList({"Rome/001 IMG_1.JPG"}), names());
    }
}

TEST_P(AlbumsExportOfAKind, WritesThroughNoLink)
{
    ASSERT_TRUE(QDir(path("")).mkpath("elsewhere/Rome"));
    ASSERT_TRUE(QFile::link(path("elsewhere"), inExport("Albums")));
    m_catalog.albums = {album(10, "Rome", {1, 2})};
    const AlbumsResult result = run();
    ASSERT_EQ(1U, result.failures.size());
    EXPECT_EQ("Albums/Rome", result.failures[0].label);
    EXPECT_TRUE(result.files.empty());
    EXPECT_TRUE(QDir(path("elsewhere/Rome")).isEmpty());
    EXPECT_TRUE(QFileInfo(inExport("Albums")).isSymLink());
}

TEST_P(AlbumsExportOfAKind, RemovesThroughNoLink)
{
    m_catalog.albums = {album(10, "Rome", {1})};
    run();
    ASSERT_TRUE(QDir(inExport("Albums")).rename("Rome", "../elsewhere"));
    ASSERT_TRUE(QFile::link(inExport("elsewhere"), inExport("Albums/Rome")));
    m_catalog.albums.clear();
    run();
    EXPECT_TRUE(QFileInfo::exists(inExport("elsewhere/001 IMG_1.JPG")) ||
                QFileInfo(inExport("elsewhere/001 IMG_1.JPG")).isSymLink());
    EXPECT_TRUE(QFileInfo(inExport("Albums/Rome")).isSymLink());
    EXPECT_TRUE(m_albums.recorded.empty());
}

TEST_P(AlbumsExportOfAKind, RemovesNothingOutsideOfItsFolderWhateverIsRecorded)
{
    m_albums.recorded = {{GetParam(), "Albums/../2019/07/IMG_1.JPG", "2019/07/IMG_1.JPG"},
                         {GetParam(), "Albums//../../outside", "2019/07/IMG_1.JPG"},
                         {GetParam(), "2019/07/IMG_3.JPG", "2019/07/IMG_3.JPG"}};
    ASSERT_TRUE(QFile::copy(inExport("2019/07/IMG_1.JPG"), path("outside")));
    ASSERT_TRUE(QDir(inExport("")).mkpath("Albums"));
    ASSERT_EQ(0, ::linkat(m_folder.get(), "2019/07/IMG_3.JPG", m_folder.get(), "other", 0));
    EXPECT_EQ(0, run().removed);
    EXPECT_TRUE(QFileInfo::exists(path("outside")));
    EXPECT_TRUE(QFileInfo::exists(inExport("2019/07/IMG_1.JPG")));
    EXPECT_TRUE(QFileInfo::exists(inExport("2019/07/IMG_3.JPG")));
}

TEST_P(AlbumsExportOfAKind, StaysInItsFolderWhateverTheTitlesAre)
{
    const QByteArray titles[] = {"..",       ".",   "/",       "../../elsewhere",
                                 "/etc",     "a/b", "-rf",     ".photolib",
                                 "\x1b[2J",  "CON", "a\nb",    QByteArray("a\0b", 3),
                                 "\xff\xfe", "a.",  " ",       "...",
                                 "\u202Ex",  "\\",  "C:\\x\"", QByteArray("😀").repeated(300)};
    qint64 id = 10;
    for (const QByteArray &title : titles) {
        m_catalog.albums.push_back(folder(id, title));
        m_catalog.albums.push_back(within(id, album(id + 1, title, {1})));
        id += 2;
    }
    const AlbumsResult result = run();
    expectCounts(result, qint64(std::size(titles)), 0, 0);
    EXPECT_EQ(1, result.cut);
    EXPECT_EQ(int(std::size(titles)), names().size());
    for (const QString &name : names()) {
        const QStringList parts = name.split('/');
        EXPECT_EQ(3, parts.size()) << name.toStdString();
        EXPECT_FALSE(parts[0].startsWith('.') || parts[0].startsWith('-')) << name.toStdString();
    }
    const auto all = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
    EXPECT_EQ(QStringList({"2019", "Albums"}), QDir(inExport("")).entryList(all, QDir::Name));
    expectCounts(run(), 0, qint64(std::size(titles)), 0);
}

TEST_P(AlbumsExportOfAKind, CutsNamesThatNoDiskTakesAndKeepsTheExtension)
{
    const QByteArray name = QByteArray(250, 'x') + ".JPG";
    write(QString::fromUtf8("2019/07/" + name), "long");
    m_albums.files[1] = {"2019/07/" + name};
    m_catalog.albums = {album(10, QByteArray("\u00e4").repeated(200), {1})};
    const AlbumsResult result = run();
    EXPECT_EQ(2, result.cut);
    const QByteArray title = QByteArray("\u00e4").repeated(127);
    EXPECT_EQ(QStringList(title + "/001 " + QByteArray(247, 'x') + ".JPG"), names());
}

TEST_P(AlbumsExportOfAKind, EndsWhenItIsCancelledAndTellsWhatThereIs)
{
    m_catalog.albums = {album(10, "Rome", {1})};
    run();
    m_catalog.albums = {album(10, "Rome", {3})};
    m_cancel.cancel();
    const AlbumsResult result = run();
    EXPECT_FALSE(result.isComplete);
    EXPECT_EQ(QStringList({"Rome/001 IMG_1.JPG"}), names());
    ASSERT_EQ(1U, result.files.size());
    EXPECT_EQ("Albums/Rome/001 IMG_1.JPG", result.files[0].path);
}

TEST_F(AlbumsExport, IsCancelledBetweenTheBlocksOfACopyWithoutAScrap)
{
    write("2019/07/IMG_1.JPG", QByteArray(1 << 20, 'x'));
    m_catalog.albums = {album(10, "Rome", {1})};
    m_albums.kind = RecordedAlbumFile::Copy;
    qint64 copied = 0;
    const AlbumsResult result = exportAlbums(m_albums, m_folder.get(), m_cancel, [&](qint64 bytes) {
        copied += bytes;
        m_cancel.cancel();
    });
    EXPECT_FALSE(result.isComplete);
    EXPECT_LT(copied, 1 << 20);
    EXPECT_TRUE(result.files.empty());
    EXPECT_FALSE(QFileInfo::exists(inExport("Albums")));
}

TEST_F(AlbumsExport, RemovesWhatAKilledProgramLeftOfACopy)
{
    ASSERT_TRUE(QDir(inExport("")).mkpath("Albums/Rome"));
    write("Albums/Rome/.photolib-0123456789abcdef.part", "half a pho");
    m_catalog.albums = {album(10, "Rome", {1})};
    runAs(RecordedAlbumFile::Copy);
    EXPECT_EQ(QStringList({"Rome/001 IMG_1.JPG"}), names());
}

TEST_F(AlbumsExport, LeavesACopyThatAPersonChanged)
{
    m_catalog.albums = {album(10, "Rome", {1, 3})};
    runAs(RecordedAlbumFile::Copy);
    write("Albums/Rome/001 IMG_1.JPG", "an edit of another size");
    write("Albums/Rome/002 IMG_3.JPG", "edited IMG_3.JPG.."); // of the same size
    const timespec times[] = {{1, 0}, {1, 0}};
    ASSERT_EQ(0, ::utimensat(m_folder.get(), "Albums/Rome/002 IMG_3.JPG", times, 0));
    m_catalog.albums.clear();
    expectCounts(run(), 0, 0, 0);
    EXPECT_EQ("an edit of another size", bytesOf("Albums/Rome/001 IMG_1.JPG"));
    EXPECT_EQ("edited IMG_3.JPG..", bytesOf("Albums/Rome/002 IMG_3.JPG"));
}

TEST_F(AlbumsExport, TellsCopiesThatWereTouchedByTheirContent)
{
    m_catalog.albums = {album(10, "Rome", {1, 3})};
    runAs(RecordedAlbumFile::Copy);
    m_albums.rightAt = 2; // before that was made
    const char *const copy = "Albums/Rome/001 IMG_1.JPG";
    const struct stat before = statusOf(copy);
    write(copy, "edited IMG_1.JPG..");
    const timespec times[] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(0, ::utimensat(m_folder.get(), copy, times, 0));
    ASSERT_EQ(before.st_size, statusOf(copy).st_size);
    expectCounts(run(), 1, 1, 0);
    EXPECT_EQ("edited IMG_1.JPG..", bytesOf(copy));
    EXPECT_EQ("bytes of IMG_1.JPG", bytesOf("Albums/Rome/001 IMG_1 (2).JPG"));
    m_catalog.albums.clear();
    expectCounts(run(), 0, 0, 2);
    EXPECT_EQ("edited IMG_1.JPG..", bytesOf(copy));
}

// Reading thousands of them would take as long as copying them.
TEST_F(AlbumsExport, TellsCopiesThatNobodyTouchedByTheirTime)
{
    m_catalog.albums = {album(10, "Rome", {1, 3})};
    runAs(RecordedAlbumFile::Copy);
    const char *const copy = "Albums/Rome/001 IMG_1.JPG";
    const struct stat before = statusOf(copy);
    write(copy, "edited IMG_1.JPG..");
    const timespec times[] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(0, ::utimensat(m_folder.get(), copy, times, 0));
    m_albums.rightAt = std::numeric_limits<qint64>::max(); // so that it is not read
    expectCounts(run(), 0, 2, 0);
    m_albums.newFiles = {"2019/07/IMG_1.JPG"};
    expectCounts(run(), 1, 1, 0);
}

TEST_F(AlbumsExport, TakesNoOtherFileOfTheSameSizeAndTimeForACopy)
{
    ASSERT_TRUE(QDir(inExport("")).mkpath("Albums/Rome"));
    write("Albums/Rome/001 IMG_1.JPG", "a person's bytes.!");
    m_catalog.albums = {album(10, "Rome", {1})};
    const timespec times[] = {{1, 0}, {1, 0}};
    for (const char *const name : {"Albums/Rome/001 IMG_1.JPG", "2019/07/IMG_1.JPG"})
        ASSERT_EQ(0, ::utimensat(m_folder.get(), name, times, 0));
    ASSERT_EQ(bytesOf("2019/07/IMG_1.JPG").size(), bytesOf("Albums/Rome/001 IMG_1.JPG").size());
    expectCounts(runAs(RecordedAlbumFile::Copy), 1, 0, 0);
    EXPECT_EQ("a person's bytes.!", bytesOf("Albums/Rome/001 IMG_1.JPG"));
}

TEST_F(AlbumsExport, KeepsTheLastNameOfAFile)
{
    m_catalog.albums = {album(10, "Rome", {1})};
    runAs(RecordedAlbumFile::HardLink);
    ASSERT_TRUE(QFile::remove(inExport("2019/07/IMG_1.JPG")));
    m_catalog.albums.clear();
    expectCounts(run(), 0, 0, 0);
    EXPECT_EQ("bytes of IMG_1.JPG", bytesOf("Albums/Rome/001 IMG_1.JPG"));
}

TEST_F(AlbumsExport, TellsOfAFileThatIsGoneAndGoesOn)
{
    ASSERT_TRUE(QFile::remove(inExport("2019/07/IMG_1.JPG")));
    m_catalog.albums = {album(10, "Rome", {1, 3})};
    const AlbumsResult result = runAs(RecordedAlbumFile::Copy);
    ASSERT_EQ(1U, result.failures.size());
    EXPECT_EQ("Albums/Rome/001 IMG_1.JPG", result.failures[0].label);
    EXPECT_EQ(1, result.made);
    EXPECT_EQ(QStringList({"Rome/002 IMG_3.JPG"}), names());
}

TEST_F(AlbumsExport, CopiesNothingThatALinkLeadsTo)
{
    ASSERT_TRUE(QFile::remove(inExport("2019/07/IMG_1.JPG")));
    ASSERT_TRUE(QFile::link("/etc/passwd", inExport("2019/07/IMG_1.JPG")));
    m_catalog.albums = {album(10, "Rome", {1})};
    EXPECT_EQ(1U, runAs(RecordedAlbumFile::Copy).failures.size());
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(AlbumsExport, GivesFilesOfAPhotoWithOneNameNumbers)
{
    ASSERT_TRUE(QDir(inExport("")).mkpath("2020"));
    write("2020/img_1.jpg", "older");
    m_albums.files[1].push_back("2020/img_1.jpg");
    m_catalog.albums = {album(10, "Rome", {1})};
    run();
    EXPECT_EQ(QStringList({"Rome/001 IMG_1.JPG", "Rome/001 img_1 (2).jpg"}), names());
    expectCounts(run(), 0, 2, 0);
}

TEST_F(AlbumsExport, GivesNoFileTheNameOfAnAlbum)
{
    m_catalog.albums = {folder(10, "Trips"), album(11, "Trips", {1}),
                        within(10, album(12, "001 IMG_1.JPG", {3}))};
    expectCounts(run(), 2, 0, 0);
    EXPECT_EQ(QStringList({"Trips/001 IMG_1 (2).JPG", "Trips/001 IMG_1.JPG/001 IMG_3.JPG"}),
              names());
}

TEST_F(AlbumsExport, MovesCopiesRatherThanMakingThemAgain)
{
    m_catalog.albums = {album(10, "Rome", {1, 2}), album(11, "Oslo", {1})};
    runAs(RecordedAlbumFile::Copy);
    m_copied = 0;
    const ino_t inode = statusOf("Albums/Rome/001 IMG_1.JPG").st_ino;
    m_catalog.albums = {album(10, "Rome", {3, 1, 2}), album(11, "Bergen", {1})};
    expectCounts(run(), 5, 0, 4);
    EXPECT_EQ(bytesOf("2019/07/IMG_3.JPG").size(), m_copied);
    EXPECT_EQ(QStringList({"Bergen/001 IMG_1.JPG", "Rome/001 IMG_3.JPG", "Rome/002 IMG_1.JPG",
                           "Rome/003 IMG_2.HEIC", "Rome/003 IMG_2.MOV"}),
              names());
    EXPECT_EQ("bytes of IMG_1.JPG", bytesOf("Albums/Rome/002 IMG_1.JPG"));
    EXPECT_EQ("bytes of IMG_2.MOV", bytesOf("Albums/Rome/003 IMG_2.MOV"));
    EXPECT_TRUE(statusOf("Albums/Rome/002 IMG_1.JPG").st_ino == inode ||
                statusOf("Albums/Bergen/001 IMG_1.JPG").st_ino == inode);
    expectCounts(run(), 0, 5, 0);
}

TEST_F(AlbumsExport, LeavesNoneOfTheCopiesThatNobodyWantsAnyMore)
{
    m_catalog.albums = {album(10, "Rome", {1}), album(11, "Oslo", {1}), album(12, "Bergen", {1})};
    runAs(RecordedAlbumFile::Copy);
    m_catalog.albums = {album(10, "Roma", {1})};
    expectCounts(run(), 1, 0, 3);
    EXPECT_EQ(QStringList({"Roma/001 IMG_1.JPG"}), names());
    EXPECT_EQ(
        QStringList({"Roma"}),
        QDir(inExport("Albums")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden));
}

TEST_F(AlbumsExport, FindsOutWhetherTheDiskTakesLinksAndLeavesNothing)
{
    const auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    ASSERT_TRUE(QDir(inExport("")).mkdir(".photolib"));
    ASSERT_TRUE(QFile::link("x", inExport(".photolib/.photolib-trial.part"))); // of a killed one
    for (const Kind kind : kinds) {
        EXPECT_NO_THROW(requireLinks(kind, m_folder.get()));
        const LackOfLinks lack;
        if (kind == RecordedAlbumFile::Copy)
            EXPECT_NO_THROW(requireLinks(kind, m_folder.get()));
        else
            EXPECT_THROW(requireLinks(kind, m_folder.get()), Error);
    }
    EXPECT_TRUE(QDir(inExport(".photolib")).isEmpty(everything));
    EXPECT_EQ(QStringList({".photolib", "2019"}), QDir(inExport("")).entryList(everything));
}

TEST_F(AlbumsExport, SaysNothingOfLinksWhereNothingCanBeWritten)
{
    for (const Kind kind : kinds)
        EXPECT_NO_THROW(requireLinks(kind, -1));
}

TEST_F(AlbumsExport, SaysThatTheDiskTakesNoLinksBeforeItChangesAnything)
{
    m_catalog.albums = {album(10, "Rome", {1}), album(11, "Oslo", {3})};
    runAs(RecordedAlbumFile::Copy);
    m_catalog.albums = {album(10, "Rome", {1})};
    const LackOfLinks lack;
    for (const Kind kind : {RecordedAlbumFile::Link, RecordedAlbumFile::HardLink}) {
        try {
            runAs(kind);
            ADD_FAILURE() << "links were made";
        } catch (const Error &error) {
            EXPECT_STREQ("Albums: this disk takes no links; use --albums copy", error.what());
        }
        EXPECT_EQ(QStringList({"Oslo/001 IMG_3.JPG", "Rome/001 IMG_1.JPG"}), names());
        EXPECT_EQ(
            QStringList({"2019", "Albums"}),
            QDir(inExport(""))
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name));
    }
}

} // namespace
