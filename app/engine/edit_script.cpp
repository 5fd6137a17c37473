#include "engine/edit_script.h"

#include "base/error.h"
#include "engine/photo_ids.h"

#include <algorithm>
#include <iterator>

namespace {

bool isBlank(QChar letter)
{
    // A line may end as those of other systems do.
    return letter == QLatin1Char(' ') || letter == QLatin1Char('\t') || letter == QLatin1Char('\r');
}

bool isEscapable(QChar letter)
{
    return letter == QLatin1Char('"') || letter == QLatin1Char('\\');
}

class WordReader
{
public:
    explicit WordReader(const QString &line) : m_line(line) { skipBlanks(); }

    bool hasMore() const { return m_at < m_line.size() && m_error.isEmpty(); }
    ScriptWord next();
    QString error() const { return m_error; }

private:
    void readPart(ScriptWord *word);
    void skipBlanks();
    void readQuoted(QString *text);
    void readEscaped(QString *text);
    void fail(const QString &cause);

    const QString m_line;
    int m_at = 0;
    QString m_error;
};

ScriptWord WordReader::next()
{
    ScriptWord word;
    while (hasMore() && !isBlank(m_line[m_at]))
        readPart(&word);
    skipBlanks();
    return word;
}

void WordReader::readPart(ScriptWord *word)
{
    const QChar letter = m_line[m_at++];
    if (letter == QLatin1Char('"')) {
        word->isQuoted = true;
        readQuoted(&word->text);
    } else if (letter == QLatin1Char('\\')) {
        fail(QStringLiteral("a backslash outside quotes"));
    } else {
        word->text += letter;
    }
}

void WordReader::skipBlanks()
{
    while (m_at < m_line.size() && isBlank(m_line[m_at]))
        ++m_at;
}

void WordReader::readQuoted(QString *text)
{
    while (hasMore()) {
        const QChar letter = m_line[m_at++];
        if (letter == QLatin1Char('"'))
            return;
        if (letter == QLatin1Char('\\'))
            readEscaped(text);
        else
            *text += letter;
    }
    if (m_error.isEmpty())
        fail(QStringLiteral("a quote is not closed"));
}

void WordReader::readEscaped(QString *text)
{
    if (m_at < m_line.size() && isEscapable(m_line[m_at]))
        *text += m_line[m_at++];
    else
        fail(QStringLiteral("a backslash in quotes goes before a quote or a backslash"));
}

void WordReader::fail(const QString &cause)
{
    m_error = cause;
}

// How a kind of edit is written.
struct EditForm {
    const char *name;
    EditKind kind;
    const char *usage;
    int needed;       // arguments
    bool endsWithIds; // behind the first argument, which more than the needed ones may be
};

const EditForm forms[] = {
    {"add-album", EditKind::AddAlbum, "NAME [ID...]", 1, true},
    {"add-photo", EditKind::AddPhoto, "FILE|ID ALBUM", 2, false},
    {"rename", EditKind::Rename, "ALBUM NAME", 2, false},
    {"remove-photo", EditKind::RemovePhoto, "ALBUM ID...", 2, true},
    {"rm-album", EditKind::RemoveAlbum, "ALBUM", 1, false},
};

const EditForm &formNamed(const QString &name)
{
    const auto *const form =
        std::find_if(std::begin(forms), std::end(forms), [&name](const EditForm &candidate) {
            return name == QLatin1String(candidate.name);
        });
    if (form == std::end(forms))
        throw Error(name + QStringLiteral(": no such edit"));
    return *form;
}

void requireArguments(const EditForm &form, const QVector<ScriptWord> &arguments)
{
    const bool isEnough =
        form.endsWithIds ? arguments.size() >= form.needed : arguments.size() == form.needed;
    if (!isEnough)
        throw Error(QLatin1String(form.name) + QStringLiteral(" takes ") +
                    QLatin1String(form.usage));
    for (const ScriptWord &word : arguments) {
        if (word.text.isEmpty())
            throw Error(std::string(form.name), "an argument is empty");
    }
    for (int i = 1; form.endsWithIds && i < arguments.size(); ++i) {
        if (!arguments[i].isId())
            throw Error(arguments[i].text + QStringLiteral(": not the id of a photo"));
    }
}

ScriptEdit parseEdit(const QString &text)
{
    ScriptEdit edit;
    const QString error = splitWords(text, &edit.arguments);
    if (!error.isEmpty())
        throw Error(error);
    const EditForm &form = formNamed(edit.arguments.takeFirst().text);
    requireArguments(form, edit.arguments);
    edit.kind = form.kind;
    edit.text = text;
    return edit;
}

// Throws Error for bytes that are no text.
QString textOf(const QByteArray &line)
{
    const QString text = QString::fromUtf8(line);
    if (text.toUtf8() != line)
        throw Error(QStringLiteral("not UTF-8"));
    return text.trimmed();
}

void addLine(const QByteArray &line, int number, QVector<ScriptEdit> *edits)
{
    const QString text = textOf(line);
    if (text.isEmpty() || text.startsWith(QLatin1Char('#')))
        return;
    ScriptEdit edit = parseEdit(text);
    edit.line = number;
    edits->append(edit);
}

// The mark that some editors put before a text.
QByteArray withoutByteOrderMark(const QByteArray &script)
{
    return script.startsWith("\xef\xbb\xbf") ? script.mid(3) : script;
}

} // namespace

bool ScriptWord::isId() const
{
    return !isQuoted && isNumber(text.toStdString());
}

QString splitWords(const QString &line, QVector<ScriptWord> *words)
{
    WordReader reader(line);
    while (reader.hasMore())
        words->append(reader.next());
    return reader.error();
}

QVector<ScriptEdit> parseEditScript(const QByteArray &script, const std::string &name)
{
    QVector<ScriptEdit> edits;
    int number = 0;
    for (const QByteArray &line : withoutByteOrderMark(script).split('\n')) {
        ++number;
        try {
            addLine(line, number, &edits);
        } catch (const Error &error) {
            throw Error(name + ':' + std::to_string(number), error.what());
        }
    }
    return edits;
}
