#include "support/classic_fixture.h"
#include "support/command_rows.h"
#include "support/export_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

#include <climits>

namespace {

constexpr char fill[] = "\x1b]0;owned\x07\x1b[2J\x1b[31m\xc2\x9b[2J";

/// Everything that a terminal or a careless program may obey.
QByteArray hostileText()
{
    QByteArray text = fill;
    for (char control = 1; control < ' '; ++control)
        text += control;
    text += '\x7f';
    for (int control = 0x80; control < 0xa0; ++control)
        text += QByteArray("\xc2").append(char(control));
    for (const int mark : {0x061c, 0x200e, 0x200f, 0x2028, 0x2029, 0x202a, 0x202b, 0x202c, 0x202d,
                           0x202e, 0x2066, 0x2067, 0x2068, 0x2069})
        text += QString(QChar(mark)).toUtf8();
    return text;
}

/// Bytes that begin, end or are in the middle of no UTF-8 sequence.
QByteArray wrongUtf8()
{
    return "\xff\xfe\xc3(\xed\xa0\x80\xf4\x90\x80\x80\xc0\xaf\xe2\x80";
}

/// Without what no name of a file on Linux can have.
QByteArray fileNamed(QByteArray text)
{
    return text.replace('/', '_').left(NAME_MAX);
}

bool isHarmless(uint letter)
{
    const bool turns = letter == 0x061c || letter == 0x200e || letter == 0x200f ||
                       (letter >= 0x202a && letter <= 0x202e) ||
                       (letter >= 0x2066 && letter <= 0x2069);
    const bool isControl = (letter < 0x20 && letter != '\n') || (letter >= 0x7f && letter < 0xa0);
    return !turns && !isControl && letter != 0x2028 && letter != 0x2029;
}

/// The first thing in `bytes` that is not to be shown; empty when all is well.
std::string harmIn(const QByteArray &bytes)
{
    const QString text = QString::fromUtf8(bytes);
    if (text.toUtf8() != bytes)
        return "bytes that are no UTF-8";
    const QVector<uint> letters = text.toUcs4();
    for (int i = 0; i < letters.size(); ++i) {
        if (!isHarmless(letters[i]))
            return "the letter " + std::to_string(letters[i]) + " at " + std::to_string(i);
    }
    return std::string();
}

struct HostileRun {
    std::string name;
    CommandRow command;
    bool isClassic;
    bool isVerbose;
};

std::vector<HostileRun> hostileRuns()
{
    std::vector<HostileRun> rows;
    for (const CommandRow &command : deviceCommands()) {
        for (const bool isClassic : {false, true}) {
            if (isClassic && !command.takesClassic)
                continue;
            // The log is the same for all commands, so a part of them will do.
            rows.push_back({std::string(isClassic ? "Classic" : "Ios") + command.name, command,
                            isClassic, !command.writesFiles});
        }
    }
    return rows;
}

class HostileNames : public ClassicProgramTest
{
protected:
    void write(const QByteArray &device, bool isClassic)
    {
        if (isClassic)
            writeClassic(device);
        else
            writeIos(device);
    }

    void writeIos(const QByteArray &device)
    {
        PhotosDatabase database;
        database.rows.libraryUuids = {hostileText() + wrongUtf8()};
        for (const QByteArray &name : names())
            addPhoto(database, device, "DCIM/100APPLE", name);
        addPhoto(database, device, "DCIM/" + fileNamed(hostileText()), fileNamed(hostileText()));
        addPhoto(database, device, "../..", "etc/passwd");
        const QList<QByteArray> titles = {hostileText(), wrongUtf8(), QByteArray(1 << 20, '\x1b'),
                                          QByteArray("nul\0\x1b[2J", 8)};
        for (int i = 0; i < titles.size(); ++i) {
            database.rows.albums.push_back(albumRow(10 + i));
            database.rows.albums.back().title = titles[i].toStdString();
            database.join().add(10 + i, 1);
            database.join().add(10 + i, 2);
        }
        writeDatabase(m_scratch, device, database);
        m_scratch.write(device + "/Photos/Sync/CurrentLibraryUUID.plist",
                        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                        "<key>libraryUUID</key><string>\u202e\xc2\x9b[2J&#x85;</string>"
                        "</dict></plist>");
    }

    void writeClassic(const QByteArray &device)
    {
        for (const QByteArray &name : names()) {
            ClassicPhoto &photo =
                ClassicProgramTest::addPhoto(100 + quint32(m_library.photos.size()));
            store(photo, iconFormat, Qt::red);
            photo.originalName = QStringLiteral(":Full Resolution:") + QString::fromUtf8(name);
            StoredPicture missing = photo.variants.first();
            missing.fileName = QStringLiteral(":Thumbs:") + QString::fromUtf8(hostileText());
            missing.size = 1;
            photo.variants.append(missing);
            m_scratch.write(device + "/Photos/Full Resolution/" +
                                fileNamed(QString::fromUtf8(name).toUtf8()),
                            "original");
        }
        addAlbum(1, QString::fromUtf8(hostileText()), {100, 101});
        addAlbum(10, QString::fromUtf8(hostileText() + wrongUtf8()), {100, 101});
        m_scratch.write(device + "/Photos/Photo Database", photoDatabaseBytes(m_library));
        for (auto file = m_pictureFiles.begin(); file != m_pictureFiles.end(); ++file)
            m_scratch.write(device + "/Photos/Thumbs/" + file.key(), file.value());
    }

    /// Names of photos whose files are there as far as a disk takes them.
    static QList<QByteArray> names()
    {
        return {hostileText() + ".jpg",
                wrongUtf8() + ".jpg",
                "-rf.jpg",
                "--help",
                ".bashrc",
                "con.jpg",
                "a:b\\c?.jpg",
                "line\nbreak\ttab.jpg",
                QByteArray(1 << 20, 'x') + "\x1b.jpg",
                QByteArray("nul\0byte.jpg", 12),
                "\u202egpj.exe"};
    }

    static void expectHarmlessName(const QByteArray &name)
    {
        EXPECT_EQ("", harmIn(name)) << name.toPercentEncoding().constData();
        for (const char letter : QByteArray("/\\:?*\"<>|\n"))
            EXPECT_FALSE(name.contains(letter)) << name.constData();
        EXPECT_FALSE(name.startsWith('.') || name.startsWith('-')) << name.constData();
        EXPECT_NE("CON", name.left(name.indexOf('.')).toUpper());
        EXPECT_LE(name.size(), NAME_MAX);
    }

    void addPhoto(PhotosDatabase &database, const QByteArray &device, const QByteArray &directory,
                  const QByteArray &name)
    {
        const int id = int(database.rows.assets.size()) + 1;
        AssetRow row = photoRow(id, id);
        row.directory = directory.toStdString();
        row.fileName = name.toStdString();
        row.avalancheUuid = (hostileText() + wrongUtf8()).toStdString();
        database.rows.assets.push_back(row);
        if (!directory.contains("..") && name.size() <= NAME_MAX)
            m_scratch.write(device + '/' + directory + '/' + name.left(int(qstrlen(name))),
                            "photo");
    }
};

class ProgramOnHostileNames : public HostileNames, public testing::WithParamInterface<HostileRun>
{
};

TEST_P(ProgramOnHostileNames, PrintsThemHarmlessly)
{
    const HostileRun &row = GetParam();
    const QByteArray device = "dev\x1b[2J\u202e\xc2\x9b\n";
    write(device, row.isClassic);
    m_scratch.write("edits",
                    "add-album Trip 1\nadd-photo 2 Trip\nrename Trip \"\u202e\xc2\x9b\"\n");
    const CommandPlaces places = {m_scratch.path(device), row.isClassic ? "100" : "1", "10",
                                  m_scratch.path("edits"), m_scratch.path("out")};
    QList<QByteArray> arguments = argumentsOf(row.command, places);
    if (row.isVerbose)
        arguments.append("--verbose");
    const ProgramResult result = run(arguments);
    EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.exitCode;
    EXPECT_EQ("", harmIn(result.output));
    EXPECT_EQ("", harmIn(result.errors));
    EXPECT_FALSE((result.output + result.errors).isEmpty());
    // A megabyte of a name is not repeated for each line of a table.
    EXPECT_LT(result.output.size(), 20 << 20);
    if (arguments.first() == "dump") {
        QJsonParseError error;
        const QJsonDocument json = QJsonDocument::fromJson(result.output, &error);
        EXPECT_FALSE(json.isNull()) << error.errorString().toStdString();
    }
}

TEST_F(HostileNames, BecomeHarmlessNamesOfFiles)
{
    for (const bool isClassic : {false, true}) {
        const QByteArray device = isClassic ? "ipod" : "phone";
        const QByteArray out = device + "-out";
        write(device, isClassic);
        const QList<QByteArray> before = m_scratch.everythingIn(device);
        run({"export", "-d", m_scratch.path(device), "--stored", "largest", m_scratch.path(out)});
        run({"thumb", "-d", m_scratch.path(device), "--all", m_scratch.path(out)});
        EXPECT_EQ(before, m_scratch.everythingIn(device));
        const QList<QByteArray> files = exportedFiles(m_scratch, out);
        EXPECT_GE(files.size(), isClassic ? 18 : 8);
        for (const QByteArray &name : files)
            expectHarmlessName(name);
    }
}

INSTANTIATE_TEST_SUITE_P(EachCommand, ProgramOnHostileNames, testing::ValuesIn(hostileRuns()),
                         rowName<HostileRun>);

} // namespace
