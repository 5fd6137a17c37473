#include "engine/name_template.h"

#include "base/error.h"
#include "base/file_names.h"
#include "base/suggestion.h"
#include "engine/asset_words.h"
#include "engine/library_date.h"

#include <QDate>
#include <QList>

#include <algorithm>
#include <array>
#include <ctime>
#include <locale.h>

namespace {

QByteArray originalName(const NameValues &values)
{
    const QByteArray &name = values.asset->originalName;
    return name.isEmpty() ? values.fileName : name;
}

QByteArray extensionOf(const QByteArray &name)
{
    return name.mid(nameStem(name).size());
}

struct PlainField {
    const char *name;
    QByteArray (*value)(const NameValues &values);
    bool makesFolders = false; // with a "/" in the value
};

const PlainField plainFields[] = {
    {"name", [](const NameValues &values) { return values.fileName; }},
    {"stem", [](const NameValues &values) { return nameStem(values.fileName); }},
    {"ext", [](const NameValues &values) { return extensionOf(values.fileName); }},
    {"originalName", originalName},
    {"originalStem", [](const NameValues &values) { return nameStem(originalName(values)); }},
    {"id", [](const NameValues &values) { return QByteArray::number(values.asset->id); }},
    {"uuid", [](const NameValues &values) { return values.asset->uuid; }},
    {"kind", [](const NameValues &values) { return QByteArray(wordFor(values.asset->kind)); }},
    {"album", [](const NameValues &values) { return values.album; }},
    {"folder", [](const NameValues &values) { return values.folder; }, true},
    {"device", [](const NameValues &values) { return values.device; }},
};

struct DateField {
    const char *name;
    LibraryDate Asset::*date;
    bool isLocal; // by the clock where the photo was taken
};

constexpr DateField dateFields[] = {
    {"taken", &Asset::taken, true},
    {"modified", &Asset::modified, false},
    {"added", &Asset::added, false},
};

template <class Field, std::size_t count>
const Field *fieldNamed(const QByteArray &name, const Field (&fields)[count])
{
    const auto found = std::find_if(std::begin(fields), std::end(fields),
                                    [&name](const Field &field) { return name == field.name; });
    return found == std::end(fields) ? nullptr : found;
}

std::vector<std::string> fieldNames()
{
    std::vector<std::string> names;
    for (const DateField &field : dateFields)
        names.emplace_back(field.name);
    for (const PlainField &field : plainFields)
        names.emplace_back(field.name);
    return names;
}

bool isField(const QByteArray &name)
{
    return fieldNamed(name, dateFields) || fieldNamed(name, plainFields);
}

// A "/" would make a folder.
QByteArray asOneName(QByteArray value)
{
    return value.replace('/', '_');
}

// A date's parts as strftime takes them.
class BrokenDownTime
{
public:
    // `time` is on a clock that is `utcOffset` minutes ahead of UTC, as `clockTime` gives it.
    BrokenDownTime(qint64 time, std::optional<int> utcOffset)
    {
        const QDate first(2001, 1, 1);
        const qint64 milliseconds = ((time % dayLength) + dayLength) % dayLength;
        const QDate day = first.addDays((time - milliseconds) / dayLength);
        const int seconds = static_cast<int>(milliseconds / 1000);
        m_parts.tm_sec = seconds % 60;
        m_parts.tm_min = seconds / 60 % 60;
        m_parts.tm_hour = seconds / 3600;
        m_parts.tm_mday = day.day();
        m_parts.tm_mon = day.month() - 1;
        m_parts.tm_year = day.year() - 1900;
        m_parts.tm_wday = day.dayOfWeek() % 7;
        m_parts.tm_yday = day.dayOfYear() - 1;
        m_parts.tm_gmtoff = utcOffset.value_or(0) * 60L;
        m_parts.tm_zone = "UTC";
        if (utcOffset)
            m_parts.tm_zone = nameZone();
    }

    BrokenDownTime(const BrokenDownTime &) = delete; // the name of the zone is in the object
    BrokenDownTime &operator=(const BrokenDownTime &) = delete;

    // Empty for an empty form, and where the text is too long for any name.
    QByteArray text(const QByteArray &form) const
    {
        static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
        std::array<char, 1024> letters;
        const std::size_t length =
            ::strftime_l(letters.data(), letters.size(), form.constData(), &m_parts, plain);
        return QByteArray(letters.data(), static_cast<int>(length));
    }

private:
    static constexpr qint64 dayLength = 86400000;

    // The library knows no name of it, only how far it is from UTC: "-0400".
    const char *nameZone()
    {
        ::strftime(m_zone.data(), m_zone.size(), "%z", &m_parts);
        return m_zone.data();
    }

    std::tm m_parts = {};
    std::array<char, 8> m_zone = {};
};

// A "/" in `form` is one of the template, one that strftime writes is not.
QByteArray dateText(const DateField &field, const QByteArray &form, const Asset &asset)
{
    const std::optional<int> offset = field.isLocal ? asset.utcOffset : std::nullopt;
    const std::optional<qint64> time = clockTime(asset.*field.date, offset.value_or(0));
    if (!time)
        return QByteArray();
    const BrokenDownTime parts(*time, offset);
    QList<QByteArray> names = form.split('/');
    for (QByteArray &name : names)
        name = asOneName(parts.text(name));
    return names.join('/');
}

QByteArray valueOf(const QByteArray &field, const QByteArray &form, const NameValues &values)
{
    if (const DateField *const date = fieldNamed(field, dateFields))
        return dateText(*date, form, *values.asset);
    const PlainField *const plain = fieldNamed(field, plainFields);
    return plain->makesFolders ? plain->value(values) : asOneName(plain->value(values));
}

bool isBlank(const QByteArray &text)
{
    return QString::fromUtf8(text).trimmed().isEmpty();
}

} // namespace

// Literal text and fields, one after the other.
struct NameTemplate::Text {
    struct Piece {
        QByteArray literal; // where there is no field
        QByteArray field;
        QByteArray form;          // of a date
        std::vector<Text> others; // the first that is not empty stands for an empty field
    };

    void append(char literal)
    {
        if (pieces.empty() || !pieces.back().field.isEmpty())
            pieces.emplace_back();
        pieces.back().literal.append(literal);
    }

    // Null when there is a field.
    const QByteArray *onlyLiteral() const
    {
        static const QByteArray none;
        if (pieces.empty())
            return &none;
        return pieces.size() == 1 && pieces[0].field.isEmpty() ? &pieces[0].literal : nullptr;
    }

    QByteArray valueFor(const NameValues &values) const
    {
        QByteArray value;
        for (const Piece &piece : pieces)
            value += piece.field.isEmpty() ? piece.literal : valueFor(piece, values);
        return value;
    }

    std::vector<Piece> pieces;

private:
    static QByteArray valueFor(const Piece &piece, const NameValues &values)
    {
        QByteArray value = valueOf(piece.field, piece.form, values);
        for (auto other = piece.others.begin(); isBlank(value) && other != piece.others.end();
             ++other)
            value = other->valueFor(values);
        return isBlank(value) ? QByteArray() : value;
    }
};

namespace {

constexpr char usualForm[] = "%Y-%m-%d";

// What may follow "%", after flags and a width; those of C, since others depend on the system, and
// "s" even on the computer's own zone.
bool isConversion(const QByteArray &letters)
{
    static const QByteArray plain("aAbBcCdDeFgGhHIjmMnprRStTuUVwWxXyYzZ%");
    if (letters.size() == 1)
        return plain.contains(letters[0]);
    static const QByteArray withE("cCxXyY");
    static const QByteArray withO("deHImMSuUVwWy");
    return letters.size() == 2 && (letters[0] == 'E' ? withE : withO).contains(letters[1]);
}

} // namespace

// Makes pieces of a template's text. Throws Error.
class NameTemplate::Parser
{
public:
    explicit Parser(const QByteArray &text) : m_text(text) {}

    Text whole()
    {
        if (isBlank(m_text))
            fail("it is empty");
        Text text = nextText(false);
        requireInside(text);
        return text;
    }

private:
    [[noreturn]] void fail(const QByteArray &cause) const
    {
        const QByteArray line = '"' + m_text + "\": " + cause;
        throw Error(Error::WrongUsage, line.toStdString());
    }

    bool isAt(const char *text) const { return m_text.mid(m_at).startsWith(text); }
    bool isAtEnd() const { return m_at >= m_text.size(); }

    // Up to the end, or inside of a field to its "}" or the next "|".
    Text nextText(bool isInField)
    {
        Text text;
        int openBraces = 0; // literal ones: inside of a field, "}}" may end two fields
        while (!isAtEnd() && !(isInField && openBraces == 0 && (isAt("|") || isAt("}")))) {
            const bool isOpening = isAt("{{");
            const bool isClosing = isAt("}}") && (!isInField || openBraces > 0);
            if (isAt("{") && !isOpening) {
                text.pieces.push_back(nextField());
                continue;
            }
            if (isAt("}") && !isClosing)
                fail("a \"}\" has no \"{\"; \"}}\" stands for one in a name");
            openBraces += isOpening ? 1 : isClosing ? -1 : 0;
            text.append(m_text[m_at]);
            m_at += isOpening || isClosing ? 2 : 1;
        }
        return text;
    }

    Text::Piece nextField()
    {
        const int start = ++m_at;
        while (!isAtEnd() && !QByteArray(":|{}").contains(m_text[m_at]))
            ++m_at;
        Text::Piece piece = field(m_text.mid(start, m_at - start));
        if (isAt(":")) {
            ++m_at;
            takeForm(piece, literalOf(nextText(true)));
        }
        while (isAt("|")) {
            ++m_at;
            piece.others.push_back(other(nextText(true)));
        }
        if (!isAt("}"))
            fail("a \"{\" has no \"}\"; \"{{\" stands for one in a name");
        ++m_at;
        return piece;
    }

    Text::Piece field(const QByteArray &name) const
    {
        if (!isField(name))
            failForField(name);
        Text::Piece piece;
        piece.field = name;
        if (fieldNamed(name, dateFields))
            piece.form = usualForm;
        return piece;
    }

    [[noreturn]] void failForField(const QByteArray &name) const
    {
        const std::vector<std::string> names = fieldNames();
        QList<QByteArray> all;
        for (const std::string &each : names)
            all.append(QByteArray::fromStdString(each));
        fail("there is no field \"" + name + '"' +
             QByteArray::fromStdString(suggestion(name.toStdString(), names)) +
             " (fields: " + all.join(", ") + ')');
    }

    QByteArray literalOf(const Text &form) const
    {
        if (!form.onlyLiteral())
            fail("a field cannot tell the form of a date");
        return *form.onlyLiteral();
    }

    void takeForm(Text::Piece &piece, const QByteArray &form) const
    {
        if (!fieldNamed(piece.field, dateFields))
            fail("only a date has a form after \":\", and \"" + piece.field + "\" is none");
        requireConversions(form);
        piece.form = form;
    }

    void requireConversions(const QByteArray &form) const
    {
        for (int at = form.indexOf('%'); at >= 0; at = form.indexOf('%', at)) {
            int end = at + 1;
            while (end < form.size() && QByteArray("_-0^#123456789").contains(form[end]))
                ++end;
            const int letters = end < form.size() && (form[end] == 'E' || form[end] == 'O') ? 2 : 1;
            if (!isConversion(form.mid(end, letters)))
                fail('"' + form.mid(at, end + letters - at) + "\" is no part of a date");
            at = end + letters;
        }
    }

    // A field needs no braces there.
    Text other(const Text &text) const
    {
        const QByteArray *const literal = text.onlyLiteral();
        const int colon = literal ? literal->indexOf(':') : -1;
        const QByteArray name = literal && colon >= 0 ? literal->left(colon)
                                : literal             ? *literal
                                                      : QByteArray();
        if (!isField(name)) {
            requireInside(text);
            return text;
        }
        Text result;
        result.pieces.push_back(field(name));
        if (colon >= 0)
            takeForm(result.pieces.back(), literal->mid(colon + 1));
        return result;
    }

    // Values cannot lead out of the folder: each name is made safe. This finds what a person wants
    // that cannot be had.
    void requireInside(const Text &text) const
    {
        QByteArray sketch;
        for (const Text::Piece &piece : text.pieces)
            sketch += piece.field.isEmpty() ? piece.literal : QByteArray("{}");
        const QList<QByteArray> names = sketch.split('/');
        if (names.size() > 1 && names.first().isEmpty())
            fail("the path begins with \"/\", and is to be one in the folder");
        for (const QByteArray &name : names) {
            if (name.trimmed() == "." || name.trimmed() == "..")
                fail("no folder or file can have the name \"" + name.trimmed() + '"');
        }
        if (comparedName(names.first().trimmed()).startsWith(QLatin1String(".photolib")))
            fail("the program keeps its record in \".photolib\"");
    }

    const QByteArray m_text;
    int m_at = 0;
};

namespace {

QByteArray safeExtension(const QByteArray &name)
{
    const QByteArray extension = extensionOf(name);
    return extension.isEmpty() ? extension : safeName('_' + QString::fromUtf8(extension)).mid(1);
}

bool endsWithAnyCase(const QByteArray &name, const QByteArray &end)
{
    return !end.isEmpty() && name.right(end.size()).toLower() == end.toLower();
}

// The file's own name where the template gives none, or only an extension.
QByteArray lastName(const QByteArray &name, const NameValues &values)
{
    const QByteArray trimmed = name.trimmed();
    const QByteArray extension = extensionOf(values.fileName);
    const bool isNone = isBlank(name) ||
                        (trimmed.size() == extension.size() && endsWithAnyCase(trimmed, extension));
    return safeName(QString::fromUtf8(isNone ? values.fileName : name));
}

// Moves the extension of the file, or of its original name, to where it belongs.
void splitExtension(NamePath &path, const NameValues &values)
{
    for (const QByteArray &name : {values.fileName, originalName(values)}) {
        const QByteArray extension = safeExtension(name);
        if (!endsWithAnyCase(path.base, extension))
            continue;
        path.extension = path.base.right(extension.size());
        path.base.chop(extension.size());
        return;
    }
}

} // namespace

const char NameTemplate::usual[] = "{taken:%Y}/{taken:%m}/{originalStem}{ext}";

NameTemplate::NameTemplate(const QByteArray &text)
    : m_text(std::make_unique<const Text>(Parser(text).whole()))
{
}

NameTemplate::~NameTemplate() = default;

NamePath NameTemplate::pathFor(const NameValues &values) const
{
    QList<QByteArray> names = m_text->valueFor(values).split('/');
    NamePath path;
    path.base = lastName(names.takeLast(), values);
    splitExtension(path, values);
    QByteArray folders;
    for (const QByteArray &name : qAsConst(names)) {
        if (isBlank(name))
            continue;
        const QByteArray folder = safeFolderName(QString::fromUtf8(name));
        path.wasCut = path.wasCut || folder.size() < safeName(QString::fromUtf8(name)).size();
        folders += folder + '/';
    }
    path.base.prepend(folders);
    return path;
}
