#ifndef PHOTOLIB_SAMPLE_WRITE_AHEAD_LOG_H
#define PHOTOLIB_SAMPLE_WRITE_AHEAD_LOG_H

#include <QString>

namespace sample {

/// Replaces what SQLite puts into the database file `path` and into its "-wal" by chance (the
/// salts of the log, with the checksums over them) or from its own release (its version
/// number) by fixed values. Nothing may have the database open. Throws SampleError.
void makeLogReproducible(const QString &path);

/// Makes the "-shm" beside the database `path`, the index that a reader builds of its log.
/// Nothing else may have the database open. Throws SampleError.
void indexLog(const QString &path);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_WRITE_AHEAD_LOG_H
