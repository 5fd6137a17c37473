// Writes the inputs that the fuzzing starts from: seed_writer FOLDER.

#include "support/photos_database.h"
#include "support/raw_pages.h"

#include <QDir>
#include <QFile>

#include <cstdio>
#include <utility>

namespace {

bool write(const QString &folder, const char *name, const QByteArray &bytes)
{
    QDir().mkpath(folder);
    QFile file(folder + QLatin1Char('/') + QLatin1String(name));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

PhotosDatabase database(const Schema &schema)
{
    PhotosDatabase result;
    result.schema = schema;
    result.rows.libraryUuids = {"45A4A0C8-8612-4893-A017-25E9315171FA"};
    result.rows.assets = {photoRow(1, 5), photoRow(2, 5), videoRow(3, 9)};
    AttributesRow attributes;
    attributes.pk = 1;
    attributes.asset = 1;
    attributes.duration = 2.5;
    attributes.originalFileSize = 77;
    result.rows.attributes = {attributes};
    result.rows.albums = {albumRow(4), albumRow(5, 12)};
    result.join().add(4, 1);
    result.join().add(4, 3);
    return result;
}

QByteArray number(quint32 value)
{
    QByteArray bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes.append(static_cast<char>(value >> shift & 0xff));
    return bytes;
}

QByteArray withLog()
{
    PhotosDatabase early = database(Schema::late());
    PhotosRows later;
    later.assets = {photoRow(8, 1)};
    const PhotosFiles files = early.filesWithWal(later);
    return number(static_cast<quint32>(files.database.size())) + files.database + files.wal;
}

// Small pages make small files.
bool writeSmall(const QString &folder, const char *name, const PhotosDatabase &database)
{
    const QString path = folder + QLatin1Char('/') + QLatin1String(name);
    if (!write(folder, name, database.bytes()))
        return false;
    sqlite3 *db = nullptr;
    sqlite3_open(QFile::encodeName(path).constData(), &db);
    const SqliteOwner owner(db);
    runSql(db, "PRAGMA page_size = 512; VACUUM");
    return true;
}

PhotosDatabase hostile()
{
    PhotosDatabase result = database(Schema::late());
    result.rows.assets[0].fileName = QByteArray("IMG\0.JPG", 8);
    result.rows.assets[1].uuid = 17;
    result.rows.assets[2].modificationDate = "text";
    result.rows.albums[0].title = nullptr;
    result.rows.albums[1].uuid = nullptr;
    result.schema.uniqueKeys = false;
    result.rows.assets.push_back(photoRow(1, 5));
    return result;
}

// Each once ran something, or took minutes or gigabytes.
bool writeAttacks(const QString &folder)
{
    const QByteArray albums = "ZGENERICALBUM: CREATE TABLE ZGENERICALBUM (Z_PK, ZTITLE, ZKIND, "
                              "ZUUID, ZTRASHEDSTATE";
    const QByteArray jump = "fts3_tokenizer('simple', x'4141414141414141')";
    const QByteArray view = "CREATE VIEW ZGENERICALBUM AS SELECT 1 AS Z_PK, 'x' AS ZTITLE, 2 AS "
                            "ZKIND, 3 AS ZUUID, 0 AS ZTRASHEDSTATE FROM ";
    const std::pair<const char *, QByteArray> schemas[] = {
        {"attack_checked_table", "t: CREATE TABLE t (x CHECK (" + jump +
                                     "))\nZGENERICALBUM: " + view + "pragma_integrity_check('t')"},
        {"attack_quick_check", "ZGENERICALBUM: " + view + "pragma_quick_check"},
        {"attack_check", albums + " CHECK (" + jump + "))"},
        {"attack_generated_column", albums + " AS (instr(hex(zeroblob(500000)), '1')))"},
        {"attack_pattern", albums + " AS (hex(zeroblob(500000)) LIKE '%0%0%0%0%0%0%1'))"},
        {"attack_registers", albums + " AS (max(hex(zeroblob(500000)), hex(zeroblob(500001)))))"},
        {"attack_search_index", "ZGENERICALBUM: CREATE VIRTUAL TABLE ZGENERICALBUM USING "
                                "fts5(Z_PK, ZTITLE, ZKIND, ZUUID, content = 'v')\nv: " +
                                    view + "ZGENERICASSET"},
        {"attack_statistics", "sqlite_stat1: CREATE TABLE sqlite_stat1 (tbl, idx, stat AS "
                              "(hex(zeroblob(1000000000))))"},
        {"attack_join_table", "Z_26ASSETS: CREATE VIEW Z_26ASSETS AS SELECT 1"},
        {"attack_second_definition", "other: CREATE TABLE ZGENERICALBUM (a AS (" + jump + "))"},
    };
    bool isWritten = write(folder, "attack_join_table_name",
                           "CREATE TABLE \"Z_METADATA, (select " + jump + ")--ASSETS\" (x)");
    for (const auto &schema : schemas)
        isWritten = isWritten && write(folder, schema.first, "SCHEMA\n" + schema.second);
    return isWritten;
}

// Rows without number in few pages, and a header that suggests to keep all pages.
bool writePages(const QString &folder)
{
    RawPages shared(inPagesOf(512, database(Schema::late()).bytes()));
    const int inner = shared.add();
    const int leaf = shared.add();
    shared.fillLeaf(leaf, {RawValue::number(4), RawValue::number(1), RawValue::null()}, 100);
    shared.fillInner(inner, leaf);
    shared.fillInner(shared.root("Z_26ASSETS"), inner);

    RawPages chain(inPagesOf(512, database(Schema::late()).bytes()));
    const int last = chain.add();
    chain.fillChain(last, last);
    chain.fillChain(chain.root("ZGENERICALBUM"), last);

    QByteArray header = inPagesOf(512, database(Schema::late()).bytes());
    header.replace(48, 4, QByteArray("\x7f\xff\xff\xff", 4));
    return write(folder, "attack_shared_rows", shared.bytes()) &&
           write(folder, "attack_chain", chain.bytes()) &&
           write(folder, "attack_cache_size", header);
}

bool writeDatabases(const QString &folder)
{
    return writeSmall(folder, "late", database(Schema::late())) &&
           writeSmall(folder, "early", database(Schema::early())) &&
           writeSmall(folder, "hostile", hostile()) && write(folder, "log", withLog()) &&
           writeAttacks(folder) && writePages(folder);
}

// Of pictures of several sizes in whole records, one packed file each.
bool writeThumbnails(const QString &folder)
{
    const quint32 sizes[] = {0, 1, 40, 64, 120, 157, 332, 0x7fffffff, 0xffffffff};
    for (int file = 0; file < 8; ++file) {
        for (const quint32 size : sizes) {
            const QByteArray trailer =
                QByteArray(16, '\x11') + number(size) + number(size) + QByteArray(4, '\x22');
            const QByteArray input = QByteArray(1, static_cast<char>(1 << file)) +
                                     QByteArray(1, '\x10') + number(size & 1) +
                                     QByteArray(2, '\0') + trailer + "0123456789";
            if (!write(folder, qPrintable(QStringLiteral("record%1_%2").arg(file).arg(size)),
                       input))
                return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    const QString folder = QFile::decodeName(argv[1]);
    const bool isWritten = writeDatabases(folder + QStringLiteral("/photos_database")) &&
                           writeThumbnails(folder + QStringLiteral("/thumbnails"));
    if (!isWritten)
        std::fprintf(stderr, "cannot write to %s\n", argv[1]);
    return isWritten ? 0 : 1;
}
