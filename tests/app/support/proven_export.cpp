#include "support/proven_export.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/sha256.h"
#include "engine/export_state.h"
#include "engine/export_verify.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <algorithm>

#include <filesystem>
#include <random>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class DeafVerification : public VerifyObserver
{
public:
    void verified(const VerifyProgress &) override {}
};

QByteArray bytesOf(const QByteArray &path)
{
    QFile file(QFile::decodeName(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.constData();
    return file.readAll();
}

std::vector<QByteArray> everythingIn(const QByteArray &folder)
{
    std::vector<QByteArray> paths;
    std::error_code none; // where the folder is not there
    for (const fs::directory_entry &entry :
         fs::recursive_directory_iterator(folder.toStdString(), none))
        paths.push_back(QByteArray::fromStdString(entry.path().string()).mid(folder.size() + 1));
    return paths;
}

QByteArray described(const QByteArray &path)
{
    struct stat status = {};
    EXPECT_EQ(0, ::lstat(path.constData(), &status)) << path.constData();
    if (S_ISLNK(status.st_mode))
        return "link " + QByteArray::fromStdString(fs::read_symlink(path.toStdString()).string());
    const QByteArray time = QByteArray::number(qint64(status.st_mtim.tv_sec)) + '.' +
                            QByteArray::number(qint64(status.st_mtim.tv_nsec));
    return S_ISREG(status.st_mode) ? time + ' ' + sha256Hex(bytesOf(path)) : QByteArray("folder");
}

bool isOfRecord(const QByteArray &path)
{
    return path.startsWith(QByteArray(exportStateName) + "/export.sqlite") ||
           path == exportStateName;
}

VerifiedExport verified(const QByteArray &folder)
{
    DeafVerification observer;
    return verifyExport(folder, observer, CancelToken());
}

QByteArray faultsOf(const QByteArray &folder)
{
    QByteArray lines;
    for (const VerifiedFault &fault : verified(folder).faults)
        lines += fault.path + ": " + wordFor(fault.state) + ' ' + fault.cause.toUtf8() + '\n';
    return lines;
}

// Exports wait for the disk, time and again. Whatever ends a program, not a computer, shows as well
// in memory.
QByteArray fastestDisk()
{
    constexpr char memory[] = "/dev/shm";
    constexpr quint64 room = 1 << 30;
    struct statvfs status = {};
    const bool isUsable = ::statvfs(memory, &status) == 0 && ::access(memory, W_OK) == 0 &&
                          status.f_bavail > room / status.f_frsize;
    return isUsable ? QByteArray(memory) : QDir::tempPath().toUtf8();
}

// Bytes like those of a picture: no two files have the same.
QByteArray pictureBytes(unsigned seed, int size)
{
    std::mt19937 random(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

struct PhoneFile {
    const char *path;
    int size;
};

constexpr PhoneFile phoneFiles[] = {
    {"DCIM/100APPLE/IMG_0001.JPG", 3000}, // a Live Photo that was edited
    {"DCIM/100APPLE/IMG_0001.MOV", 300000},
    {"DCIM/100APPLE/IMG_0001.AAE", 100},
    {"PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/FullSizeRender.jpg", 2000},
    {"PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/FullSizeRender.mov", 5000},
    {"PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/Adjustments.plist", 50},
    {"DCIM/100APPLE/IMG_0002.HEIC", 512 << 10}, // a whole number of blocks
    {"DCIM/100APPLE/IMG_0003.MOV", (1 << 20) + 1},
    {"DCIM/101APPLE/IMG_0001.JPG", 4000}, // another photo of that name
    {"DCIM/101APPLE/IMG_0004.JPG", 0},
};

PhotosDatabase phoneDatabase()
{
    constexpr double firstDate = 6e8; // in 2020
    constexpr double week = 6e5;
    PhotosDatabase database;
    database.schema = Schema::zasset();
    const auto add = [&database](AssetRow row, const char *folder, const char *name) {
        row.dateCreated = firstDate + week * static_cast<double>(database.rows.assets.size());
        row.directory = folder;
        row.fileName = name;
        database.rows.assets.push_back(row);
    };
    add(photoRow(1), "DCIM/100APPLE", "IMG_0001.JPG");
    add(photoRow(2), "DCIM/100APPLE", "IMG_0002.HEIC");
    add(videoRow(3), "DCIM/100APPLE", "IMG_0003.MOV");
    add(photoRow(4), "DCIM/101APPLE", "IMG_0001.JPG");
    add(photoRow(5), "DCIM/101APPLE", "IMG_0004.JPG");
    add(photoRow(6), "DCIM/101APPLE", "IMG_0005.JPG"); // not on the device
    database.rows.albums = {albumRow(7), albumRow(8)};
    for (const int asset : {1, 2, 4})
        database.join().add(7, asset);
    database.join().add(8, 3);
    return database;
}

} // namespace

FolderContents contentsOf(const QByteArray &folder)
{
    FolderContents contents;
    for (const QByteArray &path : everythingIn(folder)) {
        if (!isOfRecord(path))
            contents[path] = described(folder + '/' + path);
    }
    return contents;
}

std::set<QByteArray> photoFilesOf(const QByteArray &device)
{
    const auto isMade = [](const QByteArray &path) {
        return path.startsWith("PhotoData/Photos.sqlite") ||
               path.startsWith("PhotoData/Thumbnails/") || path.startsWith("PhotoData/Metadata/") ||
               path.startsWith("Photos/");
    };
    std::set<QByteArray> files;
    for (const QByteArray &path : everythingIn(device)) {
        if (!isMade(path) && fs::is_regular_file((device + '/' + path).toStdString()))
            files.insert(path);
    }
    return files;
}

void expectSoundExport(const QByteArray &folder)
{
    EXPECT_EQ(QByteArray(), faultsOf(folder));
    std::vector<QByteArray> state = everythingIn(folder + '/' + exportStateName);
    state.erase(std::remove(state.begin(), state.end(), "export.sqlite-albums"), state.end());
    EXPECT_EQ(std::vector<QByteArray>{"export.sqlite"}, state);
}

void expectWholeExport(const QByteArray &device, const std::set<QByteArray> &sources,
                       const QByteArray &folder)
{
    std::set<QByteArray> found;
    for (const RecordedFile &file : readExportRecord(folder).files) {
        if (!file.isCurrent || file.role == ExportRole::Sidecar)
            continue;
        EXPECT_TRUE(found.insert(file.source).second) << file.source.constData() << " is twice";
        const QByteArray bytes = bytesOf(device + '/' + file.source);
        EXPECT_EQ(file.sha256, sha256Hex(bytes)) << file.source.constData();
        EXPECT_TRUE(bytes == bytesOf(folder + '/' + file.path)) << file.path.constData();
    }
    EXPECT_EQ(sources, found);
    expectSoundExport(folder);
}

ProvenExports::ProvenExports()
    : m_disk("TMPDIR", fastestDisk()), m_cache("XDG_CACHE_HOME", m_scratch.path("cache")),
      m_temporary("TMPDIR", m_scratch.path("tmp"))
{
    m_scratch.makeFolder("tmp");
    writeDatabase(m_scratch, "device", phoneDatabase());
    unsigned seed = 0;
    for (const PhoneFile &file : phoneFiles)
        m_scratch.write(QByteArray("device/") + file.path, pictureBytes(++seed, file.size));
    m_request.recipe = true;
}

void ProvenExports::open()
{
    m_session.reset();
    m_files = std::make_shared<WatchedFiles>(device());
    LibraryOptions options;
    options.device = device();
    options.files = m_files;
    options.plugin = PHOTOLIB_PLUGIN_FILE;
    DeafObserver observer;
    CancelToken cancel;
    m_session = std::make_unique<LibrarySession>(options, observer, cancel);
    m_files->startCounting();
}

std::string ProvenExports::exportTo(const QByteArray &folder)
{
    m_request.folder = folder;
    m_result = ExportResult();
    DeafObserver observer;
    try {
        exportPhotos(*m_session, m_request, observer, CancelToken(), &m_result);
    } catch (const Error &error) {
        return error.what();
    }
    return std::string();
}

void ProvenExports::findExpected(const QByteArray &before)
{
    resetOut(before);
    m_contentsBefore = contentsOf(out());
    EXPECT_EQ("", exportTo(out()));
    EXPECT_EQ(0, m_result.counts.failed);
    expectWholeExport(device(), photoFilesOf(device()), out());
    m_expected = contentsOf(out());
}

void ProvenExports::resetOut(const QByteArray &before)
{
    fs::remove_all(out().toStdString());
    if (!before.isEmpty()) {
        const QStringList arguments = {QStringLiteral("-a"), QFile::decodeName(before),
                                       QFile::decodeName(out())};
        ASSERT_EQ(0, QProcess::execute(QStringLiteral("cp"), arguments)); // with the files' times
    }
}

void ProvenExports::expectNothingHalf()
{
    for (const auto &[path, content] : contentsOf(out())) {
        const auto before = m_contentsBefore.find(path);
        const auto expected = m_expected.find(path);
        const bool isOld = before != m_contentsBefore.end() && before->second == content;
        const bool isNew = expected != m_expected.end() && expected->second == content;
        EXPECT_TRUE(isOld || isNew) << path.constData() << ": " << content.constData();
    }
    if (hasExportRecord(out())) {
        EXPECT_EQ(0, verified(out()).count(VerifiedState::Missing));
    }
}

void ProvenExports::expectWholeAfterRerun()
{
    EXPECT_EQ("", exportTo(out()));
    EXPECT_EQ(0, m_result.counts.failed);
    expectWholeExport(device(), photoFilesOf(device()), out());
    EXPECT_EQ(m_expected, contentsOf(out()));
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("tmp"));
}
