// Writes the inputs that the fuzzing starts from: seed_writer FOLDER.

#include "support/photos_database.h"

#include <QDir>
#include <QFile>

#include <cstdio>

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

bool writeDatabases(const QString &folder)
{
    return writeSmall(folder, "late", database(Schema::late())) &&
           writeSmall(folder, "early", database(Schema::early())) &&
           writeSmall(folder, "hostile", hostile()) && write(folder, "log", withLog());
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
        std::fprintf(stderr, "can not write to %s\n", argv[1]);
    return isWritten ? 0 : 1;
}
