#ifndef PHOTOLIB_CLI_PHOTO_TABLE_H
#define PHOTOLIB_CLI_PHOTO_TABLE_H

#include "catalog/asset.h"

#include <string>
#include <vector>

class LibrarySession;
class Output;

/// The names of all columns that a table of photos can have.
std::vector<std::string> photoColumnNames();

/// Writes the photos and videos, which are of `session`, as a table with the columns of these
/// names, or without any with those that suit the device and the terminal. It fits a terminal.
/// Texts are safe to show. Throws Error like `output`, and when the device is gone.
void writePhotoTable(LibrarySession &session, const std::vector<const Asset *> &photos,
                     const std::vector<std::string> &columns, Output &output);

#endif // PHOTOLIB_CLI_PHOTO_TABLE_H
