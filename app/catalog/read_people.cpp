#include "catalog/read_people.h"

#include "catalog/ranked_texts.h"
#include "catalog/rows_by_id.h"
#include "catalog/table_scan.h"

namespace {

const char faceTable[] = "ZDETECTEDFACE";

// Of memory, in proportion to what a row takes of the files.
const qint64 bytesPerPerson = 64;

// The columns that say whose face is in which photo.
struct FaceColumns {
    QByteArray asset;
    QByteArray person;
};

std::vector<Person> namedPeople(LibraryTables &tables)
{
    std::vector<Person> people;
    TableScan scan(tables, "ZPERSON");
    const int id = scan.require("Z_PK");
    const int name = scan.require("ZFULLNAME");
    const int uuid = scan.want("ZPERSONUUID");
    scan.setRowBytes(bytesPerPerson);
    while (scan.next()) {
        Person person;
        person.name = scan.text(name);
        const std::optional<qint64> rowId = scan.integer(id);
        if (!rowId || person.name.isNull())
            continue;
        person.id = *rowId;
        person.uuid = scan.text(uuid);
        people.push_back(person);
    }
    putInOrderOfIds(people);
    return people;
}

// Newer systems have the first ones, older ones the second ones. Of columns that are not
// complete, which are told as missing, those are meant that are there in part.
FaceColumns faceColumns(LibraryTables &tables)
{
    const FaceColumns known[] = {{"ZASSETFORFACE", "ZPERSONFORFACE"}, {"ZASSET", "ZPERSON"}};
    for (const FaceColumns &columns : known) {
        if (tables.hasColumn(faceTable, columns.asset) &&
            tables.hasColumn(faceTable, columns.person))
            return columns;
    }
    for (const FaceColumns &columns : known) {
        if (tables.hasColumn(faceTable, columns.asset) ||
            tables.hasColumn(faceTable, columns.person))
            return columns;
    }
    return known[0];
}

// Of photos and videos and the positions of people.
std::vector<LinkRow> faces(LibraryTables &tables, const IdIndex &people)
{
    std::vector<LinkRow> faces;
    const FaceColumns columns = faceColumns(tables);
    TableScan scan(tables, faceTable);
    const int asset = scan.require(columns.asset);
    const int person = scan.require(columns.person);
    while (scan.next()) {
        const std::optional<IdIndex::Position> shown = people.find(scan.integer(person));
        const std::optional<qint64> photo = shown ? scan.integer(asset) : std::nullopt;
        if (photo)
            faces.push_back({*photo, *shown});
    }
    return faces;
}

void setNames(AssetRows &rows, const std::vector<Person> &people, std::vector<Links::Link> faces)
{
    std::vector<QByteArray> all;
    all.reserve(people.size());
    for (const Person &person : people)
        all.push_back(person.name);
    const RankedTexts names(all);
    for (Links::Link &face : faces)
        face.second = names.rank(face.second);
    Links namesOfAssets(rows.assets.size(), faces);
    for (std::size_t asset = 0; asset < rows.assets.size(); ++asset) {
        const Links::Numbers ranks = namesOfAssets.of(asset);
        if (!ranks.isEmpty())
            rows.assets[asset].people = names.texts(ranks);
    }
}

void setAssets(std::vector<Person> &people, const AssetRows &rows, std::vector<Links::Link> faces)
{
    for (Links::Link &face : faces)
        std::swap(face.first, face.second);
    Links assetsOfPeople(people.size(), faces);
    for (std::size_t person = 0; person < people.size(); ++person) {
        const Links::Numbers assets = assetsOfPeople.of(person);
        people[person].assets.reserve(assets.size());
        for (const quint32 asset : assets)
            people[person].assets.push_back(rows.ids[asset]);
    }
}

} // namespace

PeopleRows readPeople(LibraryTables &tables)
{
    PeopleRows rows;
    rows.people = namedPeople(tables);
    rows.faces = faces(tables, indexOf(rows.people));
    return rows;
}

std::vector<Person> setPeople(AssetRows &rows, PeopleRows people)
{
    const std::vector<Links::Link> faces = joined(people.faces, rows.byId);
    setNames(rows, people.people, faces);
    setAssets(people.people, rows, faces);
    return std::move(people.people);
}
