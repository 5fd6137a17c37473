#include "base/file_names.h"

#include "base/printable.h"

#include <QByteArrayList>
#include <QTextBoundaryFinder>
#include <QVector>

namespace {

constexpr int longestName = 200;     // bytes; disks take 255, and a number may be added
constexpr int longestExtension = 16; // bytes with the dot; what is longer is none

// Where the extension begins; the end of the name when it has none.
int extensionStart(const QByteArray &name)
{
    const int dot = name.lastIndexOf('.');
    const int length = name.size() - dot;
    return dot > 0 && length > 1 && length <= longestExtension ? dot : name.size();
}

// No disk takes the first one; memory cards and disks of other systems take none.
bool isReserved(uint character)
{
    static const QByteArray reserved("/\\:?*\"<>|");
    return character < 0x80 && reserved.contains(static_cast<char>(character));
}

bool isAllowed(uint character)
{
    return !isReserved(character) && isPrintable(character);
}

QString withoutForbidden(const QString &name)
{
    QVector<uint> characters = name.toUcs4();
    for (uint &character : characters) {
        if (!isAllowed(character))
            character = '_';
    }
    return QString::fromUcs4(characters.constData(), characters.size()).trimmed();
}

// What some systems take for a device, whatever extension it has.
bool isDeviceName(const QByteArray &name)
{
    static const QByteArrayList plain = {"CON", "PRN", "AUX", "NUL"};
    const QByteArray first = name.split('.').first().trimmed().toUpper();
    const bool isPort = first.size() == 4 && (first.startsWith("COM") || first.startsWith("LPT"));
    return plain.contains(first) || (isPort && first[3] >= '1' && first[3] <= '9');
}

// No more than `size` bytes, and no half of a letter.
QByteArray shortened(const QByteArray &utf8, int size)
{
    constexpr int continuationMask = 0xc0;
    constexpr int continuation = 0x80;
    if (utf8.size() <= size)
        return utf8;
    while (size > 0 && (utf8[size] & continuationMask) == continuation)
        --size;
    return utf8.left(size);
}

QByteArray safeNameOfAnyLength(const QString &name)
{
    QByteArray result = withoutForbidden(name).toUtf8();
    if (result.isEmpty())
        return "unnamed";
    // Programs take a name that begins with a dash for an option.
    if (result.startsWith('-'))
        result[0] = '_';
    if (isDeviceName(result))
        result.prepend('_');
    // A name that begins with a dot is hidden, and programs read some of those.
    const int stem = extensionStart(result);
    for (int i = 0; i < stem && result[i] == '.'; ++i)
        result[i] = '_';
    return result;
}

} // namespace

QByteArray safeFileName(const QString &name)
{
    const QByteArray result = safeNameOfAnyLength(name);
    const int stem = extensionStart(result);
    const QByteArray extension = result.mid(stem);
    return shortened(result.left(stem), longestName - extension.size()) + extension;
}

QByteArray safeName(const QString &name)
{
    QByteArray result = safeNameOfAnyLength(name);
    if (result.endsWith('.'))
        result[result.size() - 1] = '_';
    return result;
}

QByteArray safeFolderName(const QString &name)
{
    QByteArray result = safeName(name);
    // What is left may end with a blank or dot.
    while (result.size() > longestOnDisks)
        result = safeName(QString::fromUtf8(cutName(result, longestOnDisks)));
    return result;
}

QByteArray cutName(const QByteArray &utf8, int bytes)
{
    constexpr int longestCodePoint = 4; // bytes; where the first one that is left out ends
    if (utf8.size() <= bytes)
        return utf8;
    const QByteArray start = shortened(utf8, qMin(bytes + longestCodePoint, utf8.size()));
    const QString text = QString::fromUtf8(start);
    if (text.toUtf8() != start)
        return shortened(utf8, bytes);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(QString::fromUtf8(shortened(utf8, bytes)).size());
    if (!finder.isAtBoundary())
        finder.toPreviousBoundary();
    const QByteArray whole = text.left(qMax(finder.position(), 0)).toUtf8();
    return whole.isEmpty() ? shortened(utf8, bytes) : whole;
}

QByteArray nameStem(const QByteArray &name)
{
    return name.left(extensionStart(name));
}

QByteArray numberedName(const QByteArray &name, int number)
{
    if (number == 1)
        return name;
    const QByteArray stem = nameStem(name);
    return stem + " (" + QByteArray::number(number) + ')' + name.mid(stem.size());
}

QString comparedName(const QByteArray &name)
{
    const QString text = QString::fromUtf8(name).normalized(QString::NormalizationForm_C);
    return text.toCaseFolded().normalized(QString::NormalizationForm_C);
}
