#include "engine/album_editor.h"

#include "base/error.h"
#include "engine/new_photo.h"
#include "engine/type_codes.h"

#include <QSet>

namespace {

// Why an edit is refused.
Error refusal(const QString &cause)
{
    return Error(cause);
}

void requireSuccess(int result, const char *cause)
{
    if (result == -1)
        throw refusal(QString::fromLatin1(cause));
}

QList<quint64> idsFrom(const QVector<ScriptWord> &words)
{
    QList<quint64> ids;
    for (const ScriptWord &word : words)
        ids.append(word.text.toULongLong());
    return ids;
}

// Throws for the first of `words` that is not the id of one of `photos`.
void requireAmong(const QVector<ScriptWord> &words, const QList<quint64> &photos,
                  const QString &place)
{
    const QSet<quint64> known(photos.begin(), photos.end());
    for (const ScriptWord &word : words) {
        bool isKey = false;
        const quint64 id = word.text.toULongLong(&isKey);
        if (!isKey || !known.contains(id))
            throw refusal(
                QStringLiteral("no photo with the id %1 in the %2").arg(word.text, place));
    }
}

QList<quint64> without(const QList<quint64> &ids, const QList<quint64> &removed)
{
    const QSet<quint64> unwanted(removed.begin(), removed.end());
    QList<quint64> rest;
    for (const quint64 id : ids) {
        if (!unwanted.contains(id))
            rest.append(id);
    }
    return rest;
}

// The albums that the plug-in makes by itself do not take any; it adds them to the Photo
// Library alone, and does not say so.
bool takesPhotos(const albumItem &album)
{
    constexpr quint64 madeUpId = 1000; // of the camera roll where the device has none
    if (album.type == cameraRollAlbum)
        return album.id != madeUpId || !album.uuid.isNull(); // one of the device has a uuid
    return album.type != panoramaAlbum && album.type != videoAlbum;
}

} // namespace

EditResult AlbumEditor::apply(const ScriptEdit &edit)
{
    try {
        return {true, run(edit)};
    } catch (const Error &error) {
        return {false, QStringLiteral("refused: ") + QString::fromUtf8(error.what())};
    }
}

QString AlbumEditor::run(const ScriptEdit &edit)
{
    switch (edit.kind) {
    case EditKind::AddAlbum:
        return addAlbum(edit);
    case EditKind::AddPhoto:
        return addPhoto(edit);
    case EditKind::Rename:
        return rename(edit);
    case EditKind::RemovePhoto:
        return removePhotos(edit);
    case EditKind::RemoveAlbum:
        return removeAlbum(edit);
    }
    return QString();
}

QString AlbumEditor::addAlbum(const ScriptEdit &edit)
{
    albumItem item;
    item.name = edit.arguments.first().text;
    item.photoIDs = knownPhotos(edit.arguments.mid(1));
    requireSuccess(m_library.addAlbum(&item), "the album cannot be made");
    m_made.append(item.id);
    return QStringLiteral("ok: album %1").arg(item.id);
}

QString AlbumEditor::addPhoto(const ScriptEdit &edit)
{
    const quint64 id = findAlbum(edit.arguments[1]);
    if (!takesPhotos(album(id)))
        throw refusal(QStringLiteral("the album takes no photos"));
    photoItem photo = photoFor(edit.arguments[0]);
    requireSuccess(m_library.addPhoto2Album(&photo, id), "the photo cannot be added");
    return QStringLiteral("ok: photo %1").arg(photo.id);
}

QString AlbumEditor::rename(const ScriptEdit &edit)
{
    albumItem item = album(findAlbum(edit.arguments[0]));
    item.name = edit.arguments[1].text;
    update(item);
    if (album(item.id).name != item.name)
        throw refusal(QStringLiteral("the album keeps its name"));
    return QStringLiteral("ok");
}

QString AlbumEditor::removePhotos(const ScriptEdit &edit)
{
    const QVector<ScriptWord> words = edit.arguments.mid(1);
    albumItem item = album(findAlbum(edit.arguments[0]));
    requireAmong(words, item.photoIDs, QStringLiteral("album"));
    const int libraryBefore = m_library.photoCnt();
    item.photoIDs = without(item.photoIDs, idsFrom(words));
    update(item);
    if (album(item.id).photoIDs != item.photoIDs)
        throw refusal(QStringLiteral("the album keeps its photos"));
    const int gone = libraryBefore - m_library.photoCnt();
    return gone == 0 ? QStringLiteral("ok") : QStringLiteral("ok: %1 left the library").arg(gone);
}

QString AlbumEditor::removeAlbum(const ScriptEdit &edit)
{
    requireSuccess(m_library.rmAlbum(findAlbum(edit.arguments[0])), "the album cannot be removed");
    return QStringLiteral("ok");
}

albumItem AlbumEditor::album(quint64 id)
{
    albumItem item;
    if (!m_library.getAlbum(id, &item))
        throw refusal(QStringLiteral("an album of a kind that is not shown"));
    return item;
}

void AlbumEditor::update(albumItem item)
{
    requireSuccess(m_library.updateAlbum(&item), "the album cannot be changed");
}

// A script cannot know the id of an album that it makes, nor what names the device has:
// those of its own albums come first.
quint64 AlbumEditor::findAlbum(const ScriptWord &word)
{
    if (word.isId())
        return albumWithId(word);
    QList<quint64> found = named(word.text, m_made);
    if (found.isEmpty())
        found = named(word.text, m_library.albumIDs());
    if (found.isEmpty())
        throw refusal(QStringLiteral("no album with the name %1").arg(word.text));
    if (found.size() > 1)
        throw refusal(QStringLiteral("%1 albums have the name %2; use the id of one")
                          .arg(found.size())
                          .arg(word.text));
    return found.first();
}

quint64 AlbumEditor::albumWithId(const ScriptWord &word)
{
    bool isKey = false;
    const quint64 id = word.text.toULongLong(&isKey);
    if (!isKey || !m_library.albumIDs().contains(id))
        throw refusal(QStringLiteral("no album with the id %1").arg(word.text));
    return id;
}

QList<quint64> AlbumEditor::named(const QString &name, const QList<quint64> &candidates)
{
    QList<quint64> found;
    for (const quint64 id : candidates) {
        albumItem item;
        if (m_library.getAlbum(id, &item) && item.name == name)
            found.append(id);
    }
    return found;
}

photoItem AlbumEditor::photoFor(const ScriptWord &word)
{
    if (!word.isId())
        return newPhoto(word.text);
    photoItem photo;
    photo.id = knownPhotos({word}).first();
    return photo;
}

QList<quint64> AlbumEditor::knownPhotos(const QVector<ScriptWord> &words)
{
    requireAmong(words, m_library.photoIDs(), QStringLiteral("library"));
    return idsFrom(words);
}
