#include "engine/album_tree.h"

#include <algorithm>
#include <set>

namespace {

constexpr int deepest = 64;

// Goes from an album to what is in it, with a list rather than by calls: a damaged library may have
// any depth.
class Walk
{
public:
    using Children = std::multimap<qint64, const Album *>;

    explicit Walk(const Children &children) : m_children(children) {}

    // `top` and what is in it, without what an earlier call told of.
    std::vector<AlbumTree::Line> linesFrom(const Album &top, bool endsAtDeepest)
    {
        std::vector<AlbumTree::Line> lines;
        push({&top, 0});
        while (!m_waiting.empty()) {
            const AlbumTree::Line line = m_waiting.back();
            m_waiting.pop_back();
            lines.push_back(line);
            if (line.depth < deepest || !endsAtDeepest)
                pushChildren(line);
        }
        return lines;
    }

private:
    void push(const AlbumTree::Line &line)
    {
        if (m_known.insert(line.album->id).second)
            m_waiting.push_back(line);
    }

    void pushChildren(const AlbumTree::Line &line)
    {
        const auto range = m_children.equal_range(line.album->id);
        const int depth = std::min(line.depth + 1, deepest);
        for (auto child = range.second; child != range.first;)
            push({(--child)->second, depth});
    }

    const Children &m_children;
    std::set<qint64> m_known;
    std::vector<AlbumTree::Line> m_waiting;
};

} // namespace

AlbumTree::AlbumTree(const Catalog &catalog) : m_catalog(catalog)
{
    for (const Album &album : catalog.albums) {
        if (album.parent)
            m_children.emplace(*album.parent, &album);
    }
}

std::vector<AlbumTree::Line> AlbumTree::lines() const
{
    std::vector<Line> lines;
    Walk walk(m_children);
    const auto append = [&](const Album &top) {
        const std::vector<Line> branch = walk.linesFrom(top, false);
        lines.insert(lines.end(), branch.begin(), branch.end());
    };
    for (const Album &album : m_catalog.albums) {
        if (!album.parent || !m_catalog.album(*album.parent))
            append(album);
    }
    // What is left lies in a ring of folders.
    for (const Album &album : m_catalog.albums)
        append(album);
    return lines;
}

std::vector<qint64> AlbumTree::assetsOf(const Album &album) const
{
    if (album.kind != AlbumKind::Folder)
        return album.assets;
    std::set<qint64> seen;
    std::vector<qint64> assets;
    for (const Line &line : Walk(m_children).linesFrom(album, true)) {
        std::copy_if(line.album->assets.begin(), line.album->assets.end(),
                     std::back_inserter(assets),
                     [&seen](qint64 id) { return seen.insert(id).second; });
    }
    return assets;
}

std::vector<const Album *> AlbumTree::lineTo(const Album &album) const
{
    std::vector<const Album *> line = foldersAround(album, m_catalog);
    line.push_back(&album);
    return line;
}

QByteArray AlbumTree::pathOf(const Album &album) const
{
    QByteArray path;
    for (const Album *folder : foldersAround(album, m_catalog))
        path.append(folder->title).append('/');
    return path.append(album.title);
}

std::vector<const Album *> foldersAround(const Album &album, const Catalog &catalog)
{
    std::vector<const Album *> line = {&album};
    while (line.back()->parent && line.size() <= deepest) {
        const Album *const folder = catalog.album(*line.back()->parent);
        if (!folder || std::find(line.begin(), line.end(), folder) != line.end())
            break;
        line.push_back(folder);
    }
    return std::vector<const Album *>(line.rbegin(), line.rend() - 1);
}
