#ifndef PHOTOLIB_CATALOG_READ_KEYWORDS_H
#define PHOTOLIB_CATALOG_READ_KEYWORDS_H

#include "catalog/asset_rows.h"
#include "catalog/join_table.h"
#include "catalog/link_rows.h"
#include "catalog/ranked_texts.h"

/// The titles of keywords, and whose they are.
struct KeywordRows {
    RankedTexts titles;
    std::vector<LinkRow> links; ///< of the ids of attributes and the numbers of titles
};

KeywordRows readKeywords(LibraryTables &tables, const EntityNumbers &numbers);

/// Tells the photos and videos in `rows`, which must have been told of their attributes, of their
/// keywords.
void setKeywords(AssetRows &rows, const KeywordRows &keywords);

#endif // PHOTOLIB_CATALOG_READ_KEYWORDS_H
