#ifndef PHOTOLIB_ENGINE_ASSET_WORDS_H
#define PHOTOLIB_ENGINE_ASSET_WORDS_H

#include "catalog/album.h"
#include "catalog/asset.h"

#include <array>

// The words by which lists, filters and JSON name what a library tells by numbers.

/// "photo" or "video".
const char *wordFor(AssetKind kind);

/// "local", "cloud", "referenced", "messages", "shared" or "other".
const char *wordFor(AssetSource source);

/// "album", "shared", "import", "smart", "project" or "folder".
const char *wordFor(AlbumKind kind);

struct AssetTypeWord {
    AssetType type;
    const char *word;
};

/// All types with their words, which are in the order of code points.
const std::array<AssetTypeWord, 7> &assetTypeWords();

#endif // PHOTOLIB_ENGINE_ASSET_WORDS_H
