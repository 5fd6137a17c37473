#include "catalog/join_table.h"

#include "catalog/table_scan.h"

#include <algorithm>
#include <utility>

namespace {

// What one join table's names are made of, each "Z_", a number, and one of these.
struct JoinNames {
    QByteArray table;
    QByteArray owner;
    QByteArray item;
    std::optional<qint64> ownerNumber; // the table's, too
    std::optional<qint64> itemNumber;
};

QByteArray numbered(qint64 number, const QByteArray &ending)
{
    return "Z_" + QByteArray::number(number) + ending;
}

// As a person is told of it: the number may not be known.
QByteArray nameOf(const QByteArray &ending, std::optional<qint64> number)
{
    return number ? numbered(*number, ending) : "Z_n" + ending;
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

// Whether `name` is "Z_", digits, and `ending`: several other tables of joins end alike.
bool isNumbered(const QByteArray &name, const QByteArray &ending)
{
    const int start = 2;
    const int digits = name.size() - start - ending.size();
    return digits > 0 && name.startsWith("Z_") && name.endsWith(ending) &&
           std::all_of(name.begin() + start, name.begin() + start + digits, isDigit);
}

// The only column of this form, or the one of this number; empty when there is none, or a choice.
QByteArray columnOf(const std::vector<QByteArray> &columns, const QByteArray &ending,
                    std::optional<qint64> number)
{
    const auto isWanted = [&](const QByteArray &name) { return isNumbered(name, ending); };
    if (number && std::count(columns.begin(), columns.end(), numbered(*number, ending)) == 1)
        return numbered(*number, ending);
    if (std::count_if(columns.begin(), columns.end(), isWanted) != 1)
        return QByteArray();
    return *std::find_if(columns.begin(), columns.end(), isWanted);
}

// `table` with its columns; an empty one when it does not have them.
FoundJoin withColumns(LibraryTables &tables, const QByteArray &table, const JoinNames &names)
{
    const std::vector<QByteArray> &columns = tables.columns(table);
    const FoundJoin found = {table, columnOf(columns, names.owner, names.ownerNumber),
                             columnOf(columns, names.item, names.itemNumber)};
    return found.owner.isEmpty() || found.item.isEmpty() ? FoundJoin() : found;
}

// The only table of this form; an empty one when there is none, or a choice.
FoundJoin theOneOfTheForm(LibraryTables &tables, const JoinNames &names)
{
    FoundJoin only;
    for (const QByteArray &name : tables.names()) {
        const FoundJoin found =
            isNumbered(name, names.table) ? withColumns(tables, name, names) : FoundJoin();
        if (found.table.isEmpty())
            continue;
        if (!only.table.isEmpty())
            return FoundJoin();
        only = found;
    }
    return only;
}

// One that cannot be read is told of elsewhere.
void tellMissing(LibraryTables &tables, const QByteArray &table, const JoinNames &names)
{
    if (!tables.has(table))
        tables.tellMissing(table);
    const std::vector<QByteArray> &columns = tables.columns(table);
    if (columns.empty())
        return;
    const std::pair<QByteArray, std::optional<qint64>> wanted[] = {{names.owner, names.ownerNumber},
                                                                   {names.item, names.itemNumber}};
    for (const auto &[ending, number] : wanted) {
        if (columnOf(columns, ending, number).isEmpty())
            tables.tellMissing(table + '.' + nameOf(ending, number));
    }
}

FoundJoin find(LibraryTables &tables, const JoinNames &names)
{
    const QByteArray expected = nameOf(names.table, names.ownerNumber);
    FoundJoin found = withColumns(tables, expected, names);
    if (found.table.isEmpty())
        found = theOneOfTheForm(tables, names);
    if (found.table.isEmpty())
        tellMissing(tables, expected, names);
    return found;
}

} // namespace

EntityNumbers::EntityNumbers(LibraryTables &tables)
{
    TableScan scan(tables, "Z_PRIMARYKEY");
    const int name = scan.require("Z_NAME");
    const int number = scan.require("Z_ENT");
    const int highest = scan.wantQuietly("Z_MAX");
    while (scan.next()) {
        const std::optional<qint64> stored = scan.integer(number);
        if (stored && *stored >= 0)
            m_entities.emplace(scan.text(name), Entity{*stored, scan.integer(highest).value_or(0)});
    }
}

std::optional<qint64> EntityNumbers::of(const QByteArray &entity) const
{
    const auto found = m_entities.find(entity);
    return found == m_entities.end() ? std::nullopt : std::optional<qint64>(found->second.number);
}

qint64 EntityNumbers::highestId(const QByteArray &entity) const
{
    const auto found = m_entities.find(entity);
    return found == m_entities.end() ? 0 : found->second.highestId;
}

// Systems of 2019 have both kinds of asset, and name the column by the older one.
FoundJoin albumJoinTable(LibraryTables &tables, const EntityNumbers &numbers)
{
    const std::optional<qint64> genericAsset = numbers.of("GenericAsset");
    return find(tables, {"ASSETS", "ALBUMS", "ASSETS", numbers.of("Album"),
                         genericAsset ? genericAsset : numbers.of("Asset")});
}

FoundJoin keywordJoinTable(LibraryTables &tables, const EntityNumbers &numbers)
{
    return find(tables, {"KEYWORDS", "ASSETATTRIBUTES", "KEYWORDS",
                         numbers.of("AdditionalAssetAttributes"), numbers.of("Keyword")});
}
