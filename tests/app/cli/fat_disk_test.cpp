// Exports to a memory card: a disk that does not tell case apart, refuses some characters and has
// no links.

#include "support/program_fixture.h"
#include "support/proven_export.h"

namespace {

class FatDisk : public ProgramTest
{
protected:
    void addPhoto(const char *name, const char *title = "")
    {
        const int id = int(m_database.rows.assets.size()) + 1;
        m_database.rows.assets.push_back(photoRow(id));
        m_database.rows.assets.back().fileName = name;
        m_scratch.write(QByteArray("device/DCIM/100APPLE/") + name,
                        QByteArray("picture ") + QByteArray::number(id));
        if (*title == '\0')
            return;
        m_database.rows.albums.push_back(albumRow(id));
        m_database.rows.albums.back().title = title;
        m_database.join().add(id, id);
    }

    /// Exports twice to a disk that nobody else sees, verifies that, and copies all that is on it
    /// to the folder "copy". What the program prints is its output. The exit code is 77 where no
    /// such disk can be mounted.
    ProgramResult exportToDisk(const QList<QByteArray> &arguments)
    {
        const QByteArray script = R"(
            PATH=$PATH:/usr/sbin:/sbin; scratch=$1; shift
            cd "$scratch" && mkdir disk && truncate -s 64M image || exit 1
            mountExfat() {
                mkfs.exfat image && loop=$(losetup -f --show image) || return 1
                mount -t exfat "$loop" disk || mount.exfat-fuse "$loop" disk
                mounted=$?
                losetup -d "$loop"
                return $mounted
            }
            { mkfs.vfat image && mount -o loop,utf8 image disk || mountExfat; } >log 2>&1 || exit 77
            "$0" "$@" disk/out && "$0" "$@" disk/out && "$0" verify disk/out; code=$?
            cp -a disk/out copy && umount disk || exit 1
            exit $code)";
        m_setup.program = QStringLiteral("unshare");
        const QList<QByteArray> start = {
            "-m", "sh", "-c", script, PHOTOLIB_PROGRAM, m_scratch.root()};
        ProgramResult result = run(start + arguments);
        if (result.exitCode == -1 || result.errors.startsWith("unshare"))
            result.exitCode = 77;
        return result;
    }

    void writeDevice() { writeDatabase(m_scratch, "device", m_database); }

    PhotosDatabase m_database;
};

TEST_F(FatDisk, TakesEveryPhotoOnceWhateverTheirNamesAre)
{
    addPhoto("IMG_0001.JPG");
    addPhoto("img_0001.jpg"); // the same name there
    addPhoto("\xc3\x89t\xc3\xa9.JPG");
    addPhoto("a:b*c?\"<d>|.JPG", "What? \"1:2\"");
    addPhoto("dots...", "Trip...");
    addPhoto("blank .JPG ", "Trip ");
    addPhoto("CON.JPG", "trip");
    writeDevice();
    const ProgramResult result =
        exportToDisk({"export", "-d", device(), "--name", "{album}/{name}", "--albums", "copy"});
    if (result.exitCode == 77)
        GTEST_SKIP() << "no memory card can be mounted here";
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_TRUE(result.output.startsWith("Copied 7 files (63 bytes), 0 unchanged\n"
                                         "Copied 0 files (0 bytes), 7 unchanged\n"))
        << result.output.constData();
    expectWholeExport(device(), photoFilesOf(device()), m_scratch.path("copy"));
}

} // namespace
