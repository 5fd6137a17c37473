#ifndef PHOTOLIB_ENGINE_ALBUM_EDITOR_H
#define PHOTOLIB_ENGINE_ALBUM_EDITOR_H

#include "boundary/photo_manager_int.h"
#include "boundary/photo_records.h"
#include "engine/edit_script.h"

/// What became of an edit.
struct EditResult {
    bool isDone = false;
    QString text; ///< "ok", with the id of what is new; or "refused: CAUSE"
};

/// Runs the edits of a script on the albums of one library, in memory. An edit is done as a
/// whole or not at all, unless its result says more. For one thread.
class AlbumEditor
{
public:
    explicit AlbumEditor(photo_manager_int &library) : m_library(library) {}

    EditResult apply(const ScriptEdit &edit);

private:
    QString run(const ScriptEdit &edit);
    QString addAlbum(const ScriptEdit &edit);
    QString addPhoto(const ScriptEdit &edit);
    QString rename(const ScriptEdit &edit);
    QString removePhotos(const ScriptEdit &edit);
    QString removeAlbum(const ScriptEdit &edit);

    albumItem album(quint64 id);
    void update(albumItem item);
    quint64 findAlbum(const ScriptWord &word);
    quint64 albumWithId(const ScriptWord &word);
    QList<quint64> named(const QString &name, const QList<quint64> &candidates);
    photoItem photoFor(const ScriptWord &word);
    QList<quint64> knownPhotos(const QVector<ScriptWord> &words);

    photo_manager_int &m_library;
    QList<quint64> m_made; ///< the albums that this object has made
};

#endif // PHOTOLIB_ENGINE_ALBUM_EDITOR_H
