#ifndef PHOTOLIB_ENGINE_EXPORT_SOURCES_H
#define PHOTOLIB_ENGINE_EXPORT_SOURCES_H

#include "engine/export_request.h"
#include "engine/export_source.h"

#include <QByteArray>

#include <vector>

class AssetFiles;
class LibrarySession;

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
