#include "sample/album_plan.h"

namespace sample {

namespace {

constexpr qint64 rootFolderPk = 1;
constexpr qint64 projectRootPk = 2;
constexpr qint64 travelFolderPk = 4;

class AlbumList
{
public:
    /// Adds an album of the next key, which is returned for its further fields.
    AlbumPlan &add(int kind, int entity, const QString &title, quint32 memberSlots = 0)
    {
        AlbumPlan album;
        album.pk = ++m_lastPk;
        album.kind = kind;
        album.entity = entity;
        album.title = title;
        album.memberSlots = memberSlots;
        m_albums.append(album);
        return m_albums.last();
    }

    /// Leaves the keys of albums that were deleted unused.
    void skip(int keys) { m_lastPk += keys; }

    void moveInto(qint64 folderPk, qint64 albumPk)
    {
        for (AlbumPlan &album : m_albums)
            if (album.pk == albumPk)
                album.parentPk = folderPk;
    }

    QVector<AlbumPlan> albums() const { return m_albums; }

private:
    QVector<AlbumPlan> m_albums;
    qint64 m_lastPk = 0;
};

void addFolders(AlbumList &list, const Entities &entities)
{
    list.add(RootFolderKind, entities.folder, QString());
    list.add(ProjectRootKind, entities.folder, QString());
    list.add(SyncProgressKind, entities.album, QStringLiteral("progress-sync"), slotBits({15}));
    list.add(FolderKind, entities.folder, QStringLiteral("Reisen")).parentPk = rootFolderPk;
}

void sortBy(AlbumPlan &album, AlbumSortKey key, bool isAscending)
{
    album.sortKey = key;
    album.isAscending = isAscending;
}

void addUserAlbums(AlbumList &list, const Entities &entities)
{
    sortBy(list.add(UserKind, entities.album, QStringLiteral("Summer by the Sea"),
                    slotBits({0, 1, 2, 3, 8})),
           ByDate, true);
    AlbumPlan &renamed =
        list.add(UserKind, entities.album, QStringLiteral("日本 🗾 2018"), slotBits({7, 9, 10, 11}));
    renamed.firstTitle = QStringLiteral("Untitled Album");
    renamed.parentPk = travelFolderPk;
    sortBy(renamed, ByDate, false);
    list.add(UserKind, entities.album, QString(), slotBits({4, 5, 6}));
    AlbumPlan &towns = list.add(UserKind, entities.album, QStringLiteral("Århus – Kraków, für Zoë"),
                                slotBits({0, 9, 12}));
    towns.parentPk = travelFolderPk;
    sortBy(towns, ByTitle, true);
}

/// Adds a folder in a folder, with the album before it in it, and a project.
void addNestedFolder(AlbumList &list, const Entities &entities)
{
    AlbumPlan &folder = list.add(FolderKind, entities.folder, QStringLiteral("Städte"));
    folder.parentPk = travelFolderPk;
    list.moveInto(folder.pk, folder.pk - 1);
    list.add(ProjectKind, entities.projectAlbum, QStringLiteral("Kalender 2018"), slotBits({0, 8}))
        .parentPk = projectRootPk;
}

void addOtherAlbums(AlbumList &list, const Entities &entities)
{
    list.add(UserKind, entities.album, QStringLiteral("Empty"));
    list.add(SyncedKind, entities.album, QStringLiteral("Família"), slotBits({0, 15, 16}));
    list.add(SyncedKind, entities.album, QString());
    sortBy(list.add(SharedKind, entities.sharedAlbum, QStringLiteral("Shared: Wedding"),
                    slotBits({17, 18})),
           ByTitle, false);
    list.add(ImportKind, entities.importSession, QString(), slotBits({9, 10, 11}));
    list.add(SmartKind, entities.fetchingAlbum, QStringLiteral("Favourites"));
    list.add(BuiltInKind, entities.fetchingAlbum, QString());
    list.add(FetchingKind, entities.fetchingAlbum, QString());
}

void addTrashedAlbum(AlbumList &list, const Entities &entities)
{
    list.add(UserKind, entities.album, QStringLiteral("Old Trip"), slotBits({7, 13})).trashedState =
        1;
}

/// Adds albums that only newer readers are to see: one has the name of another, which is in
/// another folder.
void addFamilyFolder(AlbumList &list, const Entities &entities)
{
    AlbumPlan &folder = list.add(FolderKind, entities.folder, QStringLiteral("Familie"));
    folder.parentPk = rootFolderPk;
    const qint64 folderPk = folder.pk;
    AlbumPlan &summer = list.add(UserKind, entities.album, QStringLiteral("Summer by the Sea"),
                                 slotBits({0, 1, 8, 18}));
    summer.parentPk = folderPk;
    sortBy(summer, ByTitle, false);
}

} // namespace

bool AlbumPlan::holds(const AssetPlan &asset) const
{
    if (kind == CameraRollKind)
        return asset.isInCameraRoll();
    return (memberSlots >> asset.slot & 1U) != 0;
}

QVector<AlbumPlan> albumsOf(const DatabaseModel &model)
{
    const Entities &entities = model.entities;
    AlbumList list;
    addFolders(list, entities);
    if (model.schema == SampleSchema::Early)
        list.add(CameraRollKind, entities.album, QStringLiteral("Camera Roll"));
    addUserAlbums(list, entities);
    if (model.hasDetails())
        addNestedFolder(list, entities);
    else
        list.skip(2);
    addOtherAlbums(list, entities);
    if (model.hasDetails())
        addTrashedAlbum(list, entities);
    AlbumPlan &added =
        list.add(UserKind, entities.album, QStringLiteral("Added Yesterday"), slotBits({1, 19}));
    added.onlyInLog = true;
    sortBy(added, ByHand, false);
    if (!model.hasGenericAssets())
        addFamilyFolder(list, entities);
    return list.albums();
}

} // namespace sample
