#ifndef PHOTOLIB_SAMPLE_PHOTOS_DATABASE_H
#define PHOTOLIB_SAMPLE_PHOTOS_DATABASE_H

#include "sample/album_plan.h"
#include "sample/detail_tables.h"
#include "sample/library_plan.h"

#include <QVector>

#include <memory>

namespace sample {

/// Writes Photos.sqlite in write-ahead-log mode: albums and the earlier assets into the main
/// file, the rest into the log only. All operations throw SampleError on failure.
class PhotosDatabase
{
public:
    /// Makes the database, which must not exist yet, with its tables and its albums.
    PhotosDatabase(const QString &path, const LibraryPlan &plan);
    ~PhotosDatabase();

    /// Adds the rows of the next asset; assets come in the order of the plan, all of them.
    /// `fileSize` is that of the source file in bytes.
    void addAsset(const AssetPlan &asset, qint64 fileSize);

    /// Writes what comes after the last asset and closes the files. No other operation may
    /// follow.
    void finish();

private:
    struct Inserts;

    void createTables();
    void createRelations();
    void addMetadata();
    void addAlbums();
    void addAlbum(const AlbumPlan &album);
    void addRows(const AssetPlan &asset, qint64 fileSize);
    void addMemberships(const AssetPlan &asset);
    void addMember(int album, const AssetPlan &asset);
    void startLog();
    void addLoggedChanges();
    void addKeyAssets();
    void noteLargestKeys();

    QString m_path;
    const LibraryPlan &m_plan;
    const DatabaseModel &m_model;
    QVector<AlbumPlan> m_albums;
    Database m_database;
    std::unique_ptr<Inserts> m_inserts;
    std::unique_ptr<DetailTables> m_details; ///< null where the model has none
    qint64 m_importSessionPk = 0;
    int m_assetsInTransaction = 0;
    bool m_logStarted = false;
    QVector<qint64> m_memberCounts; ///< parallel to m_albums
    QVector<qint64> m_firstMembers; ///< likewise; 0 while there is none
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_PHOTOS_DATABASE_H
