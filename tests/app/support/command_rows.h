#ifndef PHOTOLIB_TESTS_APP_COMMAND_ROWS_H
#define PHOTOLIB_TESTS_APP_COMMAND_ROWS_H

#include <QByteArray>
#include <QHash>
#include <QList>

#include <vector>

/// One of the program's commands, for tests that hold for all of them.
struct CommandRow {
    const char *name;
    QList<QByteArray> words; ///< with names for the test to fill in, see `argumentsOf`
    bool takesClassic = true;
    bool writesFiles = false; ///< into OUT or OUT.png
};

/// Every command on a device, each in the form that looks at all there is.
inline std::vector<CommandRow> deviceCommands()
{
    return {
        {"Info", {"info", "-d", "DEVICE"}},
        {"Photos", {"photos", "-d", "DEVICE"}},
        {"PhotosOfAnAlbum", {"photos", "-d", "DEVICE", "--album", "ALBUM"}},
        {"Albums", {"albums", "-d", "DEVICE"}},
        {"Show", {"show", "PHOTO", "-d", "DEVICE"}},
        {"Dump", {"dump", "-d", "DEVICE", "--thumbnails"}},
        {"Edit", {"edit", "-d", "DEVICE", "SCRIPT"}, false},
        {"Thumb", {"thumb", "-d", "DEVICE", "--all", "OUT"}, true, true},
        {"ThumbAsPng",
         {"thumb", "-d", "DEVICE", "PHOTO", "--format", "png", "-o", "OUT.png"},
         true,
         true},
        {"ThumbOfOriginals",
         {"thumb", "-d", "DEVICE", "--all", "OUT", "--size", "4096"},
         true,
         true},
        {"Sheet", {"sheet", "-d", "DEVICE", "-o", "OUT.png"}, true, true},
        {"Export", {"export", "-d", "DEVICE", "OUT"}, true, true},
    };
}

/// What the names in a row stand for in a test.
struct CommandPlaces {
    QByteArray device;
    QByteArray photo;
    QByteArray album;
    QByteArray script; ///< a file with edits
    QByteArray out;    ///< need not exist
};

inline QList<QByteArray> argumentsOf(const CommandRow &row, const CommandPlaces &places)
{
    const QHash<QByteArray, QByteArray> meanings = {
        {"DEVICE", places.device}, {"PHOTO", places.photo}, {"ALBUM", places.album},
        {"SCRIPT", places.script}, {"OUT", places.out},     {"OUT.png", places.out + ".png"},
    };
    QList<QByteArray> arguments;
    for (const QByteArray &word : row.words)
        arguments.append(meanings.value(word, word));
    return arguments;
}

#endif // PHOTOLIB_TESTS_APP_COMMAND_ROWS_H
