#ifndef PHOTOLIB_TESTS_APP_EXPORT_FIXTURE_H
#define PHOTOLIB_TESTS_APP_EXPORT_FIXTURE_H

#include "support/program_fixture.h"

#include "base/folders.h"

/// What an export has put into the folder `name` of `scratch`: the paths of files and links below
/// it, in byte order. Expects that nothing lies beside its record, no half file for instance.
inline QList<QByteArray> exportedFiles(const ScratchFolder &scratch, const QByteArray &name)
{
    QList<QByteArray> files;
    for (const QByteArray &path : scratch.everythingIn(name)) {
        const QByteArray below = path.mid(scratch.path(name).size() + 1);
        const bool isRecord = below == ".photolib" || below.startsWith(".photolib/export.sqlite");
        EXPECT_FALSE(below.endsWith(".part")) << below.constData();
        EXPECT_EQ(isRecord, below.startsWith(".photolib")) << below.constData();
        struct stat status = {};
        if (!isRecord && ::lstat(path.constData(), &status) == 0 && !S_ISDIR(status.st_mode))
            files.append(below);
    }
    return files;
}

/// Exports of a device with some photos.
class ExportProgramTest : public ProgramTest
{
protected:
    QByteArray out() const { return m_scratch.path("out"); }

    ProgramResult runExport(const QList<QByteArray> &further = {})
    {
        return run(QList<QByteArray>{"export", "-d", device()} + further +
                   QList<QByteArray>{out()});
    }

    /// Adds a photo called `name` to the library, without its file. Returns its row.
    AssetRow &addRow(const std::string &name, const std::string &directory = "DCIM/100APPLE")
    {
        const int id = int(m_database.rows.assets.size()) + 1;
        AssetRow row = photoRow(id, id);
        row.fileName = name;
        row.directory = directory;
        m_database.rows.assets.push_back(row);
        return m_database.rows.assets.back();
    }

    /// Adds a photo called `name` in the device's folder `directory`, with its file unless
    /// that is not possible.
    AssetRow &addPhoto(const std::string &name, const QByteArray &content,
                       const std::string &directory = "DCIM/100APPLE")
    {
        m_scratch.write("device/" + QByteArray::fromStdString(directory + '/' + name), content);
        return addRow(name, directory);
    }

    void writeDevice() { writeDatabase(m_scratch, "device", m_database); }

    /// The exported files, in byte order.
    QList<QByteArray> names() const { return exportedFiles(m_scratch, "out"); }

    /// In the folder of most photos.
    static constexpr char folder[] = "device/DCIM/100APPLE/";

    PhotosDatabase m_database;
};

#endif // PHOTOLIB_TESTS_APP_EXPORT_FIXTURE_H
