#ifndef PHOTOLIB_SAMPLE_PROPERTY_LISTS_H
#define PHOTOLIB_SAMPLE_PROPERTY_LISTS_H

#include <QByteArray>
#include <QtGlobal>

namespace sample {

/// The sync plist, as XML: a dictionary with libraryUUID.
/// `uuid` is the text form. Throws SampleError.
QByteArray currentLibraryPlist(const QByteArray &uuid);

/// The plist, as XML, beside a photo that was edited `editedAt` seconds after
/// 2001-01-01 00:00:00 UTC. Throws SampleError.
QByteArray adjustmentsPlist(qint64 editedAt);

/// The binary plist that a database keeps about itself, with its model's version.
/// Throws SampleError.
QByteArray storeMetadata(int modelVersion);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_PROPERTY_LISTS_H
