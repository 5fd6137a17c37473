#ifndef PHOTOLIB_BENCH_CATALOG_DATABASE_H
#define PHOTOLIB_BENCH_CATALOG_DATABASE_H

#include <string>

/// What a library holds whose catalog is read.
struct CatalogSize {
    int assets = 0;
    int keywords = 0; ///< most photos have one or two
    int people = 0;   ///< as many faces as photos
    int albums = 100; ///< half of the photos are in one, a tenth in two
};

/// Writes the database `path` of a library with photos, their attributes, some captions, keywords,
/// people, albums in each of the orders, and imports. Exits the program with a message on any
/// error.
void writeCatalogDatabase(const std::string &path, const CatalogSize &size);

#endif // PHOTOLIB_BENCH_CATALOG_DATABASE_H
