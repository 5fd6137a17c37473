#include "engine/export_albums.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/file_names.h"
#include "engine/album_disk.h"

#include <cerrno>
#include <map>
#include <set>
#include <system_error>

namespace {

QByteArray folderOf(const QByteArray &path)
{
    return path.left(qMax(path.lastIndexOf('/'), 0));
}

bool isFull(const std::system_error &error)
{
    const int code = error.code().value();
    return code == ENOSPC || code == EDQUOT || code == EROFS;
}

class AlbumsExporter
{
public:
    AlbumsExporter(const AlbumsToExport &albums, int exportFolder, const CancelToken &cancel,
                   const std::function<void(qint64)> &copied)
        : m_kind(albums.kind), m_rightAt(albums.rightAt), m_newFiles(albums.newFiles),
          m_replaced(albums.replaced), m_folder(exportFolder), m_cancel(cancel),
          m_disk(exportFolder, cancel, copied),
          m_albums(plannedAlbums(*albums.catalog, albums.files))
    {
        for (const RecordedAlbumFile &file : albums.recorded) {
            if (file.path.startsWith("Albums/"))
                m_ours[comparedName(file.path)] = {file, false};
        }
    }

    AlbumsResult run()
    {
        try {
            runToTheEnd();
        } catch (const Error &error) {
            if (error.kind() != Error::Cancelled)
                throw;
            m_result.isComplete = false;
        }
        tidyUp();
        for (const auto &each : m_ours)
            m_result.files.push_back(each.second.file);
        std::sort(m_result.files.begin(), m_result.files.end(),
                  [](const auto &one, const auto &other) { return one.path < other.path; });
        return std::move(m_result);
    }

private:
    // What the program has put there, by compared path.
    struct OurFile {
        RecordedAlbumFile file;
        bool isWanted = false;
    };

    struct MissingFile {
        const PlannedAlbum *album;
        const PlannedAlbumFile *file;
        int number; // of its name
    };

    void runToTheEnd()
    {
        m_result.cut = cutNames(m_albums);
        claimFolders();
        for (const PlannedAlbum &album : m_albums)
            findFilesOf(album);
        if (!m_missing.empty())
            requireLinks(m_kind, m_folder);
        removeUnwanted();
        makeMissing();
    }

    // No file is to have the name of a folder.
    void claimFolders()
    {
        for (const PlannedAlbum &album : m_albums) {
            for (QByteArray path = album.path; !path.isEmpty(); path = folderOf(path))
                m_claimed.insert(comparedName(path));
        }
    }

    RecordedAlbumFile wanted(const MissingFile &missing) const
    {
        const QByteArray name = albumFileName(*missing.file, missing.number);
        return {m_kind, missing.album->path + '/' + name, missing.file->target};
    }

    void findFilesOf(const PlannedAlbum &album)
    {
        m_disk.removeScraps(album.path);
        for (const PlannedAlbumFile &file : album.files) {
            requireGoingOn();
            MissingFile missing = {&album, &file, 1};
            doOrFail(wanted(missing).path, [&] { find(missing); });
        }
    }

    // Finds the file where it is right already, or a name for it.
    void find(MissingFile &missing)
    {
        for (;; ++missing.number) {
            const RecordedAlbumFile file = wanted(missing);
            const QString key = comparedName(file.path);
            if (m_claimed.count(key) != 0)
                continue;
            const auto ours = m_ours.find(key);
            const bool isOurs = ours != m_ours.end();
            if (m_disk.holds(file, isOurs && isSame(ours->second.file, file) ? rightAt(file) : 0)) {
                m_claimed.insert(key);
                m_ours[key] = {file, true};
                ++m_result.unchanged;
                return;
            }
            if (!m_disk.isThere(file.path) || (isOurs && isRemovable(ours->second.file))) {
                m_claimed.insert(key);
                m_missing.push_back(missing);
                m_missingTargets.insert(file.target);
                return;
            }
        }
    }

    qint64 rightAt(const RecordedAlbumFile &file) const
    {
        return m_newFiles.count(file.target) == 0 ? m_rightAt : 1;
    }

    bool isRemovable(const RecordedAlbumFile &file) const
    {
        return m_disk.isRemovable(file, rightAt(file)) || isCopyOfReplaced(file);
    }

    bool isCopyOfReplaced(const RecordedAlbumFile &file) const
    {
        const auto replaced = m_replaced.find(file.target);
        return file.kind == RecordedAlbumFile::Copy && replaced != m_replaced.end() &&
               m_disk.hasContent(file.path, replaced->second);
    }

    static bool isSame(const RecordedAlbumFile &one, const RecordedAlbumFile &other)
    {
        return one.kind == other.kind && one.target == other.target;
    }

    void removeUnwanted()
    {
        for (auto ours = m_ours.begin(); ours != m_ours.end();) {
            requireGoingOn();
            const bool stays = ours->second.isWanted || !remove(ours->second.file);
            ours = stays ? std::next(ours) : m_ours.erase(ours);
        }
    }

    // False when it is still there and still the program's.
    bool remove(const RecordedAlbumFile &file)
    {
        m_touchedFolders.insert(folderOf(file.path));
        return doOrFail(file.path, [&] {
            const bool isRight = m_disk.isRemovable(file, rightAt(file));
            if (!isRight && !isCopyOfReplaced(file))
                return;
            if (isRight && isOfUse(file))
                m_setAside.emplace(file.target, m_disk.setAside(file.path));
            else
                m_disk.removeFile(file.path);
            ++m_result.removed;
        });
    }

    // Another photo in an album moves many copies to other names.
    bool isOfUse(const RecordedAlbumFile &file) const
    {
        return file.kind == RecordedAlbumFile::Copy && m_kind == RecordedAlbumFile::Copy &&
               m_missingTargets.count(file.target) != 0;
    }

    void makeMissing()
    {
        const PlannedAlbum *album = nullptr;
        bool hasFolder = false;
        for (const MissingFile &missing : m_missing) {
            requireGoingOn();
            if (missing.album != album)
                hasFolder = makeFolder(*missing.album);
            album = missing.album;
            if (hasFolder)
                doOrFail(wanted(missing).path, [&] { make(missing); });
        }
    }

    bool makeFolder(const PlannedAlbum &album)
    {
        m_touchedFolders.insert(album.path);
        return doOrFail(album.path, [&] { m_disk.makeFolder(album.path); });
    }

    // The name that was found may have been taken since.
    void make(MissingFile missing)
    {
        while (!takeBack(wanted(missing)) && !m_disk.make(wanted(missing))) {
            do
                ++missing.number;
            while (m_claimed.count(comparedName(wanted(missing).path)) != 0);
        }
        const RecordedAlbumFile file = wanted(missing);
        const QString key = comparedName(file.path);
        m_claimed.insert(key);
        m_ours[key] = {file, true};
        ++m_result.made;
    }

    bool takeBack(const RecordedAlbumFile &file)
    {
        const auto aside = m_setAside.find(file.target);
        if (aside == m_setAside.end() || !m_disk.takeBack(aside->second, file.path))
            return false;
        m_setAside.erase(aside);
        return true;
    }

    // What is still set aside has the name of a scrap.
    void tidyUp() const
    {
        for (const QByteArray &path : m_touchedFolders) {
            m_disk.removeScraps(path);
            m_disk.removeEmptyFolders(path);
        }
    }

    // Whether `work` was done. A failure keeps no other file from being worked on.
    bool doOrFail(const QByteArray &path, const std::function<void()> &work)
    {
        try {
            work();
            return true;
        } catch (const std::system_error &error) {
            const QString cause = QString::fromStdString(error.code().message());
            m_result.failures.push_back({QString::fromUtf8(path), cause});
            m_isFull = m_isFull || isFull(error);
        }
        return false;
    }

    void requireGoingOn() const
    {
        if (m_isFull || m_cancel.isCancelled())
            throw Error(Error::Cancelled, "cancelled");
    }

    const RecordedAlbumFile::Kind m_kind;
    const qint64 m_rightAt;
    const std::set<QByteArray> &m_newFiles;
    const std::map<QByteArray, QByteArray> &m_replaced;
    const int m_folder;
    const CancelToken &m_cancel;
    const AlbumDisk m_disk;
    const std::vector<PlannedAlbum> m_albums;
    std::map<QString, OurFile> m_ours;
    std::set<QString> m_claimed; // compared paths
    std::vector<MissingFile> m_missing;
    std::set<QByteArray> m_missingTargets;
    std::multimap<QByteArray, QByteArray> m_setAside; // paths of copies, by target
    std::set<QByteArray> m_touchedFolders;
    bool m_isFull = false; // the disk: nothing more can be made
    AlbumsResult m_result;
};

} // namespace

AlbumsResult exportAlbums(const AlbumsToExport &albums, int exportFolder, const CancelToken &cancel,
                          const std::function<void(qint64)> &copied)
{
    return AlbumsExporter(albums, exportFolder, cancel, copied).run();
}
