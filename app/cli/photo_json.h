#ifndef PHOTOLIB_CLI_PHOTO_JSON_H
#define PHOTOLIB_CLI_PHOTO_JSON_H

#include "catalog/asset.h"

#include <vector>

class Output;

/// Writes {"photos": [...]} with the photos and videos in this order, each on a line of its own.
/// Throws Error like `output`.
void writePhotosAsJson(const std::vector<const Asset *> &photos, Output &output);

#endif // PHOTOLIB_CLI_PHOTO_JSON_H
