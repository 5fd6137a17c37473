#ifndef PHOTOLIB_ENGINE_EXPORT_SOURCES_H
#define PHOTOLIB_ENGINE_EXPORT_SOURCES_H

#include "devices/device_file_system.h"
#include "engine/export_request.h"
#include "engine/export_role.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <vector>

class AssetFiles;
class LibrarySession;

/// The content of a file that the program makes.
struct MadeFile {
    QByteArray bytes;
    FileError failure; ///< why there is none, unless its kind is None
};

/// A file of a photo or video that may be exported.
struct ExportSource {
    ExportRole role = ExportRole::Original;
    QByteArray source;    ///< what records know it by: for a file of the device its path there
    QByteArray tail;      ///< between the photo's name and the extension: "_edited"
    QByteArray extension; ///< with its dot: ".JPG"; may be empty
    QString label;        ///< names it in messages
    bool isWanted = true; ///< otherwise only its name is kept free

    // Of a wanted file:
    FileInfo info;     ///< of a file that the program makes, its foretold size and its photo's time
    FileError failure; ///< why there is none, unless its kind is None
    bool isInCloud = false;         ///< that it is in iCloud is why
    std::function<MadeFile()> make; ///< makes it, on the session's thread; null for one to copy
};

/// Finds the files of photos and videos, those of one after the other.
class ExportSources
{
public:
    /// What is given by reference must outlive the object and what it gives.
    ExportSources(LibrarySession &session, const ExportRequest &request, AssetFiles &files);

    /// All files of `asset`, at least one, the original first. Asks the device about those that are
    /// wanted. Throws Error when the device is gone.
    std::vector<ExportSource> of(const Asset &asset);

private:
    std::vector<ExportSource> ofIosAsset(const Asset &asset);
    ExportSource original(const Asset &asset) const;
    static ExportSource missingFilm(const ExportSource &original);
    void measure(ExportSource *source);

    LibrarySession &m_session;
    const ExportRequest &m_request;
    AssetFiles &m_files;
};

/// The name of `asset`'s own file: "IMG_0001.JPG"; its id where the library has none.
QByteArray ownFileName(const Asset &asset);

#endif // PHOTOLIB_ENGINE_EXPORT_SOURCES_H
