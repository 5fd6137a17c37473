#ifndef PHOTOLIB_CATALOG_ASSET_H
#define PHOTOLIB_CATALOG_ASSET_H

#include <QByteArray>
#include <QFlags>

#include <optional>
#include <vector>

/// Seconds since 2001-01-01 00:00 UTC, as the library stores its dates; nothing where it has none.
/// Any number, also far beyond a calendar's years.
using LibraryDate = std::optional<double>;

enum class AssetKind { Photo, Video };

/// Where a photo or video comes from.
enum class AssetSource {
    Local,      ///< the device itself, or a computer that it was copied from
    Cloud,      ///< iCloud
    Referenced, ///< a file that the library only points to
    Messages,
    Shared, ///< a shared album: a copy of somebody's photo
    Other,
};

/// What a photo or video is besides; several at a time.
enum class AssetType {
    Burst = 1,
    Live = 2,
    Panorama = 4,
    Screenshot = 8,
    SlowMotion = 16,
    TimeLapse = 32,
    ScreenRecording = 64,
};
Q_DECLARE_FLAGS(AssetTypes, AssetType)
Q_DECLARE_OPERATORS_FOR_FLAGS(AssetTypes)

/// Degrees, north and east of 0.
struct Location {
    double latitude = 0;
    double longitude = 0;
};

/// One photo or video as the library describes it. Texts are in UTF-8 as far as the library keeps
/// to it, and null where it has none; what is not known is nothing. None of it was checked against
/// the device's files.
struct Asset {
    qint64 id = 0; ///< the library's own number
    AssetKind kind = AssetKind::Photo;
    AssetTypes types;
    std::optional<AssetSource> source;

    QByteArray uuid;         ///< as text, in upper case
    QByteArray directory;    ///< of the file, below the media root
    QByteArray fileName;     ///< of the file on the device
    QByteArray originalName; ///< of the file before it came to the library
    QByteArray title;
    QByteArray caption;

    LibraryDate taken;
    std::optional<int> utcOffset; ///< of `taken`: whole minutes east of UTC, within a day
    LibraryDate modified;
    LibraryDate added;
    LibraryDate trashed; ///< when it went to the trash; nothing unless it is there

    std::optional<qint64> width; ///< pixels, as stored
    std::optional<qint64> height;
    std::optional<qint64> orientation; ///< as in EXIF
    std::optional<double> duration;    ///< seconds of a video
    std::optional<qint64> size;        ///< bytes of the original

    std::optional<bool> favorite;
    std::optional<bool> hidden;
    std::optional<bool> inTrash;
    std::optional<bool> edited;
    std::optional<bool> isInCloud; ///< iCloud has it, so that the device may do without its file

    QByteArray burst;                ///< uuid of the burst that it belongs to
    std::optional<bool> burstPicked; ///< whether it is shown outside the burst
    std::optional<Location> location;

    std::vector<QByteArray> keywords; ///< by code point, each once
    std::vector<QByteArray> people;   ///< their full names, by code point, each once
    std::vector<qint64> albums;       ///< ids of the listed albums that hold it, ascending

    bool isShared() const { return source == AssetSource::Shared; }
    bool isTrashed() const { return inTrash.value_or(false); }

    /// Of the file on the device: "DIRECTORY/NAME", or the name alone; null without a name.
    QByteArray path() const
    {
        return fileName.isNull() || directory.isEmpty() ? fileName : directory + '/' + fileName;
    }
};

#endif // PHOTOLIB_CATALOG_ASSET_H
