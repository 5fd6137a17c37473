#ifndef PHOTOLIB_BENCH_PARSE_FLOOR_H
#define PHOTOLIB_BENCH_PARSE_FLOOR_H

#include <string>

/// The least that reading a library takes: copies the three files from below `root` to
/// `workFolder` in blocks of 4 MiB, steps the plug-in's statements, and keeps the rows in
/// plain structures. `isZasset` tells which table the assets are in. Returns the number of
/// assets; exits the program on an error.
std::size_t parseFloor(const std::string &root, const std::string &workFolder, bool isZasset);

#endif // PHOTOLIB_BENCH_PARSE_FLOOR_H
