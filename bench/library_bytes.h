#ifndef PHOTOLIB_BENCH_LIBRARY_BYTES_H
#define PHOTOLIB_BENCH_LIBRARY_BYTES_H

#include "ios/photo_manager.h"

#include <QList>

#include <memory>
#include <string>
#include <vector>

/// A part of the heap, by name.
struct NamedBytes {
    std::string name;
    qint64 bytes;
};

qint64 sumOf(const std::vector<NamedBytes> &parts);

/// All that these records take, with what they share: a text that several of them share counts
/// once. Without the members of the albums, unless wanted.
qint64 recordBytes(const QList<Camera_Data *> &assets, const QList<Camera_Album *> &albums,
                   bool withMembers);

/// Takes a library apart and tells what each part freed. The parts are those that a release
/// without a destructor leaves behind, so the object's own storage is not among them.
std::vector<NamedBytes> takeApart(std::unique_ptr<photo_manager> manager);

#endif // PHOTOLIB_BENCH_LIBRARY_BYTES_H
