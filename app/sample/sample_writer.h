#ifndef PHOTOLIB_SAMPLE_SAMPLE_WRITER_H
#define PHOTOLIB_SAMPLE_SAMPLE_WRITER_H

#include <QString>

#include <atomic>

/// The generation of database that a sample device holds.
enum class SampleSchema {
    Early, ///< no subtype, trash or burst columns; a Camera Roll album; join table Z_15ASSETS
    Late,  ///< all columns; no Camera Roll album; join table Z_23ASSETS among decoys
};

/// What a sample device holds. Equal options give equal files, byte for byte.
struct SampleOptions {
    /// Rows of the asset table, 0 to maxSampleAssets. About one in twenty is of a kind that
    /// readers leave out.
    int assets = 60;
    quint32 seed = 1;
    SampleSchema schema = SampleSchema::Late;
    /// Without pictures only the database and the sync plist are written: the database still
    /// names and sizes the files that are not there.
    bool pictures = true;
};

/// The largest number of assets that a sample can have.
constexpr int maxSampleAssets = 5000000;

/// Writes a sample device, laid out as a device's media root, into the folder `dir.`
///
/// `dir` must not exist (it is made, with its parents) or be an empty folder. The result
/// depends on `options` alone: not on the time, the locale, the process or the machine's
/// random source. Files carry the dates of their assets.
///
/// Returns true when all is written. On failure returns false, says why in `*error` (one
/// line that names the thing and the cause; must not be null), and removes everything that
/// this call made, parents of `dir` included; an empty folder that was there stays.
///
/// May be called on any thread, and on several at once for different folders. Another thread
/// makes it fail soon by setting `*isCancelled`.
bool writeSample(const QString &dir, const SampleOptions &options, QString *error,
                 const std::atomic<bool> *isCancelled = nullptr);

#endif // PHOTOLIB_SAMPLE_SAMPLE_WRITER_H
