#include "sample/table_columns.h"

#include "sample/random.h"

#include <QDateTime>

namespace sample {

namespace {

constexpr bool late = true;

Value integer(qint64 value)
{
    return value;
}
Value flag(bool value)
{
    return qint64{value ? 1 : 0};
}
Value real(double value)
{
    return value;
}
Value text(const QString &value)
{
    return value;
}
Value blob(const QByteArray &value)
{
    return value;
}
Value none()
{
    return {};
}

Value dateOrNone(double seconds)
{
    return seconds != 0 ? real(seconds) : none();
}
Value titleOrNone(const QString &title)
{
    return title.isNull() ? none() : text(title);
}

/// Seconds on the film, 0 for a photo.
double duration(const AssetRow &row)
{
    return row.plan.durationTicks / 600.0;
}

/// Frames of a burst that the photographer did not pick are kept out of sight.
bool isHiddenFrame(const AssetRow &row)
{
    return !row.plan.burst.isEmpty() && row.plan.burstFrame != 1;
}

int pickType(const AssetRow &row)
{
    if (row.plan.burst.isEmpty())
        return 0;
    return isHiddenFrame(row) ? 2 : 4 | 16;
}

int playbackStyle(const AssetRow &row)
{
    if (row.plan.isVideo())
        return 4;
    return row.plan.hasLiveFilm ? 3 : 1;
}

/// Photos are taken around one of a few places; about one in eight has none.
struct Place {
    double latitude;
    double longitude;
};

Place placeOf(const AssetRow &row)
{
    static const Place places[] = {
        {35.6586, 139.7454}, {56.1567, 10.2108}, {50.0614, 19.9366}, {43.5528, 7.0174}};
    if (row.plan.slot == 13 || row.plan.slot == 16)
        return {-180.0, -180.0};
    Place place = places[row.plan.index / 20 % 4];
    place.latitude += row.plan.slot / 1024.0;
    return place;
}

bool isSideways(const AssetRow &row)
{
    return row.plan.orientation >= 5;
}

QString timestampText(const AssetRow &row)
{
    const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    return reference.addSecs(static_cast<qint64>(row.plan.created))
        .toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"));
}

// Photos and videos. The early model lacks the columns marked late.
const Column<AssetRow> assetTable[] = {
    {"Z_PK", "INTEGER PRIMARY KEY", [](const AssetRow &r) { return integer(r.plan.pk); }},
    {"Z_ENT", "INTEGER", [](const AssetRow &r) { return integer(r.entities.asset()); }},
    {"Z_OPT", "INTEGER", [](const AssetRow &r) { return integer(1 + r.plan.index % 5); }},
    {"ZAVALANCHEPICKTYPE", "INTEGER", [](const AssetRow &r) { return integer(pickType(r)); }, late},
    {"ZCLOUDDELETESTATE", "INTEGER", [](const AssetRow &) { return integer(0); }},
    {"ZCLOUDLOCALSTATE", "INTEGER", [](const AssetRow &) { return integer(0); }},
    {"ZCLOUDPLACEHOLDERKIND", "INTEGER", [](const AssetRow &) { return integer(0); }},
    {"ZCOMPLETE", "INTEGER", [](const AssetRow &) { return integer(1); }},
    {"ZFACEAREAPOINTS", "INTEGER", [](const AssetRow &) { return integer(0); }},
    {"ZFAVORITE", "INTEGER", [](const AssetRow &r) { return flag(r.plan.index % 7 == 1); }},
    {"ZHASADJUSTMENTS", "INTEGER", [](const AssetRow &) { return integer(0); }},
    {"ZHEIGHT", "INTEGER", [](const AssetRow &r) { return integer(r.plan.height); }},
    {"ZHIDDEN", "INTEGER", [](const AssetRow &r) { return flag(r.plan.index % 41 == 33); }},
    {"ZKIND", "INTEGER", [](const AssetRow &r) { return integer(r.plan.kind); }},
    {"ZKINDSUBTYPE", "INTEGER", [](const AssetRow &r) { return integer(r.plan.kindSubtype); },
     late},
    {"ZORIENTATION", "INTEGER", [](const AssetRow &r) { return integer(r.plan.orientation); }},
    {"ZPLAYBACKSTYLE", "INTEGER", [](const AssetRow &r) { return integer(playbackStyle(r)); },
     late},
    {"ZSAVEDASSETTYPE", "INTEGER", [](const AssetRow &r) { return integer(r.plan.savedType); }},
    {"ZTHUMBNAILINDEX", "INTEGER",
     [](const AssetRow &r) { return integer(r.plan.thumbnailIndex); }},
    {"ZTRASHEDSTATE", "INTEGER", [](const AssetRow &r) { return flag(r.plan.trashed != 0); }, late},
    {"ZVISIBILITYSTATE", "INTEGER",
     [](const AssetRow &r) { return integer(isHiddenFrame(r) ? 2 : 0); }, late},
    {"ZWIDTH", "INTEGER", [](const AssetRow &r) { return integer(r.plan.width); }},
    {"ZADDITIONALATTRIBUTES", "INTEGER",
     [](const AssetRow &r) {
         return r.plan.hasAttributes ? integer(r.plan.attributesPk) : none();
     }},
    {"ZMASTER", "INTEGER", [](const AssetRow &) { return none(); }},
    {"ZMOMENT", "INTEGER", [](const AssetRow &r) { return integer(1 + r.plan.index / 20); }},
    {"ZADDEDDATE", "TIMESTAMP", [](const AssetRow &r) { return real(r.plan.created + 1.5); }, late},
    {"ZDATECREATED", "TIMESTAMP", [](const AssetRow &r) { return real(r.plan.created); }},
    {"ZDURATION", "FLOAT", [](const AssetRow &r) { return real(duration(r)); }},
    {"ZLATITUDE", "FLOAT", [](const AssetRow &r) { return real(placeOf(r).latitude); }},
    {"ZLONGITUDE", "FLOAT", [](const AssetRow &r) { return real(placeOf(r).longitude); }},
    {"ZMODIFICATIONDATE", "TIMESTAMP", [](const AssetRow &r) { return real(r.plan.modified); }},
    // The token is there for every photo, in a burst or not.
    {"ZSORTTOKEN", "FLOAT",
     [](const AssetRow &r) { return real(r.plan.created + r.plan.burstFrame / 8.0); }, late},
    {"ZTRASHEDDATE", "TIMESTAMP", [](const AssetRow &r) { return dateOrNone(r.plan.trashed); },
     late},
    {"ZAVALANCHEUUID", "VARCHAR",
     [](const AssetRow &r) {
         return r.plan.burst.isEmpty() ? none() : text(QString::fromLatin1(uuidText(r.plan.burst)));
     },
     late},
    {"ZDIRECTORY", "VARCHAR", [](const AssetRow &r) { return text(r.plan.directory); }},
    {"ZFILENAME", "VARCHAR", [](const AssetRow &r) { return text(r.plan.fileName); }},
    {"ZUNIFORMTYPEIDENTIFIER", "VARCHAR",
     [](const AssetRow &r) {
         return text(r.plan.isVideo() ? QStringLiteral("com.apple.quicktime-movie")
                                      : QStringLiteral("public.jpeg"));
     }},
    {"ZUUID", "BLOB", [](const AssetRow &r) { return blob(r.plan.uuid); }},
    {"ZLOCATIONDATA", "BLOB", [](const AssetRow &) { return none(); }},
};

const Column<AssetRow> attributeTable[] = {
    {"Z_PK", "INTEGER PRIMARY KEY", [](const AssetRow &r) { return integer(r.plan.attributesPk); }},
    {"Z_ENT", "INTEGER", [](const AssetRow &) { return integer(1); }},
    {"Z_OPT", "INTEGER", [](const AssetRow &) { return integer(1); }},
    {"ZCAMERACAPTUREDEVICE", "INTEGER", [](const AssetRow &) { return integer(0); }, late},
    {"ZORIGINALFILESIZE", "INTEGER", [](const AssetRow &r) { return integer(r.fileSize); }},
    {"ZORIGINALHEIGHT", "INTEGER",
     [](const AssetRow &r) { return integer(isSideways(r) ? r.plan.width : r.plan.height); }},
    {"ZORIGINALORIENTATION", "INTEGER",
     [](const AssetRow &r) { return integer(r.plan.orientation); }},
    {"ZORIGINALWIDTH", "INTEGER",
     [](const AssetRow &r) { return integer(isSideways(r) ? r.plan.height : r.plan.width); }},
    {"ZTIMEZONEOFFSET", "INTEGER", [](const AssetRow &) { return integer(7200); }},
    {"ZVIEWCOUNT", "INTEGER", [](const AssetRow &r) { return integer(r.plan.index % 11); }, late},
    {"ZASSET", "INTEGER", [](const AssetRow &r) { return integer(r.plan.pk); }},
    {"ZDURATION", "FLOAT", [](const AssetRow &r) { return real(duration(r)); }},
    {"ZCREATORBUNDLEID", "VARCHAR", [](const AssetRow &) { return none(); }},
    {"ZEXIFTIMESTAMPSTRING", "VARCHAR", [](const AssetRow &r) { return text(timestampText(r)); }},
    {"ZORIGINALFILENAME", "VARCHAR", [](const AssetRow &r) { return text(r.plan.fileName); }},
    {"ZTIMEZONENAME", "VARCHAR", [](const AssetRow &) { return text(QStringLiteral("GMT+0200")); }},
    {"ZTITLE", "VARCHAR", [](const AssetRow &) { return none(); }},
    {"ZORIGINALHASH", "BLOB", [](const AssetRow &) { return none(); }},
};

const Column<AlbumRow> albumTable[] = {
    {"Z_PK", "INTEGER PRIMARY KEY", [](const AlbumRow &r) { return integer(r.plan.pk); }},
    {"Z_ENT", "INTEGER", [](const AlbumRow &r) { return integer(r.plan.entity); }},
    {"Z_OPT", "INTEGER", [](const AlbumRow &) { return integer(1); }},
    {"ZCACHEDCOUNT", "INTEGER", [](const AlbumRow &r) { return integer(r.assets); }},
    {"ZCUSTOMSORTASCENDING", "INTEGER", [](const AlbumRow &) { return integer(1); }, late},
    {"ZCUSTOMSORTKEY", "INTEGER", [](const AlbumRow &r) { return integer(r.plan.pk % 2); }, late},
    {"ZKIND", "INTEGER", [](const AlbumRow &r) { return integer(r.plan.kind); }},
    {"ZTRASHEDSTATE", "INTEGER", [](const AlbumRow &r) { return integer(r.plan.trashedState); },
     late},
    {"ZPARENTFOLDER", "INTEGER",
     [](const AlbumRow &r) { return r.plan.parentPk != 0 ? integer(r.plan.parentPk) : none(); }},
    {"Z_FOK_PARENTFOLDER", "INTEGER",
     [](const AlbumRow &r) { return r.plan.parentPk != 0 ? integer(1024 * r.plan.pk) : none(); }},
    {"ZCREATIONDATE", "TIMESTAMP", [](const AlbumRow &r) { return real(r.createdAt); }, late},
    {"ZIMPORTSESSIONID", "VARCHAR", [](const AlbumRow &) { return none(); }},
    {"ZTITLE", "VARCHAR", [](const AlbumRow &r) { return titleOrNone(r.plan.title); }},
    {"ZUUID", "BLOB", [](const AlbumRow &r) { return blob(r.uuid); }},
};

template <typename Row, int size>
QVector<Column<Row>> columnsFor(SampleSchema schema, const Column<Row> (&table)[size])
{
    QVector<Column<Row>> columns;
    for (const Column<Row> &column : table)
        if (schema == SampleSchema::Late || !column.onlyLate)
            columns.append(column);
    return columns;
}

} // namespace

QVector<Column<AssetRow>> assetColumns(SampleSchema schema)
{
    return columnsFor(schema, assetTable);
}

QVector<Column<AssetRow>> attributeColumns(SampleSchema schema)
{
    return columnsFor(schema, attributeTable);
}

QVector<Column<AlbumRow>> albumColumns(SampleSchema schema)
{
    return columnsFor(schema, albumTable);
}

} // namespace sample
