#ifndef PHOTOLIB_CATALOG_READ_PEOPLE_H
#define PHOTOLIB_CATALOG_READ_PEOPLE_H

#include "catalog/asset_rows.h"
#include "catalog/library_tables.h"

/// Reads the people who have a name, by id, and whom the photos and videos in `rows` show.
std::vector<Person> readPeople(LibraryTables &tables, AssetRows &rows);

#endif // PHOTOLIB_CATALOG_READ_PEOPLE_H
