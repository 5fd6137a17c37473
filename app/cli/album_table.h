#ifndef PHOTOLIB_CLI_ALBUM_TABLE_H
#define PHOTOLIB_CLI_ALBUM_TABLE_H

class Output;
class photo_manager_int;

/// Writes the albums in display order. Throws Error like `output`.
void writeAlbumTable(photo_manager_int &library, Output &output);

#endif // PHOTOLIB_CLI_ALBUM_TABLE_H
