#ifndef PHOTOLIB_CATALOG_READ_PEOPLE_H
#define PHOTOLIB_CATALOG_READ_PEOPLE_H

#include "catalog/asset_rows.h"
#include "catalog/library_tables.h"
#include "catalog/link_rows.h"

/// The people who have a name, and their faces.
struct PeopleRows {
    std::vector<Person> people; ///< by id
    std::vector<LinkRow> faces; ///< of the ids of photos and videos and the positions of people
};

PeopleRows readPeople(LibraryTables &tables);

/// Tells the photos and videos in `rows` and the people, whom it returns, of each other.
std::vector<Person> setPeople(AssetRows &rows, PeopleRows people);

#endif // PHOTOLIB_CATALOG_READ_PEOPLE_H
