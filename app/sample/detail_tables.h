#ifndef PHOTOLIB_SAMPLE_DETAIL_TABLES_H
#define PHOTOLIB_SAMPLE_DETAIL_TABLES_H

#include "sample/table_columns.h"

#include <QVector>

#include <memory>

namespace sample {

/// Writes the tables that hold more about assets: captions, keywords, people and their faces.
/// All operations throw SampleError on failure.
class DetailTables
{
public:
    /// Makes the tables, and the rows of all keywords and people.
    DetailTables(Database &database, const LibraryPlan &plan);
    ~DetailTables();

    /// The key that the caption of the next asset will have.
    qint64 nextCaptionPk() const { return m_lastCaptionPk + 1; }

    /// Adds the rows that belong to the next asset.
    void addAsset(const AssetRow &row);

    /// Writes what comes after the last asset. No other operation may follow.
    void finish();

private:
    struct Inserts;

    void createTables();
    void addNames();
    void addFaces(const AssetRow &row);

    Database &m_database;
    const LibraryPlan &m_plan;
    std::unique_ptr<Inserts> m_inserts;
    qint64 m_lastCaptionPk = 0;
    qint64 m_lastFacePk = 0;
    QVector<qint64> m_faceCounts; ///< by person
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_DETAIL_TABLES_H
