#ifndef PHOTOLIB_CLI_PHOTO_CSV_H
#define PHOTOLIB_CLI_PHOTO_CSV_H

#include "catalog/asset.h"

#include <vector>

class Output;

/// The names of the fields, as RFC 4180 has them, with the end of the line.
QByteArray photoCsvHeader();

/// The record that docs/json.md describes for one photo or video, likewise.
QByteArray photoCsvRecord(const Asset &photo);

/// Writes the photos and videos in this order, behind the names of the fields. For a terminal,
/// texts are made safe to show. Throws Error like `output`.
void writePhotosAsCsv(const std::vector<const Asset *> &photos, Output &output);

#endif // PHOTOLIB_CLI_PHOTO_CSV_H
