#ifndef PHOTOLIB_ENGINE_EXPORT_NAMES_H
#define PHOTOLIB_ENGINE_EXPORT_NAMES_H

#include <QByteArray>
#include <QString>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

struct ExportSource;

/// What tells the files of one photo apart: what stands behind the base that they share.
struct NameEnd {
    QByteArray tail;      ///< "_edited"
    QByteArray extension; ///< ".JPG"

    QByteArray text() const { return tail + extension; }

    /// `path` without it; nothing for a path that does not end like that.
    std::optional<QByteArray> baseOf(const QByteArray &path) const;
};

/// The ends of the names of `sources`, the files of one photo, in their order.
std::vector<NameEnd> nameEnds(const std::vector<ExportSource> &sources);

/// Changes those of `ends` that are like one before them, so that no two are.
void makeDistinct(std::vector<NameEnd> *ends);

/// A base that was found for the files of a photo.
struct FoundBase {
    QByteArray base;
    bool isCut = false; ///< since the disk holds no names of that length
};

/// Which names of an export are taken. Names that differ by case only count as one, so that the
/// files fit on any disk, and their record on the disk that they are moved to.
class ExportNames
{
public:
    /// The disk takes names of `longest` bytes.
    explicit ExportNames(int longest) : m_longest(longest) {}

    /// Whether a file of the export has the path.
    bool isTaken(const QByteArray &path) const;
    void take(const QByteArray &path);

    /// `path` with its folders as the first path that was taken in them spells them.
    QByteArray withKnownFolders(const QByteArray &path) const;

    /// The first of `base`, "BASE (2)", "BASE (3)" and so on with which none of `ends` makes a path
    /// that is taken, and of which `isFree` says that it is free. Cut at a whole letter where a
    /// name would get too long.
    FoundBase firstFree(const QByteArray &base, const std::vector<NameEnd> &ends,
                        const std::function<bool(const QByteArray &base)> &isFree);

private:
    void learnFolders(const QByteArray &path);
    bool isAnyTaken(const QByteArray &base, const std::vector<NameEnd> &ends) const;
    FoundBase numbered(const QByteArray &base, int number, int longestEnd) const;

    const int m_longest;
    std::set<QString> m_taken;               // compared paths; sorted, for hashes can be made slow
    std::map<QString, QByteArray> m_folders; // by compared path
    QByteArray m_learntFolder;               // the last one
    std::map<QString, int> m_firstUntried;   // numbers by compared base and ends
};

#endif // PHOTOLIB_ENGINE_EXPORT_NAMES_H
