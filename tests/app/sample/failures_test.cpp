#include "sample/sample_fixture.h"

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace {

/// Lets no file grow beyond `bytes` while it lives, which is how a full disk looks.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_oldHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit limit = {bytes, m_old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_old{};
    void (*m_oldHandler)(int);
};

class SampleFailures : public testing::Test
{
protected:
    QTemporaryDir m_folder;

    QString path(const char *name) const { return m_folder.filePath(QLatin1String(name)); }

    QStringList entries() const
    {
        return QDir(m_folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    void makeFile(const QString &name) const
    {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write("kept"), 4);
    }

    /// The message of a call that is expected to fail; one line.
    QString failure(const QString &dir, const SampleOptions &options) const
    {
        QString error;
        EXPECT_FALSE(writeSample(dir, options, &error));
        EXPECT_FALSE(error.contains(QLatin1Char('\n')));
        return error;
    }

    QString classicFailure(const QString &dir, const ClassicSampleOptions &options) const
    {
        QString error;
        EXPECT_FALSE(writeClassicSample(dir, options, &error));
        EXPECT_FALSE(error.contains(QLatin1Char('\n')));
        return error;
    }
};

TEST_F(SampleFailures, LeaveAFolderThatIsNotEmptyAsItIs)
{
    makeFile(path("notes.txt"));
    const QString error = failure(m_folder.path(), sampleOptions(3, true));
    EXPECT_TRUE(error.contains(m_folder.path())) << error.toStdString();
    EXPECT_TRUE(error.contains(QLatin1String("not empty"))) << error.toStdString();
    EXPECT_EQ(entries(), QStringList{QStringLiteral("notes.txt")});
}

TEST_F(SampleFailures, NameATargetThatIsAFile)
{
    makeFile(path("file"));
    const QString error = failure(path("file"), sampleOptions(3, true));
    EXPECT_TRUE(error.contains(QLatin1String("not a folder"))) << error.toStdString();
    const QString below = failure(path("file/device"), sampleOptions(3, true));
    EXPECT_TRUE(below.contains(QLatin1String("Not a directory"))) << below.toStdString();
    EXPECT_EQ(QFileInfo(path("file")).size(), 4);
}

TEST_F(SampleFailures, NameAFolderThatMayNotBeWritten)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root may write everywhere";
    ASSERT_EQ(chmod(QFile::encodeName(m_folder.path()).constData(), 0500), 0);
    const QString error = failure(path("device"), sampleOptions(3, true));
    chmod(QFile::encodeName(m_folder.path()).constData(), 0700);
    EXPECT_TRUE(error.contains(QLatin1String("Permission denied"))) << error.toStdString();
}

TEST_F(SampleFailures, RefuseAnEmptyName)
{
    EXPECT_FALSE(failure(QString(), sampleOptions(3, true)).isEmpty());
}

TEST_F(SampleFailures, RefuseCountsOutOfRangeBeforeAnythingIsMade)
{
    for (const int assets : {-1, maxSampleAssets + 1}) {
        const QString error = failure(path("device"), sampleOptions(assets, false));
        EXPECT_TRUE(error.contains(QString::number(assets))) << error.toStdString();
        EXPECT_TRUE(entries().isEmpty());
    }
}

TEST_F(SampleFailures, RefuseMoreNamesThanALibraryCanHave)
{
    for (const int names : {-1, maxSampleNames + 1}) {
        SampleOptions keywords = sampleOptions(3, false);
        keywords.keywords = names;
        SampleOptions people = sampleOptions(3, false);
        people.people = names;
        for (const SampleOptions &options : {keywords, people}) {
            const QString error = failure(path("device"), options);
            EXPECT_TRUE(error.contains(QString::number(names))) << error.toStdString();
            EXPECT_TRUE(entries().isEmpty());
        }
    }
}

TEST_F(SampleFailures, RemoveAllThatWasWrittenWhenTheDiskIsFull)
{
    // In turn: the plist, the tables, a picture, the packed thumbnails, the log's index.
    for (const rlim_t bytes : {100, 5000, 30000, 100000, 300000}) {
        const FileSizeLimit limit(bytes);
        const QString error = failure(path("a/b/device"), sampleOptions(24, true));
        EXPECT_TRUE(error.contains(path("a/b/device"))) << error.toStdString();
        EXPECT_TRUE(entries().isEmpty()) << bytes;
    }
}

TEST_F(SampleFailures, RemoveTheDatabaseWhenItsLogDoesNotFit)
{
    QString error;
    ASSERT_TRUE(writeSample(path("fits"), sampleOptions(2, false), &error));
    const qint64 main = QFileInfo(path("fits/PhotoData/Photos.sqlite")).size();
    ASSERT_TRUE(QDir(path("fits")).removeRecursively());
    const FileSizeLimit limit(static_cast<rlim_t>(main + 1));
    ASSERT_TRUE(
        failure(path("device"), sampleOptions(40, false)).contains(QLatin1String("sqlite")));
    EXPECT_TRUE(entries().isEmpty());
}

TEST_F(SampleFailures, KeepAnEmptyFolderThatWasThere)
{
    ASSERT_TRUE(QDir().mkpath(path("device")));
    {
        const FileSizeLimit limit(5000);
        failure(path("device"), sampleOptions(24, true));
    }
    EXPECT_EQ(entries(), QStringList{QStringLiteral("device")});
    EXPECT_TRUE(QDir(path("device")).isEmpty());
    QString error;
    EXPECT_TRUE(writeSample(path("device"), sampleOptions(2, false), &error))
        << error.toStdString();
}

TEST_F(SampleFailures, RefuseCountsThatAClassicIpodCanNotHave)
{
    for (const int photos : {-1, maxClassicSamplePhotos + 1}) {
        const QString error = classicFailure(path("device"), classicOptions(photos, false));
        EXPECT_TRUE(error.contains(QString::number(photos))) << error.toStdString();
        EXPECT_TRUE(entries().isEmpty());
    }
}

TEST_F(SampleFailures, RemoveAllOfAClassicIpodWhenTheDiskIsFull)
{
    struct Row {
        rlim_t bytes;
        bool pictures;
        const char *file;
    };
    for (const Row &row :
         {Row{10, true, "SysInfo"}, Row{5000, true, "F1019_1.ithmb"},
          Row{1000000, true, "F1019_1.ithmb"}, Row{5000, false, "Photo Database"}}) {
        const FileSizeLimit limit(row.bytes);
        const QString error = classicFailure(path("a/b/device"), classicOptions(6, row.pictures));
        EXPECT_TRUE(error.contains(path("a/b/device"))) << error.toStdString();
        EXPECT_TRUE(error.contains(QLatin1String(row.file))) << error.toStdString();
        EXPECT_TRUE(entries().isEmpty()) << row.bytes;
    }
}

} // namespace
