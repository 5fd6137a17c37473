#include "engine/library_summary.h"

#include "engine/library_date.h"

#include <limits>
#include <set>

namespace {

constexpr AssetType allTypes[] = {
    AssetType::Burst,      AssetType::Live,      AssetType::Panorama,       AssetType::Screenshot,
    AssetType::SlowMotion, AssetType::TimeLapse, AssetType::ScreenRecording};

class SummaryCounter
{
public:
    SummaryCounter(const Catalog &catalog, const std::function<FileState(const Asset &)> &fileState)
        : m_catalog(catalog), m_fileState(fileState)
    {
    }

    LibrarySummary count()
    {
        for (const Asset &asset : m_catalog.assets) {
            if (asset.isShared())
                ++m_summary.shared;
            else if (asset.isTrashed())
                ++m_summary.trashed;
            else
                add(asset);
        }
        m_summary.bursts = static_cast<int>(m_bursts.size());
        m_summary.people = static_cast<int>(m_catalog.people.size());
        for (const Album &album : m_catalog.albums)
            ++(album.kind == AlbumKind::Folder ? m_summary.folders : m_summary.albums);
        if (m_oldest)
            m_summary.oldest = takenText(*m_oldest);
        if (m_newest)
            m_summary.newest = takenText(*m_newest);
        return m_summary;
    }

private:
    static QString takenText(const Asset &asset)
    {
        return clockText(asset.taken, asset.utcOffset.value_or(0));
    }

    void add(const Asset &asset)
    {
        ++(asset.kind == AssetKind::Video ? m_summary.videos : m_summary.photos);
        for (const AssetType type : allTypes) {
            if (asset.types.testFlag(type))
                ++m_summary.types[type];
        }
        if (asset.source)
            ++m_summary.sources[*asset.source];
        if (!asset.burst.isNull())
            m_bursts.insert(asset.burst);
        m_summary.favorites += asset.favorite.value_or(false) ? 1 : 0;
        m_summary.hidden += asset.hidden.value_or(false) ? 1 : 0;
        m_summary.edited += asset.edited.value_or(false) ? 1 : 0;
        addFile(asset);
        addDate(asset);
    }

    void addFile(const Asset &asset)
    {
        const FileState state = m_fileState(asset);
        const bool isInCloud =
            asset.isInCloud.value_or(false) || asset.source == AssetSource::Cloud;
        if (state == FileState::There)
            addBytes(asset.size.value_or(0));
        else if (state == FileState::Unreadable)
            ++m_summary.unreadable;
        else
            ++(isInCloud ? m_summary.onlyInCloud : m_summary.missing);
    }

    void addBytes(qint64 bytes)
    {
        ++m_summary.onDevice;
        // A library may claim any size.
        if (bytes > 0 && __builtin_add_overflow(m_summary.bytes, bytes, &m_summary.bytes))
            m_summary.bytes = std::numeric_limits<qint64>::max();
    }

    void addDate(const Asset &asset)
    {
        const QString taken = takenText(asset);
        if (taken.isEmpty()) {
            ++m_summary.undated;
            return;
        }
        ++m_summary.years[taken.leftRef(4).toInt()];
        if (!m_oldest || *asset.taken < *m_oldest->taken)
            m_oldest = &asset;
        if (!m_newest || *asset.taken > *m_newest->taken)
            m_newest = &asset;
    }

    const Catalog &m_catalog;
    const std::function<FileState(const Asset &)> &m_fileState;
    LibrarySummary m_summary;
    std::set<QByteArray> m_bursts; // sorted: a device can choose names that make hashes slow
    const Asset *m_oldest = nullptr;
    const Asset *m_newest = nullptr;
};

} // namespace

LibrarySummary summaryOf(const Catalog &catalog,
                         const std::function<FileState(const Asset &)> &fileState)
{
    return SummaryCounter(catalog, fileState).count();
}
