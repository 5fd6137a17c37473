// Exports by the program itself, of whole devices, that are killed and begun again.

#include "base/folders.h"
#include "support/program_fixture.h"
#include "support/proven_export.h"
#include "support/row_name.h"
#include "support/sample_device.h"

#include <QElapsedTimer>
#include <QFile>

#include <random>

namespace {

struct DeviceRow {
    std::string name;
    std::function<void(const QString &device)> write; ///< null for a real library
    QByteArray library;                               ///< its folder
    std::set<QByteArray> strayFiles;                  ///< of which it knows nothing
    bool isClassic = false; ///< its pictures are no files that are copied as they are
};

void PrintTo(const DeviceRow &row, std::ostream *stream)
{
    *stream << row.name;
}

class KilledExport : public ProgramTest, public testing::WithParamInterface<DeviceRow>
{
protected:
    void SetUp() override
    {
        const DeviceRow &row = GetParam();
        m_device = row.write ? device() : PHOTOLIB_DEVICES_DIR "/" + row.library;
        if (row.write)
            row.write(QString::fromUtf8(m_device));
        else if (!QFile::exists(QString::fromUtf8(m_device)))
            GTEST_SKIP() << "there is no " << m_device.constData();
        m_scratch.makeFolder("tmp");
        m_setup.environment = {
            {QStringLiteral("TMPDIR"), QString::fromUtf8(m_scratch.path("tmp"))}};
    }

    QList<QByteArray> exportTo(const QByteArray &folder) const
    {
        return {"export",   "-d",   m_device,    "--all", "--shared", "--recipe",
                "--albums", "link", "--sidecar", "json",  folder};
    }

    void expectWhole(const QByteArray &folder)
    {
        expectSoundExport(folder);
        if (GetParam().isClassic)
            return;
        std::set<QByteArray> sources = photoFilesOf(m_device);
        for (const QByteArray &path : GetParam().strayFiles)
            EXPECT_EQ(1U, sources.erase(path)) << path.constData();
        expectWholeExport(m_device, sources, folder);
    }

    QByteArray m_device;
};

TEST_P(KilledExport, IsCompletedByTheNextOne)
{
    constexpr int kills = 3;
    const QByteArray out = m_scratch.path("out");
    const QByteArray alone = m_scratch.path("alone");
    QElapsedTimer clock;
    clock.start();
    const ProgramResult first = run(exportTo(alone));
    EXPECT_EQ(0, first.exitCode) << first.errors.constData();
    std::uniform_int_distribution<int> moments(0, int(clock.elapsed()));
    expectWhole(alone);
    std::mt19937 random(9);
    for (int i = 0; i < kills; ++i) {
        Program program(m_setup, exportTo(out));
        program.waitForFinished(moments(random));
        program.kill();
        program.waitForFinished();
    }
    const ProgramResult last = run(exportTo(out));
    EXPECT_EQ(0, last.exitCode) << last.errors.constData();
    expectWhole(out);
    EXPECT_EQ(contentsOf(alone), contentsOf(out));
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("tmp"));
    for (const QByteArray &path : m_scratch.everythingIn("cache"))
        EXPECT_TRUE(isFolder(path)) << path.constData(); // no copy of a database
}

DeviceRow sampleRow(const char *name, SampleSchema schema)
{
    const auto write = [schema](const QString &device) {
        writeSampleTo(device, sampleOptions(24, true, 1, schema));
    };
    return {name, write, QByteArray(), {}};
}

DeviceRow classicRow()
{
    const auto write = [](const QString &device) { writeSampleTo(device, classicOptions(12)); };
    return {"Classic", write, QByteArray(), {}, true};
}

DeviceRow libraryRow(const char *name, const char *folder, const std::set<QByteArray> &strayFiles)
{
    return {name, nullptr, folder, strayFiles};
}

INSTANTIATE_TEST_SUITE_P(
    Of, KilledExport,
    testing::Values(
        sampleRow("Early", SampleSchema::Early), sampleRow("V13", SampleSchema::V13),
        sampleRow("V14", SampleSchema::V14), sampleRow("V16", SampleSchema::V16),
        sampleRow("V18", SampleSchema::V18), sampleRow("V26", SampleSchema::V26), classicRow(),
        libraryRow("LibraryA", "library-a", {"F/F12384F6-CD17-4151-ACBA-AE0E36FFFFFF.jpeg"}),
        libraryRow("LibraryB", "library-b", {}), libraryRow("LibraryC", "library-c", {})),
    rowName<DeviceRow>);

} // namespace
