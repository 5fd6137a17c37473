#include "sample/classic_plan.h"

#include "sample/album_plan.h"
#include "sample/dates.h"

#include <array>

namespace sample {

namespace {

// No films, nothing from the trash and nothing that readers leave out.
constexpr std::array<int, 16> photoSlots = {0, 1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 15, 16, 18, 19};
constexpr int photosPerOuting = static_cast<int>(photoSlots.size());
constexpr quint32 firstId = 100; // devices keep lower ones for themselves

int slotOf(int index)
{
    return photoSlots.at(static_cast<std::size_t>(index % photosPerOuting));
}

int assetIndex(int index)
{
    return index / photosPerOuting * outingSize + slotOf(index);
}

SampleOptions libraryOptions(const ClassicSampleOptions &options)
{
    SampleOptions library;
    constexpr int listedPerOuting = outingSize - 1;
    library.assets = (options.photos / photosPerOuting + 1) * listedPerOuting;
    library.seed = options.seed;
    library.schema = SampleSchema::Early; // the years when these devices were sold
    return library;
}

/// Cameras of the time gave four pictures of three to the frame of a television.
void enlarge(AssetPlan &asset)
{
    asset.width = asset.width * 8 / 5;
    asset.height = asset.height * 8 / 5;
}

ClassicAlbumPlan userAlbum(const QString &name, quint32 memberSlots = 0)
{
    ClassicAlbumPlan album;
    album.name = name;
    album.memberSlots = memberSlots;
    return album;
}

} // namespace

ClassicPlan::ClassicPlan(const ClassicSampleOptions &options)
    : m_options(options), m_library(libraryOptions(options))
{
}

quint32 ClassicPlan::photoId(int index)
{
    return firstId + static_cast<quint32>(assetIndex(index));
}

bool ClassicPlan::isMember(const ClassicAlbumPlan &album, int index)
{
    return album.isMaster || (album.memberSlots >> slotOf(index) & 1U) != 0;
}

ClassicPhotoPlan ClassicPlan::photo(int index) const
{
    ClassicPhotoPlan photo;
    photo.index = index;
    photo.id = photoId(index);
    photo.asset = m_library.asset(assetIndex(index));
    enlarge(photo.asset);
    const QString date =
        dateTime(static_cast<qint64>(photo.asset.created)).toString(QStringLiteral("yyyy/MM/dd"));
    if (index % 3 != 2)
        photo.originalPath =
            QStringLiteral("Full Resolution/%1/%2").arg(date, photo.asset.fileName);
    return photo;
}

QVector<ClassicAlbumPlan> classicAlbums()
{
    ClassicAlbumPlan library = userAlbum(QStringLiteral("Photo Library"));
    library.isMaster = true;
    ClassicAlbumPlan summer =
        userAlbum(QStringLiteral("Summer by the Sea"), slotBits({0, 1, 3, 8}));
    summer.slideSeconds = 3;
    summer.transition = QStringLiteral("Dissolve");
    ClassicAlbumPlan travels =
        userAlbum(QStringLiteral("Århus – Kraków, für Zoë"), slotBits({0, 9, 13}));
    travels.isWide = true;
    return {library,
            summer,
            travels,
            userAlbum(QStringLiteral("日本 2012"), slotBits({7, 9, 10, 11})),
            userAlbum(QStringLiteral("Series"), slotBits({4, 5, 6})),
            userAlbum(QStringLiteral("Empty"))};
}

} // namespace sample
