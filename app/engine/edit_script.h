#ifndef PHOTOLIB_ENGINE_EDIT_SCRIPT_H
#define PHOTOLIB_ENGINE_EDIT_SCRIPT_H

#include <QByteArray>
#include <QString>
#include <QVector>

#include <string>

/// A word of an edit script, without its quotes.
struct ScriptWord {
    QString text;
    bool isQuoted = false; ///< some of it stood in quotes: a name, whatever it looks like

    /// Whether it stands for an album or a photo by its id.
    bool isId() const;
};

/// Splits a line into its words, which blanks separate. Double quotes keep blanks; between
/// them a backslash goes before a quote or a backslash that is part of the word. Returns
/// what is wrong with the quoting, or an empty text.
QString splitWords(const QString &line, QVector<ScriptWord> *words);

enum class EditKind { AddAlbum, AddPhoto, Rename, RemovePhoto, RemoveAlbum };

/// One edit of a script.
struct ScriptEdit {
    int line = 0; ///< counted from 1
    QString text; ///< the line without the blanks around it
    EditKind kind = EditKind::AddAlbum;
    /// As many as the kind takes, none empty. Those in the place of photo ids are ids.
    QVector<ScriptWord> arguments;
};

/// The edits of `script`, the bytes of a file that errors call `name`. Throws Error
/// "NAME:LINE: CAUSE" for the first line that is none.
QVector<ScriptEdit> parseEditScript(const QByteArray &script, const std::string &name);

#endif // PHOTOLIB_ENGINE_EDIT_SCRIPT_H
