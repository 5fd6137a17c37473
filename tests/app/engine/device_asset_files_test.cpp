// The files of whole devices: samples and libraries that people have had.

#include "devices/folder_file_system.h"
#include "engine/asset_files.h"
#include "engine/device_listing.h"
#include "support/catalog_fixture.h"
#include "support/row_name.h"
#include "support/sample_device.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QTemporaryDir>

#include <map>

namespace {

using FilesByRole = std::map<AssetFileRole, std::vector<std::string>>;

class DeviceAssetFiles : public CatalogFixture
{
protected:
    void open(const QString &device)
    {
        m_device = device;
        const QString database = device + QStringLiteral("/PhotoData/Photos.sqlite");
        for (const char *suffix : {"", "-wal"}) {
            QFile file(database + suffix);
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            m_scratch.write(QByteArray("Photos.sqlite") + suffix, file.readAll());
        }
        m_catalog = readCatalog(QString::fromUtf8(m_scratch.path("Photos.sqlite")), m_cancel);
        FileError error;
        m_files = FolderFileSystem::openFolder(QFile::encodeName(device), &error);
        ASSERT_NE(nullptr, m_files);
    }

    // What belongs to the photos and videos, each as often as to one of them, in byte order.
    std::vector<std::string> assignedFiles() const
    {
        DeviceListing listing(*m_files);
        AssetFiles files(m_catalog, listing);
        std::vector<std::string> paths;
        for (const Asset &asset : m_catalog.assets) {
            for (const AssetFile &file : files.of(asset))
                paths.push_back(file.path.toStdString());
        }
        std::sort(paths.begin(), paths.end());
        return paths;
    }

    // What lies on the device but for what the device itself makes, in byte order.
    std::vector<std::string> photoFiles() const
    {
        std::vector<std::string> paths;
        QDirIterator it(m_device, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = QDir(m_device).relativeFilePath(it.next());
            const bool isMade = path.startsWith(QStringLiteral("PhotoData/Photos.sqlite")) ||
                                path.startsWith(QStringLiteral("PhotoData/Thumbnails/")) ||
                                path.startsWith(QStringLiteral("PhotoData/Metadata/")) ||
                                path.startsWith(QStringLiteral("Photos/Sync/"));
            if (!isMade)
                paths.push_back(path.toStdString());
        }
        std::sort(paths.begin(), paths.end());
        return paths;
    }

    FilesByRole filesOf(qint64 id) const
    {
        DeviceListing listing(*m_files);
        AssetFiles files(m_catalog, listing);
        FilesByRole paths;
        for (const AssetFile &file : files.of(*m_catalog.asset(id)))
            paths[file.role].push_back(file.path.toStdString());
        return paths;
    }

    QString m_device;
    Catalog m_catalog;
    std::unique_ptr<DeviceFileSystem> m_files;
};

struct SampleRow {
    std::string name;
    SampleSchema schema;
};

class SampleAssetFiles : public DeviceAssetFiles, public testing::WithParamInterface<SampleRow>
{
protected:
    void SetUp() override { ASSERT_NO_FATAL_FAILURE(open(sampleOf(GetParam().schema))); }

    // Two outings, which have every kind of file, written once: no test changes them.
    static QString sampleOf(SampleSchema schema)
    {
        static std::map<SampleSchema, std::unique_ptr<QTemporaryDir>> folders;
        std::unique_ptr<QTemporaryDir> &folder = folders[schema];
        const bool isNew = !folder;
        if (isNew)
            folder = std::make_unique<QTemporaryDir>();
        const QString device = folder->filePath(QStringLiteral("phone"));
        if (isNew)
            writeSampleTo(device, sampleOptions(40, true, 1, schema));
        return device;
    }
};

INSTANTIATE_TEST_SUITE_P(
    Of, SampleAssetFiles,
    testing::Values(SampleRow{"Early", SampleSchema::Early}, SampleRow{"V13", SampleSchema::V13},
                    SampleRow{"V14", SampleSchema::V14}, SampleRow{"V16", SampleSchema::V16},
                    SampleRow{"V18", SampleSchema::V18}, SampleRow{"V26", SampleSchema::V26}),
    rowName<SampleRow>);

TEST_P(SampleAssetFiles, AreAllThatTheDeviceHasEachOnce)
{
    EXPECT_EQ(photoFiles(), assignedFiles());
}

TEST_P(SampleAssetFiles, HaveEveryRole)
{
    const std::string edits = "PhotoData/Mutations/DCIM/";
    EXPECT_EQ(
        (FilesByRole{
            {AssetFileRole::Original, {"DCIM/100APPLE/IMG_0004.JPG"}},
            {AssetFileRole::Edited, {edits + "100APPLE/IMG_0004/Adjustments/FullSizeRender.jpg"}},
            {AssetFileRole::Recipe,
             {"DCIM/100APPLE/IMG_0004.AAE",
              edits + "100APPLE/IMG_0004/Adjustments/Adjustments.plist"}},
        }),
        filesOf(4));
    EXPECT_EQ((FilesByRole{
                  {AssetFileRole::Original, {"DCIM/100APPLE/IMG_0010.JPG"}},
                  {AssetFileRole::Other, {"DCIM/100APPLE/IMG_0010.DNG"}},
              }),
              filesOf(10));
    EXPECT_EQ((FilesByRole{
                  {AssetFileRole::Original, {"DCIM/100APPLE/IMG_0019.JPG"}},
                  {AssetFileRole::LiveFilm, {"DCIM/100APPLE/IMG_0019.MOV"}},
              }),
              filesOf(20));
    EXPECT_EQ(
        (FilesByRole{
            {AssetFileRole::Original, {"DCIM/100APPLE/IMG_0023.MOV"}},
            {AssetFileRole::Edited, {edits + "100APPLE/IMG_0023/Adjustments/FullSizeRender.mov"}},
            {AssetFileRole::Recipe, {edits + "100APPLE/IMG_0023/Adjustments/Adjustments.plist"}},
        }),
        filesOf(24));
    EXPECT_EQ(
        (FilesByRole{
            {AssetFileRole::Original, {"DCIM/100APPLE/IMG_0039.JPG"}},
            {AssetFileRole::LiveFilm, {"DCIM/100APPLE/IMG_0039.mov"}},
            {AssetFileRole::Edited, {edits + "100APPLE/IMG_0039/Adjustments/FullSizeRender.jpg"}},
            {AssetFileRole::EditedFilm,
             {edits + "100APPLE/IMG_0039/Adjustments/FullSizeRender.mov"}},
            {AssetFileRole::Recipe, {edits + "100APPLE/IMG_0039/Adjustments/Adjustments.plist"}},
        }),
        filesOf(41));
}

struct LibraryRow {
    std::string name;
    const char *folder;
    std::vector<std::string> strayFiles; // of which the library knows nothing
};

class RealAssetFiles : public DeviceAssetFiles, public testing::WithParamInterface<LibraryRow>
{
protected:
    void SetUp() override
    {
        const QString device = QStringLiteral(PHOTOLIB_DEVICES_DIR "/") + GetParam().folder;
        if (!QFileInfo::exists(device))
            GTEST_SKIP() << "there is no " << device.toStdString();
        ASSERT_NO_FATAL_FAILURE(open(device));
    }
};

INSTANTIATE_TEST_SUITE_P(
    Of, RealAssetFiles,
    testing::Values(
        LibraryRow{"2019", "library-a", {"F/F12384F6-CD17-4151-ACBA-AE0E36FFFFFF.jpeg"}},
        LibraryRow{"2024", "library-b", {}}, LibraryRow{"2024WithMediaTypes", "library-c", {}}),
    rowName<LibraryRow>);

TEST_P(RealAssetFiles, AreAllThatTheDeviceHasEachOnce)
{
    std::vector<std::string> expected = photoFiles();
    for (const std::string &path : GetParam().strayFiles) {
        const auto stray = std::find(expected.begin(), expected.end(), path);
        ASSERT_NE(expected.end(), stray) << path;
        expected.erase(stray);
    }
    EXPECT_EQ(expected, assignedFiles());
}

} // namespace
