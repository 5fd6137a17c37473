#ifndef PHOTOLIB_CLI_ALBUM_LISTS_H
#define PHOTOLIB_CLI_ALBUM_LISTS_H

#include "catalog/catalog.h"

class JsonWriter;
class Output;

/// Writes the object that docs/json.md describes for one album or folder of `catalog`.
void writeAlbum(const Catalog &catalog, const Album &album, JsonWriter &json);

/// Writes {"albums": [...]} with all albums and folders by id, each on a line of its own. Throws
/// Error like `output`.
void writeAlbumsAsJson(const Catalog &catalog, Output &output);

/// Writes the albums and folders as a table, those in a folder below it and indented. It fits a
/// terminal. Texts are safe to show. Throws Error like `output`.
void writeAlbumsAsTable(const Catalog &catalog, Output &output);

#endif // PHOTOLIB_CLI_ALBUM_LISTS_H
