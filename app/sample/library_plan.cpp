#include "sample/library_plan.h"

#include "sample/random.h"

namespace sample {

namespace {

constexpr int fileNumbers = 10000; // IMG_0000 to IMG_9999
constexpr int stepSeconds = 75;    // from one asset of an outing to the next
constexpr qint64 shortestSpacing = qint64{outingSize} * stepSeconds;
constexpr qint64 daySeconds = 86400;

enum Purpose : quint64 {
    UuidPurpose = 1,
    BurstPurpose,
    DatePurpose,
    ScenePurpose,
    SizePurpose,
    OutingPurpose
};

void setSize(AssetPlan &plan, int width, int height)
{
    plan.width = width;
    plan.height = height;
}

void makeVideo(AssetPlan &plan, int subtype)
{
    plan.kind = 1;
    plan.kindSubtype = subtype;
    setSize(plan, 320, 180);
}

/// Where assets come from in the libraries that readers take apart by these types.
void giveGenericSource(AssetPlan &plan, int outing)
{
    constexpr int left[] = {SharedType, CloudType, SharedType, MessagesType, ReferencedType};
    constexpr int films[] = {LocalType, UndefinedType, SyncedType};
    switch (plan.slot) {
    case SecondFilm:
        plan.savedType = films[outing % 3];
        break;
    case SyncedPhoto:
        plan.savedType = SyncedType;
        break;
    case ReceivedPhoto:
        plan.savedType = outing % 2 == 0 ? StreamType : BoothType;
        break;
    case LeftOut:
        plan.savedType = plan.isVideo() ? int(StreamType) : left[outing % 5];
        break;
    default:
        break;
    }
}

/// Where they come from in newer libraries, of which readers leave out shared copies only.
void giveAssetSource(AssetPlan &plan, int outing)
{
    constexpr int received[] = {MessagesType, ReferencedType, BoothType};
    switch (plan.slot) {
    case SecondFilm:
        plan.savedType = outing % 3 == 1 ? CloudType : LocalType;
        break;
    case SyncedPhoto:
        plan.savedType = CloudType;
        plan.hasSource = outing % 2 == 1; // the others are still in the cloud only
        break;
    case ReceivedPhoto:
        plan.savedType = received[outing % 3];
        break;
    case LeftOut:
        plan.savedType = SharedType;
        break;
    default:
        break;
    }
}

void makeSecondFilm(AssetPlan &plan, int outing)
{
    constexpr int subtypes[] = {101, 102, 103}; // slow motion, time lapse, the screen
    makeVideo(plan, subtypes[outing % 3]);
}

void makeUnsized(AssetPlan &plan, int outing)
{
    plan.hasAttributes = outing % 2 == 0;
    plan.sizeRecorded = false;
}

/// What follows from the slot alone, for the commoner slots.
void giveShape(AssetPlan &plan)
{
    switch (plan.slot) {
    case Portrait:
        plan.orientation = 6;
        setSize(plan, 300, 400);
        break;
    case UpsideDown:
        plan.orientation = 3;
        break;
    case Panorama:
        plan.kindSubtype = 1;
        setSize(plan, 900, 225);
        break;
    case ImportSecond:
        setSize(plan, 300, 300);
        break;
    case Screenshot:
        plan.kindSubtype = 10;
        plan.subject = Subject::Screen;
        setSize(plan, 225, 400);
        break;
    case ReceivedPhoto:
        setSize(plan, 96, 64); // smaller than any thumbnail frame
        break;
    case LivePhoto:
        plan.kindSubtype = 2;
        break;
    default:
        break;
    }
}

void giveKind(AssetPlan &plan, int outing)
{
    constexpr int panorama = 6;
    setSize(plan, 400, 300);
    giveShape(plan);
    // Some cameras' panoramas are known by how they were made only.
    plan.customRendering = plan.slot == FirstView && outing % 2 == 1 ? panorama : 0;
    switch (plan.slot) {
    case Film:
        makeVideo(plan, 0);
        break;
    case SecondFilm:
        makeSecondFilm(plan, outing);
        break;
    case LeftOut:
        if (outing % 3 == 2)
            makeVideo(plan, 0);
        break;
    case SizeUnknown:
        makeUnsized(plan, outing);
        break;
    default:
        break;
    }
}

/// A folder that takes ten thousand files, as many as there are file names.
QString sharedFolder(const char *pattern, const AssetPlan &plan)
{
    return QString::fromLatin1(pattern).arg(100 + plan.index / fileNumbers);
}

QString directoryOf(const AssetPlan &plan)
{
    switch (plan.savedType) {
    case SyncedType:
        return sharedFolder("PhotoData/Sync/%1SYNCD", plan);
    case SharedType:
        return sharedFolder("PhotoData/PhotoCloudSharingData/%1CLOUD", plan);
    case CloudType:
        return sharedFolder("PhotoData/CPLAssets/group%1", plan);
    case StreamType:
        return sharedFolder("PhotoData/PhotoStreamsData/%1APPLE", plan);
    default:
        // The camera's folders take a thousand files; the first one was begun late, so that
        // small samples have two.
        return QStringLiteral("DCIM/%1APPLE").arg(100 + (plan.index + 960) / 1000);
    }
}

/// 600ths of a second; the first films of a library end close to a half second, where
/// rounding shows.
int filmTicks(int index, Random &random)
{
    if (index == Film)
        return 1500; // 2.5 s
    if (index == Film + outingSize)
        return 1494; // 2.49 s
    return random.between(600, 600 * 40);
}

// As many rows as hold `assets` that are listed: no more than needed.
int rowsFor(int assets)
{
    constexpr int listedSize = outingSize - 1;
    const int rest = assets % listedSize;
    return assets / listedSize * outingSize + rest + (rest > LeftOut ? 1 : 0);
}

/// Most names are those that cameras give. Only newer readers take others for what they are.
QString filePattern(const AssetPlan &plan, const DatabaseModel &model)
{
    if (!model.hasGenericAssets() && plan.slot == ImportLast)
        return QStringLiteral("Straße_%1.%2");
    if (!model.hasGenericAssets() && plan.slot == ReceivedPhoto)
        return QStringLiteral("写真_%1.%2");
    return QStringLiteral("IMG_%1.%2");
}

/// What else there is of an asset. Outings take turns.
void giveOtherFiles(AssetPlan &plan, bool isOddOuting)
{
    // An early library has no word for live photos. The camera made some all the same.
    plan.hasLiveFilm = plan.slot == LivePhoto;
    plan.filmExtension = QLatin1String(isOddOuting ? "mov" : "MOV");
    plan.hasRaw = plan.slot == ImportFirst && !isOddOuting;
    plan.isEdited =
        plan.slot == EditedLater || (isOddOuting && (plan.slot == LivePhoto || plan.slot == Film));
    plan.hasRecipeBeside = plan.slot == EditedLater && !isOddOuting;
}

double withMillis(qint64 seconds, int millis)
{
    return static_cast<double>(seconds) + static_cast<double>(millis) / 1000.0;
}

} // namespace

LibraryPlan::LibraryPlan(const SampleOptions &options)
    : m_options(options), m_rows(rowsFor(options.assets))
{
    // Three years, as long as outings keep at least 25 minutes and at most a month apart.
    const qint64 outings = m_rows / outingSize + 1;
    m_outingSpacing = qBound<qint64>(shortestSpacing, 1095 * daySeconds / outings, 30 * daySeconds);
}

qint64 LibraryPlan::outingStart(int outing) const
{
    const qint64 june2013 = 391737600 + 8 * 3600; // eight in the morning
    const qint64 march2017 = 510019200 + 8 * 3600;
    // Somewhat irregular, but never into the next outing.
    const qint64 slack = m_outingSpacing - shortestSpacing;
    Random random(m_options.seed, OutingPurpose, static_cast<quint64>(outing));
    const qint64 days = random.below(static_cast<int>(slack / daySeconds) + 1) / 2;
    const qint64 seconds = random.below(static_cast<int>(qMin<qint64>(slack, 36000)) / 2 + 1);
    return (isLate() ? march2017 : june2013) + m_outingSpacing * outing + daySeconds * days +
           seconds;
}

qint64 LibraryPlan::endDate() const
{
    return outingStart(m_rows / outingSize + 1) + 400 * daySeconds;
}

AssetPlan LibraryPlan::asset(int index) const
{
    AssetPlan plan;
    plan.index = index;
    plan.slot = index % outingSize;
    plan.pk = index + 1 + index / 16; // every seventeenth photo was deleted for good
    plan.attributesPk = plan.pk;
    giveKind(plan, index / outingSize);
    giveSource(plan);
    // Attribute rows have keys of their own, which need not be their assets' keys.
    if (plan.slot == ImportFirst || plan.slot == ImportSecond) {
        const int other = plan.slot == ImportFirst ? index + 1 : index - 1;
        plan.attributesPk = other + 1 + other / 16;
    }
    plan.uuid = Random(m_options.seed, UuidPurpose, static_cast<quint64>(index)).uuid();
    placeFile(plan);
    giveDates(plan);
    giveScene(plan);
    giveThumbnails(plan);
    return plan;
}

void LibraryPlan::giveSource(AssetPlan &plan) const
{
    const int outing = plan.index / outingSize;
    if (model().hasGenericAssets())
        giveGenericSource(plan, outing);
    else
        giveAssetSource(plan, outing);
    // What is in the cloud only, or where a computer keeps it, has no file here.
    if (plan.savedType == ReferencedType || (plan.isLeftOut() && plan.savedType == CloudType))
        plan.hasSource = false;
}

void LibraryPlan::placeFile(AssetPlan &plan) const
{
    Random random(m_options.seed, SizePurpose, static_cast<quint64>(plan.index));
    plan.directory = directoryOf(plan);
    plan.fileName = filePattern(plan, model())
                        .arg((plan.index + 1) % fileNumbers, 4, 10, QLatin1Char('0'))
                        .arg(QLatin1String(plan.isVideo() ? "MOV" : "JPG"));
    if (plan.isVideo())
        plan.durationTicks = filmTicks(plan.index, random);
    plan.claimedSize = plan.isVideo() ? 30LL * plan.durationTicks + random.between(5000, 90000)
                                      : random.between(8000, 48000);
    giveOtherFiles(plan, plan.index / outingSize % 2 == 1);
    if (plan.index == UpsideDown) // one photo whose file got lost
        plan.hasSource = false;
}

void LibraryPlan::giveDates(AssetPlan &plan) const
{
    Random random(m_options.seed, DatePurpose, static_cast<quint64>(plan.index));
    // The frames of a burst and the photos of an import share the second of the first one.
    int slot = isBurst(plan.slot) ? int(BurstFirst) : plan.slot;
    slot = isImport(slot) ? int(ImportFirst) : slot;
    const qint64 start = outingStart(plan.index / outingSize);
    const qint64 second = start + qint64{slot} * stepSeconds;
    const int frame = isBurst(plan.slot) ? plan.slot - BurstFirst : 0;
    int millis = isBurst(plan.slot) ? 125 + 250 * frame : random.below(1000);
    millis = isImport(slot) ? 0 : millis; // imports keep whole seconds only

    plan.created = withMillis(second, millis);
    plan.modified = plan.created;
    if (plan.isEdited)
        plan.modified =
            withMillis(second + daySeconds * random.between(1, 200), random.below(1000));
    if (isLate() && plan.slot == ThrownAway)
        plan.trashed = withMillis(second + daySeconds * random.between(1, 30), random.below(1000));
    if (isBurst(plan.slot)) {
        const auto outing = static_cast<quint64>(plan.index / outingSize);
        plan.burst = Random(m_options.seed, BurstPurpose, outing).uuid();
        plan.burstFrame = frame;
    }
}

void LibraryPlan::giveScene(AssetPlan &plan) const
{
    int scene = plan.index;
    if (isBurst(plan.slot))
        scene -= plan.slot - BurstFirst; // all frames show one scene
    plan.sceneSeed = Random(m_options.seed, ScenePurpose, static_cast<quint64>(scene)).next();
    plan.scenePhase = 60 * plan.burstFrame;
}

void LibraryPlan::giveThumbnails(AssetPlan &plan) const
{
    plan.hasLargeThumbnail = plan.slot == EditedLater || plan.index % 3 != 2;
    // An edited photo loses its record of the packed file.
    if (plan.slot == EditedLater)
        return;
    const int outing = plan.index / outingSize;
    plan.thumbnailIndex = plan.index - outing - (plan.slot > EditedLater ? 1 : 0);
}

} // namespace sample
