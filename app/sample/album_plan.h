#ifndef PHOTOLIB_SAMPLE_ALBUM_PLAN_H
#define PHOTOLIB_SAMPLE_ALBUM_PLAN_H

#include "sample/library_plan.h"

#include <QVector>

#include <initializer_list>

namespace sample {

/// The slots of `list` as bits: slot n is bit n.
constexpr quint32 slotBits(std::initializer_list<int> list)
{
    quint32 bits = 0;
    for (const int slot : list)
        bits |= 1U << slot;
    return bits;
}

/// What the album table calls the kinds of albums.
enum AlbumKind {
    UserKind = 2,
    CameraRollKind = 1000,
    SharedKind = 1505,
    ImportKind = 1506,
    SmartKind = 1507,
    ProjectKind = 1508,
    SyncedKind = 1550,
    BuiltInKind = 1552,
    FetchingKind = 1612,
    SyncProgressKind = 3571,
    ProjectRootKind = 3998,
    RootFolderKind = 3999,
    FolderKind = 4000,
};

/// By what an album sorts its photos.
enum AlbumSortKey { ByHand = 0, ByDate = 1, ByTitle = 5 };

/// One row of the album table.
struct AlbumPlan {
    qint64 pk = 0;
    int entity = 0;
    int kind = UserKind;
    QString title;       ///< null when the album has none
    QString firstTitle;  ///< the title before a renaming that only the log holds; null when none
    qint64 parentPk = 0; ///< 0 when none
    int trashedState = 0;
    int sortKey = ByHand;
    bool isAscending = true;
    bool onlyInLog = false;
    /// Bit n: the n-th asset of every outing is a member.
    quint32 memberSlots = 0;

    bool holds(const AssetPlan &asset) const;
};

/// The albums of a sample, by ascending key: every kind that readers admit, and some that
/// they leave out.
QVector<AlbumPlan> albumsOf(const DatabaseModel &model);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_ALBUM_PLAN_H
