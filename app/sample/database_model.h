#ifndef PHOTOLIB_SAMPLE_DATABASE_MODEL_H
#define PHOTOLIB_SAMPLE_DATABASE_MODEL_H

#include "sample/sample_options.h"

namespace sample {

/// The entity numbers of a database model, from which its join tables get their names; 0 for an
/// entity that the model does not have.
struct Entities {
    int assetDescription;
    int detectedFace;
    int genericAlbum;
    int album;
    int sharedAlbum;
    int projectAlbum;
    int fetchingAlbum;
    int folder;
    int importSession;
    int genericAsset;
    int asset;
    int keyword;
    int memory;
    int person;
    int suggestion;
};

/// A generation of the database: what its tables are called and which there are. The columns
/// say for themselves in which generations they exist.
struct DatabaseModel {
    SampleSchema schema;
    int version; ///< what the database calls itself
    const char *assetTable;
    Entities entities;

    /// The entity that relations to assets are named after.
    int relatedAsset() const
    {
        return entities.genericAsset != 0 ? entities.genericAsset : entities.asset;
    }
    bool hasGenericAssets() const { return entities.genericAsset != 0; }
    /// Whether uuids are stored as text, and not as 16 bytes.
    bool hasTextUuids() const { return !hasGenericAssets(); }
    /// Whether keywords, people, captions and imports are stored.
    bool hasDetails() const { return schema != SampleSchema::Early; }
    /// Whether the pictures on albums' covers stand in a table of their own.
    bool hasKeyAssetsTable() const { return schema >= SampleSchema::V18; }
};

const DatabaseModel &modelOf(SampleSchema schema);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_DATABASE_MODEL_H
