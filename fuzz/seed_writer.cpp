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

QByteArray withLog()
{
    PhotosDatabase early = database(Schema::late());
    PhotosRows later;
    later.assets = {photoRow(8, 1)};
    const PhotosFiles files = early.filesWithWal(later);
    QByteArray input;
    for (int shift = 0; shift < 32; shift += 8)
        input.append(static_cast<char>(files.database.size() >> shift & 0xff));
    return input + files.database + files.wal;
}

// Small pages make small files.
bool writeSmall(const QString &folder, const char *name, const PhotosDatabase &database)
{
    QDir().mkpath(folder);
    const QString path = folder + QLatin1Char('/') + QLatin1String(name);
    QFile::remove(path);
    const SqliteOwner db = database.open();
    runSql(db.get(), "PRAGMA page_size = 512; VACUUM INTO '" + path.toStdString() + "'");
    return QFile::exists(path);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    const QString folder = QFile::decodeName(argv[1]) + QStringLiteral("/photos_database");
    const bool isWritten = writeSmall(folder, "late", database(Schema::late())) &&
                           writeSmall(folder, "early", database(Schema::early())) &&
                           write(folder, "log", withLog());
    if (!isWritten)
        std::fprintf(stderr, "can not write to %s\n", argv[1]);
    return isWritten ? 0 : 1;
}
