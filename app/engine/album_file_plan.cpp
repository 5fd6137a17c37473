#include "engine/album_file_plan.h"

#include "base/file_names.h"
#include "engine/album_tree.h"

#include <QString>

#include <algorithm>
#include <set>

namespace {

constexpr int fewestDigits = 3;

QByteArray titleName(const Album &album)
{
    const QString title = QString::fromUtf8(album.title);
    return title.trimmed().isEmpty() ? QByteArray("Untitled") : safeFolderName(title);
}

bool isTooLong(const Album &album)
{
    return safeName(QString::fromUtf8(album.title)).size() > longestOnDisks;
}

QByteArray numberSuffix(int number)
{
    return number == 1 ? QByteArray() : " (" + QByteArray::number(number) + ')';
}

std::vector<PlannedAlbumFile> filesOf(const Album &album, const ExportedFiles &exported)
{
    std::vector<PlannedAlbumFile> files;
    const int digits = qMax(fewestDigits, QByteArray::number(qint64(album.assets.size())).size());
    int position = 0;
    for (const qint64 id : album.assets) {
        ++position;
        const auto found = exported.find(id);
        if (found == exported.end())
            continue;
        const QByteArray number = QByteArray::number(position).rightJustified(digits, '0');
        for (const QByteArray &target : found->second)
            files.push_back({number, target});
    }
    return files;
}

QByteArray targetName(const PlannedAlbumFile &file)
{
    return file.target.mid(file.target.lastIndexOf('/') + 1);
}

bool isTooLongInAlbum(const PlannedAlbumFile &file)
{
    return file.number.size() + 1 + targetName(file).size() > longestOnDisks;
}

// Gives each album a path of its own.
class AlbumPaths
{
public:
    explicit AlbumPaths(const Catalog &catalog) : m_tree(catalog) {}

    PlannedAlbum albumWithPath(const Album &album)
    {
        PlannedAlbum planned;
        planned.path = "Albums";
        const std::vector<const Album *> line = m_tree.lineTo(album);
        for (std::size_t i = 0; i + 1 < line.size(); ++i)
            planned.path += '/' + titleName(*line[i]);
        for (const Album *const each : line)
            planned.wasCut = planned.wasCut || isTooLong(*each);
        planned.path += '/' + freeName(planned.path, titleName(album));
        return planned;
    }

private:
    // Many albums may have one title, so that no number is tried twice.
    QByteArray freeName(const QByteArray &folder, const QByteArray &title)
    {
        int &number = m_lastNumbers[comparedName(folder + '/' + title)];
        QByteArray name;
        do {
            const QByteArray suffix = numberSuffix(++number);
            name = cutName(title, longestOnDisks - suffix.size()) + suffix;
        } while (!m_taken.insert(comparedName(folder + '/' + name)).second);
        return name;
    }

    const AlbumTree m_tree;
    std::map<QString, int> m_lastNumbers;
    std::set<QString> m_taken;
};

} // namespace

std::vector<PlannedAlbum> plannedAlbums(const Catalog &catalog, const ExportedFiles &files)
{
    std::vector<PlannedAlbum> albums;
    AlbumPaths paths(catalog);
    for (const Album &album : catalog.albums) {
        if (album.kind == AlbumKind::Folder)
            continue;
        std::vector<PlannedAlbumFile> ofAlbum = filesOf(album, files);
        if (ofAlbum.empty())
            continue;
        albums.push_back(paths.albumWithPath(album));
        albums.back().files = std::move(ofAlbum);
    }
    return albums;
}

QByteArray albumFileName(const PlannedAlbumFile &file, int number)
{
    const QByteArray name = targetName(file);
    const QByteArray stem = nameStem(name);
    const QByteArray end = numberSuffix(number) + name.mid(stem.size());
    return cutName(file.number + ' ' + stem, longestOnDisks - end.size()) + end;
}

int cutNames(const std::vector<PlannedAlbum> &albums)
{
    int count = 0;
    for (const PlannedAlbum &album : albums) {
        count += album.wasCut ? 1 : 0;
        count += int(std::count_if(album.files.begin(), album.files.end(), isTooLongInAlbum));
    }
    return count;
}
