#include "sample/photos_database.h"

#include "sample/property_lists.h"
#include "sample/random.h"
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

template <typename Row>
QByteArray createStatement(const QByteArray &table, const QVector<Column<Row>> &columns)
{
    QByteArrayList declarations;
    for (const Column<Row> &column : columns)
        declarations.append(QByteArray(column.name) + ' ' + column.type);
    return "CREATE TABLE " + table + " ( " + declarations.join(", ") + " )";
}

template <typename Row>
QByteArray insertStatement(const QByteArray &table, const QVector<Column<Row>> &columns)
{
    QByteArrayList names;
    QByteArrayList marks;
    for (const Column<Row> &column : columns) {
        names.append(column.name);
        marks.append("?");
    }
    return "INSERT INTO " + table + " (" + names.join(", ") + ") VALUES (" + marks.join(", ") + ')';
}

/// Inserts rows of one table.
template <typename Row>
class Inserter
{
public:
    Inserter(const Database &database, const QByteArray &table, QVector<Column<Row>> columns)
        : m_columns(std::move(columns)), m_statement(database, insertStatement(table, m_columns))
    {
    }

    void insert(const Row &row)
    {
        for (int i = 0; i < m_columns.size(); ++i)
            m_statement.bind(i + 1, m_columns.at(i).value(row));
        m_statement.run();
    }

private:
    QVector<Column<Row>> m_columns;
    Statement m_statement;
};

QByteArray number(qint64 value)
{
    return QByteArray::number(value);
}

QByteArray joinTable(const Entities &entities)
{
    return "Z_" + number(entities.album) + "ASSETS";
}

QByteArray joinColumns(const Entities &entities)
{
    const QByteArray asset = number(entities.genericAsset()) + "ASSETS";
    return "Z_" + number(entities.album) + "ALBUMS, Z_" + asset + ", Z_FOK_" + asset;
}

QByteArray joinDefinition(const Entities &entities)
{
    const QByteArrayList names = joinColumns(entities).split(',');
    return "CREATE TABLE " + joinTable(entities) + " ( " + names.join(" INTEGER,") +
           " INTEGER, PRIMARY KEY (" + names.at(0) + ',' + names.at(1) + ") )";
}

/// A relation of the assets to something else than albums; its name resembles that of the
/// join table.
QByteArray decoyDefinition(const Entities &entities, const QByteArray &relation, int otherEntity)
{
    const QByteArray own = "Z_" + number(entities.genericAsset()) + relation;
    const QByteArray other = "Z_" + number(otherEntity) + relation;
    return "CREATE TABLE " + own + " ( " + own + " INTEGER, " + other + " INTEGER, PRIMARY KEY (" +
           own + ", " + other + ") )";
}

QByteArray modelVersion(SampleSchema schema)
{
    return schema == SampleSchema::Late ? "12541" : "9203";
}

struct EntityName {
    int number;
    const char *name;
    int parent;
};

QVector<EntityName> entityNames(const Entities &entities)
{
    return {{1, "AdditionalAssetAttributes", 0},
            {entities.genericAlbum(), "GenericAlbum", 0},
            {entities.album, "Album", entities.genericAlbum()},
            {entities.sharedAlbum(), "CloudSharedAlbum", entities.album},
            {entities.fetchingAlbum(), "FetchingAlbum", entities.genericAlbum()},
            {entities.folder(), "Folder", entities.genericAlbum()},
            {entities.importSession(), "ImportSession", entities.genericAlbum()},
            {entities.genericAsset(), "GenericAsset", 0},
            {entities.asset(), "Asset", entities.genericAsset()}};
}

} // namespace

struct PhotosDatabase::Inserts {
    Inserts(const Database &database, SampleSchema schema, const Entities &entities)
        : assets(database, "ZGENERICASSET", assetColumns(schema)),
          attributes(database, "ZADDITIONALASSETATTRIBUTES", attributeColumns(schema)),
          albums(database, "ZGENERICALBUM", albumColumns(schema)),
          memberships(database, "INSERT INTO " + joinTable(entities) + " (" +
                                    joinColumns(entities) + ") VALUES (?, ?, ?)")
    {
    }

    Inserter<AssetRow> assets;
    Inserter<AssetRow> attributes;
    Inserter<AlbumRow> albums;
    Statement memberships;
};

PhotosDatabase::PhotosDatabase(const QString &path, const LibraryPlan &plan)
    : m_path(path), m_plan(plan), m_entities(entitiesOf(plan.options().schema)),
      m_albums(albumsOf(plan.options().schema)), m_database(path),
      m_memberCounts(m_albums.size(), 0)
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
    createTables();
    m_inserts = std::make_unique<Inserts>(m_database, plan.options().schema, m_entities);
    addAlbums();
}

PhotosDatabase::~PhotosDatabase() = default;

void PhotosDatabase::createTables()
{
    const SampleSchema schema = m_plan.options().schema;
    m_database.run("CREATE TABLE Z_METADATA "
                   "(Z_VERSION INTEGER PRIMARY KEY, Z_UUID VARCHAR(255), Z_PLIST BLOB)");
    m_database.run("CREATE TABLE Z_PRIMARYKEY (Z_ENT INTEGER PRIMARY KEY, Z_NAME VARCHAR, "
                   "Z_SUPER INTEGER, Z_MAX INTEGER)");
    m_database.run(createStatement("ZADDITIONALASSETATTRIBUTES", attributeColumns(schema)));
    m_database.run(createStatement("ZGENERICALBUM", albumColumns(schema)));
    m_database.run(createStatement("ZGENERICASSET", assetColumns(schema)));
    if (m_plan.isLate())
        m_database.run(decoyDefinition(m_entities, "SUGGESTIONSBEINGREPRESENTATIVEASSETS", 44));
    m_database.run(joinDefinition(m_entities));
    if (m_plan.isLate())
        m_database.run(decoyDefinition(m_entities, "MEMORIESBEINGCURATEDASSETS", 36));
    m_database.run("CREATE INDEX ZADDITIONALASSETATTRIBUTES_ZASSET_INDEX ON "
                   "ZADDITIONALASSETATTRIBUTES (ZASSET)");
    m_database.run("CREATE INDEX ZGENERICALBUM_ZPARENTFOLDER_INDEX ON ZGENERICALBUM "
                   "(ZPARENTFOLDER)");
    m_database.run("CREATE INDEX ZGENERICASSET_ZMOMENT_INDEX ON ZGENERICASSET (ZMOMENT)");
    addMetadata();
}

void PhotosDatabase::addMetadata()
{
    Statement metadata(m_database, "INSERT INTO Z_METADATA VALUES (1, ?, ?)");
    Random random(m_plan.options().seed, libraryUuidPurpose, 0);
    metadata.bind(1, QString::fromLatin1(uuidText(random.uuid())));
    metadata.bind(2, storeMetadata(modelVersion(m_plan.options().schema)));
    metadata.run();

    Statement entity(m_database, "INSERT INTO Z_PRIMARYKEY VALUES (?, ?, ?, 0)");
    for (const EntityName &name : entityNames(m_entities)) {
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
    m_inserts->albums.insert({album, uuid, 0, static_cast<double>(m_plan.endDate() - age)});
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
    const AssetRow row = {asset, m_entities, asset.sizeRecorded ? fileSize : 0};
    m_inserts->assets.insert(row);
    if (asset.hasAttributes)
        m_inserts->attributes.insert(row);
    addMemberships(asset);
}

void PhotosDatabase::addMemberships(const AssetPlan &asset)
{
    for (int i = 0; i < m_albums.size(); ++i) {
        // An album that only the log knows can have members there only.
        if (!m_albums.at(i).holds(asset) || (m_albums.at(i).onlyInLog && !m_logStarted))
            continue;
        m_inserts->memberships.bind(1, m_albums.at(i).pk);
        m_inserts->memberships.bind(2, asset.pk);
        m_inserts->memberships.bind(3, 1024 * ++m_memberCounts[i]);
        m_inserts->memberships.run();
    }
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
    const QByteArray tables[][2] = {{number(m_entities.genericAlbum()), "ZGENERICALBUM"},
                                    {number(m_entities.genericAsset()), "ZGENERICASSET"},
                                    {"1", "ZADDITIONALASSETATTRIBUTES"}};
    for (const auto &[entity, table] : tables)
        m_database.run("UPDATE Z_PRIMARYKEY SET Z_MAX = (SELECT ifnull(max(Z_PK), 0) FROM " +
                       table + ") WHERE Z_ENT = " + entity);
}

void PhotosDatabase::finish()
{
    if (!m_logStarted)
        startLog();
    addLoggedChanges();
    m_database.run("COMMIT");
    m_inserts.reset();
    m_database.closeKeepingLog();
    makeLogReproducible(m_path);
    indexLog(m_path);
}

} // namespace sample
