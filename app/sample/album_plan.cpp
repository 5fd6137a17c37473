#include "sample/album_plan.h"

namespace sample {

namespace {

enum Kind {
    UserKind = 2,
    CameraRollKind = 1000,
    SharedKind = 1505,
    ImportKind = 1506,
    SmartKind = 1507,
    SyncedKind = 1550,
    BuiltInKind = 1552,
    FetchingKind = 1612,
    SyncProgressKind = 3571,
    ProjectRootKind = 3998,
    RootFolderKind = 3999,
    FolderKind = 4000,
};

constexpr qint64 rootFolderPk = 1;
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

    QVector<AlbumPlan> albums() const { return m_albums; }

private:
    QVector<AlbumPlan> m_albums;
    qint64 m_lastPk = 0;
};

void addFolders(AlbumList &list, const Entities &entities)
{
    list.add(RootFolderKind, entities.folder(), QString());
    list.add(ProjectRootKind, entities.folder(), QString());
    list.add(SyncProgressKind, entities.album, QStringLiteral("progress-sync"), slotBits({15}));
    list.add(FolderKind, entities.folder(), QStringLiteral("Reisen")).parentPk = rootFolderPk;
}

void addUserAlbums(AlbumList &list, const Entities &entities)
{
    list.add(UserKind, entities.album, QStringLiteral("Summer by the Sea"),
             slotBits({0, 1, 2, 3, 8}));
    AlbumPlan &renamed =
        list.add(UserKind, entities.album, QStringLiteral("日本 🗾 2018"), slotBits({7, 9, 10, 11}));
    renamed.firstTitle = QStringLiteral("Untitled Album");
    renamed.parentPk = travelFolderPk;
    list.add(UserKind, entities.album, QString(), slotBits({4, 5, 6}));
    list.add(UserKind, entities.album, QStringLiteral("Århus – Kraków, für Zoë"),
             slotBits({0, 9, 12}))
        .parentPk = travelFolderPk;
    list.skip(2);
    list.add(UserKind, entities.album, QStringLiteral("Empty"));
}

void addOtherAlbums(AlbumList &list, const Entities &entities)
{
    list.add(SyncedKind, entities.album, QStringLiteral("Família"), slotBits({0, 15, 16}));
    list.add(SyncedKind, entities.album, QString());
    list.add(SharedKind, entities.sharedAlbum(), QStringLiteral("Shared: Wedding"),
             slotBits({17, 18}));
    list.add(ImportKind, entities.importSession(), QString(), slotBits({9, 10, 11}));
    list.add(SmartKind, entities.fetchingAlbum(), QStringLiteral("Favourites"));
    list.add(BuiltInKind, entities.fetchingAlbum(), QString());
    list.add(FetchingKind, entities.fetchingAlbum(), QString());
}

void addTrashedAlbum(AlbumList &list, const Entities &entities)
{
    list.add(UserKind, entities.album, QStringLiteral("Old Trip"), slotBits({7, 13})).trashedState =
        1;
}

} // namespace

Entities entitiesOf(SampleSchema schema)
{
    return {schema == SampleSchema::Late ? 23 : 15};
}

bool AlbumPlan::holds(const AssetPlan &asset) const
{
    if (kind == CameraRollKind)
        return asset.isInCameraRoll();
    return (memberSlots >> asset.slot & 1U) != 0;
}

QVector<AlbumPlan> albumsOf(SampleSchema schema)
{
    const Entities entities = entitiesOf(schema);
    AlbumList list;
    addFolders(list, entities);
    if (schema == SampleSchema::Early)
        list.add(CameraRollKind, entities.album, QStringLiteral("Camera Roll"));
    addUserAlbums(list, entities);
    addOtherAlbums(list, entities);
    if (schema == SampleSchema::Late)
        addTrashedAlbum(list, entities);
    list.add(UserKind, entities.album, QStringLiteral("Added Yesterday"), slotBits({1, 19}))
        .onlyInLog = true;
    return list.albums();
}

} // namespace sample
