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

/// The entity numbers of a database model, from which its join table gets its names. They
/// follow from that of `Album`.
struct Entities {
    int album;

    int genericAlbum() const { return album - 1; }
    int sharedAlbum() const { return album + 1; }
    int fetchingAlbum() const { return album + 4; }
    int folder() const { return album + 5; }
    int importSession() const { return album + 6; }
    int genericAsset() const { return album + 7; }
    int asset() const { return album + 8; }
};

Entities entitiesOf(SampleSchema schema);

/// One row of the album table.
struct AlbumPlan {
    qint64 pk = 0;
    int entity = 0;
    int kind = 2;
    QString title;       ///< null when the album has none
    QString firstTitle;  ///< the title before a renaming that only the log holds; null when none
    qint64 parentPk = 0; ///< 0 when none
    int trashedState = 0;
    bool onlyInLog = false;
    /// Bit n: the n-th asset of every outing is a member.
    quint32 memberSlots = 0;

    bool holds(const AssetPlan &asset) const;
};

/// The albums of a sample, by ascending key: every kind that readers admit, and some that
/// they leave out.
QVector<AlbumPlan> albumsOf(SampleSchema schema);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_ALBUM_PLAN_H
