#include "sample/detail_tables.h"

#include "sample/random.h"
#include "sample/row_inserter.h"
#include "sample/sample_names.h"

namespace sample {

namespace {

// Numbers apart from the purposes of the other random numbers.
constexpr quint64 keywordUuidPurpose = 310;
constexpr quint64 personUuidPurpose = 311;
constexpr quint64 faceUuidPurpose = 312;

const char *const keywordLinks = "Z_1KEYWORDS";

QByteArrayList keywordLinkColumns(const DatabaseModel &model)
{
    return {"Z_1ASSETATTRIBUTES", "Z_" + QByteArray::number(model.entities.keyword) + "KEYWORDS"};
}

/// The column of the face table that names the asset.
QByteArray faceAssetColumn(const DatabaseModel &model)
{
    return model.schema >= SampleSchema::V16 ? "ZASSETFORFACE" : "ZASSET";
}

// Keys of keywords and people are not their numbers.
qint64 keywordPk(int index)
{
    return index + 1 + index / 10;
}
qint64 personPk(int index)
{
    return 2 * qint64{index} + 3;
}

} // namespace

struct DetailTables::Inserts {
    Inserts(const Database &database, const DatabaseModel &model)
        : captions(database, "ZASSETDESCRIPTION", captionColumns(model.schema)),
          keywords(database, "ZKEYWORD", keywordColumns(model.schema)),
          people(database, "ZPERSON", personColumns(model.schema)),
          faces(database, "ZDETECTEDFACE", faceColumns(model.schema)),
          keywordLink(database, insertStatement(keywordLinks, keywordLinkColumns(model)))
    {
    }

    RowInserter<AssetRow> captions;
    RowInserter<NameRow> keywords;
    RowInserter<NameRow> people;
    RowInserter<FaceRow> faces;
    Statement keywordLink;
};

DetailTables::DetailTables(Database &database, const LibraryPlan &plan)
    : m_database(database), m_plan(plan), m_faceCounts(plan.options().people, 0)
{
    createTables();
    m_inserts = std::make_unique<Inserts>(m_database, plan.model());
    addNames();
}

DetailTables::~DetailTables() = default;

void DetailTables::createTables()
{
    const DatabaseModel &model = m_plan.model();
    m_database.run(createStatement("ZASSETDESCRIPTION", captionColumns(model.schema)));
    m_database.run(createStatement("ZKEYWORD", keywordColumns(model.schema)));
    m_database.run(createStatement("ZPERSON", personColumns(model.schema)));
    m_database.run(createStatement("ZDETECTEDFACE", faceColumns(model.schema)));
    const QByteArrayList links = keywordLinkColumns(model);
    m_database.run(relationStatement(keywordLinks, links));
    m_database.run(QByteArray("CREATE INDEX Z_1KEYWORDS_") + links.at(1) + "_INDEX ON " +
                   keywordLinks + " (" + links.at(1) + ", " + links.at(0) + ')');
    m_database.run("CREATE INDEX ZASSETDESCRIPTION_ZASSETATTRIBUTES_INDEX ON ZASSETDESCRIPTION "
                   "(ZASSETATTRIBUTES)");
    const QByteArray asset = faceAssetColumn(model);
    m_database.run("CREATE INDEX ZDETECTEDFACE_" + asset + "_INDEX ON ZDETECTEDFACE (" + asset +
                   ')');
}

void DetailTables::addNames()
{
    const SampleOptions &options = m_plan.options();
    for (int i = 0; i < options.keywords; ++i) {
        Random random(options.seed, keywordUuidPurpose, static_cast<quint64>(i));
        m_inserts->keywords.insert({keywordTitle(i), m_plan.model(), keywordPk(i), random.uuid()});
    }
    for (int i = 0; i < options.people; ++i) {
        Random random(options.seed, personUuidPurpose, static_cast<quint64>(i));
        m_inserts->people.insert({personName(i), m_plan.model(), personPk(i), random.uuid()});
    }
}

void DetailTables::addAsset(const AssetRow &row)
{
    if (row.captionPk != 0) {
        m_inserts->captions.insert(row);
        m_lastCaptionPk = row.captionPk;
    }
    for (const int keyword : row.details.keywords) {
        m_inserts->keywordLink.bind(1, row.plan.attributesPk);
        m_inserts->keywordLink.bind(2, keywordPk(keyword));
        m_inserts->keywordLink.run();
    }
    addFaces(row);
}

void DetailTables::addFaces(const AssetRow &row)
{
    int position = 0;
    for (const int person : row.details.faces) {
        const bool isKnown = person >= 0;
        if (isKnown)
            ++m_faceCounts[person];
        Random random(m_plan.options().seed, faceUuidPurpose, static_cast<quint64>(++m_lastFacePk));
        m_inserts->faces.insert({row.plan, row.model, m_lastFacePk, isKnown ? personPk(person) : 0,
                                 position++, random.uuid()});
    }
}

void DetailTables::finish()
{
    Statement update(m_database, "UPDATE ZPERSON SET ZFACECOUNT = ? WHERE Z_PK = ?");
    for (int i = 0; i < m_faceCounts.size(); ++i) {
        update.bind(1, m_faceCounts.at(i));
        update.bind(2, personPk(i));
        update.run();
    }
    m_inserts.reset();
}

} // namespace sample
