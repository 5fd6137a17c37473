#include "sample/photos_database.h"

#include "sample/property_lists.h"
#include "sample/random.h"
#include "sample/row_inserter.h"
#include "sample/sample_error.h"
#include "sample/write_ahead_log.h"

#include <QStringList>

#include <sqlite3.h>

namespace sample {

namespace {

// A number apart from the purposes of the assets' random numbers.
constexpr quint64 albumUuidPurpose = 100;
constexpr quint64 libraryUuidPurpose = 101;
constexpr int assetsPerTransaction = 10000;

QByteArray number(qint64 value)
{
    return QByteArray::number(value);
}

QByteArray numbered(int entity, const char *relation)
{
    return "Z_" + number(entity) + relation;
}

QByteArray joinTable(const DatabaseModel &model)
{
    return numbered(model.entities.album, "ASSETS");
}

QByteArrayList joinColumns(const DatabaseModel &model)
{
    const QByteArray asset = number(model.relatedAsset()) + "ASSETS";
    return {numbered(model.entities.album, "ALBUMS"), "Z_" + asset, "Z_FOK_" + asset};
}

QByteArray keyAssetsTable(const DatabaseModel &model)
{
    return numbered(model.entities.genericAlbum, "KEYASSETS");
}

QByteArrayList keyAssetsColumns(const DatabaseModel &model)
{
    const QByteArray asset = number(model.relatedAsset()) + "KEYASSETS";
    return {numbered(model.entities.genericAlbum, "ALBUMSBEINGKEYASSETS"), "Z_" + asset,
            "Z_FOK_" + asset};
}

/// A relation of the assets to something else than albums; its name resembles that of the
/// join table.
QByteArray decoyStatement(const DatabaseModel &model, const char *relation, int otherEntity)
{
    const QByteArray own = numbered(model.relatedAsset(), relation);
    return relationStatement(own, {own, numbered(otherEntity, relation)});
}

/// Libraries that came from older systems keep the old numbers in the names of indexes.
QByteArray joinIndexStatement(const DatabaseModel &model)
{
    const QByteArrayList columns = joinColumns(model);
    return "CREATE INDEX Z_26ASSETS_Z_34ASSETS_INDEX ON " + joinTable(model) + " (" +
           columns.at(1) + ", " + columns.at(0) + ')';
}

struct EntityName {
    int number;
    const char *name;
    int parent;
};

QVector<EntityName> detailEntityNames(const Entities &entities)
{
    return {{entities.assetDescription, "AssetDescription", 0},
            {entities.detectedFace, "DetectedFace", 0},
            {entities.projectAlbum, "ProjectAlbum", entities.album},
            {entities.keyword, "Keyword", 0},
            {entities.memory, "Memory", 0},
            {entities.person, "Person", 0},
            {entities.suggestion, "Suggestion", 0}};
}

QVector<EntityName> entityNames(const DatabaseModel &model)
{
    const Entities &entities = model.entities;
    QVector<EntityName> names = {{1, "AdditionalAssetAttributes", 0},
                                 {entities.genericAlbum, "GenericAlbum", 0},
                                 {entities.album, "Album", entities.genericAlbum},
                                 {entities.sharedAlbum, "CloudSharedAlbum", entities.album},
                                 {entities.fetchingAlbum, "FetchingAlbum", entities.genericAlbum},
                                 {entities.folder, "Folder", entities.genericAlbum},
                                 {entities.importSession, "ImportSession", entities.genericAlbum},
                                 {entities.asset, "Asset", entities.genericAsset}};
    if (model.hasGenericAssets())
        names.append({entities.genericAsset, "GenericAsset", 0});
    if (model.hasDetails())
        names += detailEntityNames(entities);
    return names;
}

} // namespace

struct PhotosDatabase::Inserts {
    Inserts(const Database &database, const DatabaseModel &model)
        : assets(database, model.assetTable, assetColumns(model.schema)),
          attributes(database, "ZADDITIONALASSETATTRIBUTES", attributeColumns(model.schema)),
          albums(database, "ZGENERICALBUM", albumColumns(model.schema)),
          memberships(database, insertStatement(joinTable(model), joinColumns(model)))
    {
    }

    RowInserter<AssetRow> assets;
    RowInserter<AssetRow> attributes;
    RowInserter<AlbumRow> albums;
    Statement memberships;
};

PhotosDatabase::PhotosDatabase(const QString &path, const LibraryPlan &plan)
    : m_path(path), m_plan(plan), m_model(plan.model()), m_albums(albumsOf(m_model)),
      m_database(path), m_memberCounts(m_albums.size(), 0), m_firstMembers(m_albums.size(), 0)
{
    // Every setting that shapes the file is named, since builds of SQLite differ in their
    // defaults. With the exclusive lock the log's index stays in memory.
    m_database.run("PRAGMA page_size = 4096;"
                   "PRAGMA auto_vacuum = INCREMENTAL;"
                   "PRAGMA encoding = 'UTF-8';"
                   "PRAGMA secure_delete = OFF;"
                   "PRAGMA cache_size = 20000;"
                   "PRAGMA synchronous = OFF;"
                   "PRAGMA locking_mode = EXCLUSIVE;"
                   "PRAGMA journal_mode = OFF;"
                   "BEGIN");
    for (const AlbumPlan &album : qAsConst(m_albums))
        if (album.kind == ImportKind)
            m_importSessionPk = album.pk;
    createTables();
    m_inserts = std::make_unique<Inserts>(m_database, m_model);
    if (m_model.hasDetails())
        m_details = std::make_unique<DetailTables>(m_database, plan);
    addAlbums();
}

PhotosDatabase::~PhotosDatabase() = default;

void PhotosDatabase::createTables()
{
    const SampleSchema schema = m_model.schema;
    m_database.run("CREATE TABLE Z_METADATA "
                   "(Z_VERSION INTEGER PRIMARY KEY, Z_UUID VARCHAR(255), Z_PLIST BLOB)");
    m_database.run("CREATE TABLE Z_PRIMARYKEY (Z_ENT INTEGER PRIMARY KEY, Z_NAME VARCHAR, "
                   "Z_SUPER INTEGER, Z_MAX INTEGER)");
    m_database.run(createStatement("ZADDITIONALASSETATTRIBUTES", attributeColumns(schema)));
    m_database.run(createStatement("ZGENERICALBUM", albumColumns(schema)));
    m_database.run(createStatement(m_model.assetTable, assetColumns(schema)));
    createRelations();
    m_database.run("CREATE INDEX ZADDITIONALASSETATTRIBUTES_ZASSET_INDEX ON "
                   "ZADDITIONALASSETATTRIBUTES (ZASSET)");
    m_database.run("CREATE INDEX ZGENERICALBUM_ZPARENTFOLDER_INDEX ON ZGENERICALBUM "
                   "(ZPARENTFOLDER)");
    const QByteArray assets = m_model.assetTable;
    m_database.run("CREATE INDEX " + assets + "_ZMOMENT_INDEX ON " + assets + " (ZMOMENT)");
    addMetadata();
}

void PhotosDatabase::createRelations()
{
    const Entities &entities = m_model.entities;
    if (m_model.hasDetails())
        m_database.run(
            decoyStatement(m_model, "SUGGESTIONSBEINGREPRESENTATIVEASSETS", entities.suggestion));
    if (m_model.hasKeyAssetsTable())
        m_database.run(relationStatement(keyAssetsTable(m_model), keyAssetsColumns(m_model)));
    m_database.run(relationStatement(joinTable(m_model), joinColumns(m_model)));
    if (m_model.hasDetails())
        m_database.run(decoyStatement(m_model, "MEMORIESBEINGCURATEDASSETS", entities.memory));
    if (!m_model.hasGenericAssets())
        m_database.run(joinIndexStatement(m_model));
}

void PhotosDatabase::addMetadata()
{
    Statement metadata(m_database, "INSERT INTO Z_METADATA VALUES (1, ?, ?)");
    Random random(m_plan.options().seed, libraryUuidPurpose, 0);
    metadata.bind(1, QString::fromLatin1(uuidText(random.uuid())));
    metadata.bind(2, storeMetadata(m_model.version));
    metadata.run();

    Statement entity(m_database, "INSERT INTO Z_PRIMARYKEY VALUES (?, ?, ?, 0)");
    for (const EntityName &name : entityNames(m_model)) {
        entity.bind(1, qint64{name.number});
        entity.bind(2, QString::fromLatin1(name.name));
        entity.bind(3, qint64{name.parent});
        entity.run();
    }
}

void PhotosDatabase::addAlbums()
{
    for (AlbumPlan album : qAsConst(m_albums)) {
        if (album.onlyInLog)
            continue;
        if (!album.firstTitle.isNull())
            album.title = album.firstTitle;
        addAlbum(album);
    }
}

void PhotosDatabase::addAlbum(const AlbumPlan &album)
{
    const auto pk = static_cast<quint64>(album.pk);
    const QByteArray uuid = Random(m_plan.options().seed, albumUuidPurpose, pk).uuid();
    const qint64 age = 86400 * (100 - album.pk);
    m_inserts->albums.insert(
        {album, m_model, uuid, 0, static_cast<double>(m_plan.endDate() - age)});
}

void PhotosDatabase::addAsset(const AssetPlan &asset, qint64 fileSize)
{
    if (asset.index == m_plan.firstLoggedAsset())
        startLog();
    if (m_logStarted && m_assetsInTransaction == assetsPerTransaction) {
        m_database.run("COMMIT; BEGIN");
        m_assetsInTransaction = 0;
    }
    ++m_assetsInTransaction;
    addRows(asset, asset.sizeRecorded ? fileSize : 0);
    addMemberships(asset);
}

void PhotosDatabase::addRows(const AssetPlan &asset, qint64 fileSize)
{
    const AssetDetails details = detailsOf(asset, m_plan);
    const bool hasCaption = m_details && asset.hasAttributes && !details.caption.isNull();
    const AssetRow row = {asset,
                          details,
                          m_model,
                          fileSize,
                          hasCaption ? m_details->nextCaptionPk() : 0,
                          details.isImported ? m_importSessionPk : 0};
    m_inserts->assets.insert(row);
    if (asset.hasAttributes)
        m_inserts->attributes.insert(row);
    if (m_details)
        m_details->addAsset(row);
}

void PhotosDatabase::addMemberships(const AssetPlan &asset)
{
    for (int i = 0; i < m_albums.size(); ++i) {
        // An album that only the log knows can have members there only.
        if (!m_albums.at(i).holds(asset) || (m_albums.at(i).onlyInLog && !m_logStarted))
            continue;
        addMember(i, asset);
    }
}

void PhotosDatabase::addMember(int album, const AssetPlan &asset)
{
    const AlbumPlan &plan = m_albums.at(album);
    const qint64 position = m_memberCounts[album]++;
    if (m_firstMembers.at(album) == 0)
        m_firstMembers[album] = asset.pk;
    // Newer assets name their import themselves.
    if (plan.kind == ImportKind && !m_model.hasGenericAssets())
        return;
    m_inserts->memberships.bind(1, plan.pk);
    m_inserts->memberships.bind(2, asset.pk);
    // Somebody changed each photo with the next one.
    m_inserts->memberships.bind(3, 1024 * ((position ^ 1) + 1));
    m_inserts->memberships.run();
}

void PhotosDatabase::startLog()
{
    m_database.run("COMMIT;"
                   "PRAGMA journal_mode = WAL;"
                   "PRAGMA wal_autocheckpoint = 0;"
                   "BEGIN");
    m_logStarted = true;
    m_assetsInTransaction = 0;
    for (const AlbumPlan &album : qAsConst(m_albums))
        if (album.onlyInLog)
            addAlbum(album);
}

void PhotosDatabase::addLoggedChanges()
{
    Statement update(m_database, "UPDATE ZGENERICALBUM SET ZTITLE = ?, ZCACHEDCOUNT = ? "
                                 "WHERE Z_PK = ?");
    for (int i = 0; i < m_albums.size(); ++i) {
        const QString &title = m_albums.at(i).title;
        update.bind(1, title.isNull() ? Value() : Value(title));
        update.bind(2, m_memberCounts.at(i));
        update.bind(3, m_albums.at(i).pk);
        update.run();
    }
    if (m_model.hasDetails())
        addKeyAssets();
    if (m_details)
        m_details->finish();
    noteLargestKeys();
}

void PhotosDatabase::addKeyAssets()
{
    const QByteArray sql = m_model.hasKeyAssetsTable()
                               ? insertStatement(keyAssetsTable(m_model), keyAssetsColumns(m_model))
                               : "UPDATE ZGENERICALBUM SET ZKEYASSET = ?2 WHERE Z_PK = ?1";
    Statement statement(m_database, sql);
    for (int i = 0; i < m_albums.size(); ++i) {
        if (m_firstMembers.at(i) == 0)
            continue;
        statement.bind(1, m_albums.at(i).pk);
        statement.bind(2, m_firstMembers.at(i));
        if (m_model.hasKeyAssetsTable())
            statement.bind(3, qint64{1024});
        statement.run();
    }
}

void PhotosDatabase::noteLargestKeys()
{
    const Entities &entities = m_model.entities;
    QVector<EntityName> tables = {{entities.genericAlbum, "ZGENERICALBUM", 0},
                                  {m_model.relatedAsset(), m_model.assetTable, 0},
                                  {1, "ZADDITIONALASSETATTRIBUTES", 0}};
    if (m_model.hasDetails())
        tables += QVector<EntityName>{{entities.assetDescription, "ZASSETDESCRIPTION", 0},
                                      {entities.keyword, "ZKEYWORD", 0},
                                      {entities.person, "ZPERSON", 0},
                                      {entities.detectedFace, "ZDETECTEDFACE", 0}};
    for (const EntityName &table : qAsConst(tables))
        m_database.run(QByteArray("UPDATE Z_PRIMARYKEY SET Z_MAX = (SELECT ifnull(max(Z_PK), 0) "
                                  "FROM ") +
                       table.name + ") WHERE Z_ENT = " + number(table.number));
}

void PhotosDatabase::finish()
{
    if (!m_logStarted)
        startLog();
    addLoggedChanges();
    m_database.run("COMMIT");
    m_inserts.reset();
    m_details.reset();
    m_database.closeKeepingLog();
    makeLogReproducible(m_path);
    indexLog(m_path);
}

} // namespace sample
