#include "sample/table_columns.h"

#include "sample/dates.h"
#include "sample/random.h"

namespace sample {

namespace {

constexpr SampleSchema late = SampleSchema::V13;

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
Value textOrNone(const QString &value)
{
    return value.isNull() ? none() : text(value);
}
Value keyOrNone(qint64 pk)
{
    return pk != 0 ? integer(pk) : none();
}
Value uuidValue(const QByteArray &uuid, const DatabaseModel &model)
{
    return model.hasTextUuids() ? text(QString::fromLatin1(uuidText(uuid))) : blob(uuid);
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

bool isSideways(const AssetRow &row)
{
    return row.plan.orientation >= 5;
}

/// 0 visible, 2 kept out of sight: shared copies stand in their albums only.
int visibility(const AssetRow &row)
{
    return isHiddenFrame(row) || row.plan.savedType == SharedType ? 2 : 0;
}

bool isInCloud(const AssetRow &row)
{
    return row.plan.savedType == CloudType;
}

/// What the clock of the camera showed.
QString timestampText(const AssetRow &row)
{
    const qint64 offset = row.details.zoneOffset.value_or(0);
    return dateTime(static_cast<qint64>(row.plan.created) + offset)
        .toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"));
}

/// "GMT+0200".
Value zoneName(const AssetRow &row)
{
    if (!row.details.zoneOffset)
        return none();
    const int minutes = qAbs(*row.details.zoneOffset) / 60;
    return text(QStringLiteral("GMT%1%2%3")
                    .arg(QLatin1Char(*row.details.zoneOffset < 0 ? '-' : '+'))
                    .arg(minutes / 60, 2, 10, QLatin1Char('0'))
                    .arg(minutes % 60, 2, 10, QLatin1Char('0')));
}

Value zoneOffset(const AssetRow &row)
{
    return row.details.zoneOffset ? integer(*row.details.zoneOffset) : none();
}

/// The faces of a photo stand beside each other.
double faceCenter(const FaceRow &row)
{
    return 0.25 + 0.25 * row.position;
}

// Photos and videos. The early model lacks the columns marked late.
const Column<AssetRow> assetTable[] = {
    {"Z_PK", "INTEGER PRIMARY KEY", [](const AssetRow &r) { return integer(r.plan.pk); }},
    {"Z_ENT", "INTEGER", [](const AssetRow &r) { return integer(r.model.entities.asset); }},
    {"Z_OPT", "INTEGER", [](const AssetRow &r) { return integer(1 + r.plan.index % 5); }},
    {"ZAVALANCHEPICKTYPE", "INTEGER", [](const AssetRow &r) { return integer(pickType(r)); }, late},
    {"ZCLOUDDELETESTATE", "INTEGER", [](const AssetRow &) { return integer(0); }},
    {"ZCLOUDLOCALSTATE", "INTEGER", [](const AssetRow &r) { return flag(isInCloud(r)); }},
    {"ZCLOUDPLACEHOLDERKIND", "INTEGER", [](const AssetRow &) { return integer(0); }},
    {"ZCOMPLETE", "INTEGER", [](const AssetRow &) { return integer(1); }},
    {"ZCUSTOMRENDEREDVALUE", "INTEGER",
     [](const AssetRow &r) { return integer(r.plan.customRendering); }, late, SampleSchema::V14},
    {"ZFACEAREAPOINTS", "INTEGER", [](const AssetRow &) { return integer(0); }},
    {"ZFAVORITE", "INTEGER", [](const AssetRow &r) { return flag(r.details.isFavorite); }},
    {"ZHASADJUSTMENTS", "INTEGER", [](const AssetRow &r) { return flag(r.plan.isEdited); },
     SampleSchema::Early, SampleSchema::V16},
    {"ZADJUSTMENTSSTATE", "INTEGER",
     [](const AssetRow &r) { return integer(r.plan.isEdited ? 2 : 0); }, SampleSchema::V18},
    {"ZHDRTYPE", "INTEGER", [](const AssetRow &) { return integer(0); }, SampleSchema::V16},
    {"ZHEIGHT", "INTEGER", [](const AssetRow &r) { return integer(r.plan.height); }},
    {"ZHIDDEN", "INTEGER", [](const AssetRow &r) { return flag(r.details.isHidden); }},
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
    {"ZVISIBILITYSTATE", "INTEGER", [](const AssetRow &r) { return integer(visibility(r)); }, late},
    {"ZWIDTH", "INTEGER", [](const AssetRow &r) { return integer(r.plan.width); }},
    {"ZADDITIONALATTRIBUTES", "INTEGER",
     [](const AssetRow &r) {
         return r.plan.hasAttributes ? integer(r.plan.attributesPk) : none();
     }},
    {"ZIMPORTSESSION", "INTEGER", [](const AssetRow &r) { return keyOrNone(r.importSessionPk); },
     late},
    {"Z_FOK_IMPORTSESSION", "INTEGER",
     [](const AssetRow &r) {
         return r.importSessionPk != 0 ? integer(1024 * (qint64{r.details.importPosition} + 1))
                                       : none();
     },
     late, SampleSchema::V14},
    {"ZMASTER", "INTEGER", [](const AssetRow &) { return none(); }},
    {"ZMOMENT", "INTEGER", [](const AssetRow &r) { return integer(1 + r.plan.index / 20); }},
    {"ZADDEDDATE", "TIMESTAMP", [](const AssetRow &r) { return real(r.plan.created + 1.5); }, late},
    {"ZDATECREATED", "TIMESTAMP", [](const AssetRow &r) { return real(r.plan.created); }},
    {"ZDURATION", "FLOAT", [](const AssetRow &r) { return real(duration(r)); }},
    {"ZLATITUDE", "FLOAT",
     [](const AssetRow &r) { return r.details.place ? real(r.details.place->latitude) : none(); }},
    {"ZLONGITUDE", "FLOAT",
     [](const AssetRow &r) { return r.details.place ? real(r.details.place->longitude) : none(); }},
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
    {"ZUUID", "VARCHAR", [](const AssetRow &r) { return uuidValue(r.plan.uuid, r.model); }},
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
    {"ZTIMEZONEOFFSET", "INTEGER", zoneOffset},
    {"ZINFERREDTIMEZONEOFFSET", "INTEGER", zoneOffset, late},
    {"ZVIEWCOUNT", "INTEGER", [](const AssetRow &r) { return integer(r.plan.index % 11); }, late},
    {"ZASSET", "INTEGER", [](const AssetRow &r) { return integer(r.plan.pk); }},
    {"Z34_ASSET", "INTEGER", [](const AssetRow &r) { return integer(r.model.entities.asset); },
     SampleSchema::V13, SampleSchema::V13},
    {"ZASSETDESCRIPTION", "INTEGER", [](const AssetRow &r) { return keyOrNone(r.captionPk); },
     late},
    {"ZDURATION", "FLOAT", [](const AssetRow &r) { return real(duration(r)); }, SampleSchema::Early,
     SampleSchema::V13},
    {"ZCREATORBUNDLEID", "VARCHAR", [](const AssetRow &) { return none(); }, SampleSchema::Early,
     SampleSchema::V14},
    {"ZIMPORTEDBYBUNDLEIDENTIFIER", "VARCHAR", [](const AssetRow &) { return none(); },
     SampleSchema::V16},
    {"ZEXIFTIMESTAMPSTRING", "VARCHAR", [](const AssetRow &r) { return text(timestampText(r)); }},
    {"ZORIGINALFILENAME", "VARCHAR",
     [](const AssetRow &r) { return textOrNone(r.details.originalName); }},
    {"ZTIMEZONENAME", "VARCHAR", zoneName},
    {"ZTITLE", "VARCHAR", [](const AssetRow &r) { return textOrNone(r.details.title); }},
    {"ZORIGINALHASH", "BLOB", [](const AssetRow &) { return none(); }},
};

const Column<AssetRow> captionTable[] = {
    {"Z_PK", "INTEGER PRIMARY KEY", [](const AssetRow &r) { return integer(r.captionPk); }},
    {"Z_ENT", "INTEGER",
     [](const AssetRow &r) { return integer(r.model.entities.assetDescription); }},
    {"Z_OPT", "INTEGER", [](const AssetRow &) { return integer(1); }},
    {"ZASSETATTRIBUTES", "INTEGER", [](const AssetRow &r) { return integer(r.plan.attributesPk); }},
    {"ZLONGDESCRIPTION", "VARCHAR", [](const AssetRow &r) { return text(r.details.caption); }},
};

const Column<NameRow> keywordTable[] = {
    {"Z_PK", "INTEGER PRIMARY KEY", [](const NameRow &r) { return integer(r.pk); }},
    {"Z_ENT", "INTEGER", [](const NameRow &r) { return integer(r.model.entities.keyword); }},
    {"Z_OPT", "INTEGER", [](const NameRow &) { return integer(1); }},
    {"ZSHORTCUT", "VARCHAR", [](const NameRow &) { return none(); }},
    {"ZTITLE", "VARCHAR", [](const NameRow &r) { return text(r.name); }},
    {"ZUUID", "VARCHAR",
     [](const NameRow &r) { return text(QString::fromLatin1(uuidText(r.uuid))); }},
};

const Column<NameRow> personTable[] = {
    {"Z_PK", "INTEGER PRIMARY KEY", [](const NameRow &r) { return integer(r.pk); }},
    {"Z_ENT", "INTEGER", [](const NameRow &r) { return integer(r.model.entities.person); }},
    {"Z_OPT", "INTEGER", [](const NameRow &) { return integer(1); }},
    {"ZFACECOUNT", "INTEGER", [](const NameRow &) { return integer(0); }},
    {"ZMANUALORDER", "INTEGER", [](const NameRow &r) { return integer(r.pk); }},
    {"ZTYPE", "INTEGER", [](const NameRow &) { return integer(0); }},
    {"ZVERIFIEDTYPE", "INTEGER", [](const NameRow &r) { return flag(!r.name.isEmpty()); }},
    {"ZDISPLAYNAME", "VARCHAR", [](const NameRow &r) { return text(r.name.section(' ', 0, 0)); }},
    {"ZFULLNAME", "VARCHAR", [](const NameRow &r) { return text(r.name); }},
    {"ZPERSONUUID", "VARCHAR",
     [](const NameRow &r) { return text(QString::fromLatin1(uuidText(r.uuid))); }},
};

Value faceAsset(const FaceRow &row)
{
    return integer(row.asset.pk);
}
Value facePerson(const FaceRow &row)
{
    return keyOrNone(row.personPk);
}

// Since people are known by more than their faces, some names say that these are about a face.
const Column<FaceRow> faceTable[] = {
    {"Z_PK", "INTEGER PRIMARY KEY", [](const FaceRow &r) { return integer(r.pk); }},
    {"Z_ENT", "INTEGER", [](const FaceRow &r) { return integer(r.model.entities.detectedFace); }},
    {"Z_OPT", "INTEGER", [](const FaceRow &) { return integer(1); }},
    {"ZASSETVISIBLE", "INTEGER", [](const FaceRow &) { return integer(1); }},
    {"ZHIDDEN", "INTEGER", [](const FaceRow &) { return integer(0); }},
    {"ZISINTRASH", "INTEGER", [](const FaceRow &) { return integer(0); }},
    {"ZMANUAL", "INTEGER", [](const FaceRow &) { return integer(0); }},
    {"ZNAMESOURCE", "INTEGER", [](const FaceRow &r) { return flag(r.personPk != 0); }},
    {"ZSOURCEHEIGHT", "INTEGER", [](const FaceRow &r) { return integer(r.asset.height); }},
    {"ZSOURCEWIDTH", "INTEGER", [](const FaceRow &r) { return integer(r.asset.width); }},
    {"ZASSET", "INTEGER", faceAsset, SampleSchema::V13, SampleSchema::V14},
    {"Z34_ASSET", "INTEGER", [](const FaceRow &r) { return integer(r.model.entities.asset); },
     SampleSchema::V13, SampleSchema::V13},
    {"ZASSETFORFACE", "INTEGER", faceAsset, SampleSchema::V16},
    {"ZPERSON", "INTEGER", facePerson, SampleSchema::V13, SampleSchema::V14},
    {"ZPERSONFORFACE", "INTEGER", facePerson, SampleSchema::V16},
    {"ZCENTERX", "FLOAT", [](const FaceRow &r) { return real(faceCenter(r)); }},
    {"ZCENTERY", "FLOAT", [](const FaceRow &) { return real(0.5); }},
    {"ZSIZE", "FLOAT", [](const FaceRow &) { return real(0.125); }},
    {"ZUUID", "VARCHAR",
     [](const FaceRow &r) { return text(QString::fromLatin1(uuidText(r.uuid))); }},
};

const Column<AlbumRow> albumTable[] = {
    {"Z_PK", "INTEGER PRIMARY KEY", [](const AlbumRow &r) { return integer(r.plan.pk); }},
    {"Z_ENT", "INTEGER", [](const AlbumRow &r) { return integer(r.plan.entity); }},
    {"Z_OPT", "INTEGER", [](const AlbumRow &) { return integer(1); }},
    {"ZCACHEDCOUNT", "INTEGER", [](const AlbumRow &r) { return integer(r.assets); }},
    {"ZCUSTOMSORTASCENDING", "INTEGER", [](const AlbumRow &r) { return flag(r.plan.isAscending); },
     late},
    {"ZCUSTOMSORTKEY", "INTEGER", [](const AlbumRow &r) { return integer(r.plan.sortKey); }, late},
    {"ZKIND", "INTEGER", [](const AlbumRow &r) { return integer(r.plan.kind); }},
    {"ZTRASHEDSTATE", "INTEGER", [](const AlbumRow &r) { return integer(r.plan.trashedState); },
     late},
    {"ZKEYASSET", "INTEGER", [](const AlbumRow &) { return none(); }, late, SampleSchema::V16},
    {"ZPARENTFOLDER", "INTEGER",
     [](const AlbumRow &r) { return r.plan.parentPk != 0 ? integer(r.plan.parentPk) : none(); }},
    {"Z_FOK_PARENTFOLDER", "INTEGER",
     [](const AlbumRow &r) { return r.plan.parentPk != 0 ? integer(1024 * r.plan.pk) : none(); }},
    {"ZCREATIONDATE", "TIMESTAMP", [](const AlbumRow &r) { return real(r.createdAt); }, late},
    {"ZIMPORTSESSIONID", "VARCHAR", [](const AlbumRow &) { return none(); }},
    {"ZTITLE", "VARCHAR", [](const AlbumRow &r) { return textOrNone(r.plan.title); }},
    {"ZUUID", "VARCHAR", [](const AlbumRow &r) { return uuidValue(r.uuid, r.model); }},
};

template <typename Row, int size>
QVector<Column<Row>> columnsFor(SampleSchema schema, const Column<Row> (&table)[size])
{
    QVector<Column<Row>> columns;
    for (const Column<Row> &column : table)
        if (column.since <= schema && schema <= column.until)
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

QVector<Column<AssetRow>> captionColumns(SampleSchema schema)
{
    return columnsFor(schema, captionTable);
}

QVector<Column<NameRow>> keywordColumns(SampleSchema schema)
{
    return columnsFor(schema, keywordTable);
}

QVector<Column<NameRow>> personColumns(SampleSchema schema)
{
    return columnsFor(schema, personTable);
}

QVector<Column<FaceRow>> faceColumns(SampleSchema schema)
{
    return columnsFor(schema, faceTable);
}

} // namespace sample
