#include "engine/export_names.h"

#include "base/file_names.h"
#include "engine/export_source.h"

#include <algorithm>

namespace {

int lengthOfLongest(const std::vector<NameEnd> &ends)
{
    int longest = 0;
    for (const NameEnd &end : ends)
        longest = std::max(longest, end.text().size());
    return longest;
}

// A device may have chosen it.
QByteArray safeExtension(const QByteArray &extension)
{
    return safeFileName(QLatin1Char('x') + QString::fromUtf8(extension)).mid(1);
}

// Of one photo's names, which the numbers that were tried belong to.
QString keyOf(const QByteArray &base, const std::vector<NameEnd> &ends)
{
    QByteArray key = base;
    for (const NameEnd &end : ends)
        key += '/' + end.text();
    return comparedName(key);
}

} // namespace

std::optional<QByteArray> NameEnd::baseOf(const QByteArray &path) const
{
    const QByteArray end = text();
    if (path.size() <= end.size() || !path.endsWith(end))
        return std::nullopt;
    return path.chopped(end.size());
}

std::vector<NameEnd> nameEnds(const std::vector<ExportSource> &sources)
{
    std::vector<NameEnd> ends;
    ends.reserve(sources.size());
    for (const ExportSource &source : sources)
        ends.push_back({source.tail, safeExtension(source.extension)});
    makeDistinct(&ends);
    return ends;
}

void makeDistinct(std::vector<NameEnd> *ends)
{
    std::set<QString> seen;
    for (NameEnd &end : *ends) {
        const QByteArray tail = end.tail;
        for (int number = 2; !seen.insert(comparedName(end.text())).second; ++number)
            end.tail = tail + '_' + QByteArray::number(number);
    }
}

bool ExportNames::isTaken(const QByteArray &path) const
{
    return m_taken.count(comparedName(path)) != 0;
}

void ExportNames::take(const QByteArray &path)
{
    m_taken.insert(comparedName(path));
    learnFolders(path);
}

// Most paths are in the folder of the one before.
void ExportNames::learnFolders(const QByteArray &path)
{
    const QByteArray folder = path.left(qMax(path.lastIndexOf('/'), 0));
    if (folder == m_learntFolder)
        return;
    m_learntFolder = folder;
    for (int end = path.indexOf('/'); end >= 0; end = path.indexOf('/', end + 1))
        m_folders.emplace(comparedName(path.left(end)), path.left(end));
}

QByteArray ExportNames::withKnownFolders(const QByteArray &path) const
{
    for (int end = path.lastIndexOf('/'); end > 0; end = path.lastIndexOf('/', end - 1)) {
        const auto known = m_folders.find(comparedName(path.left(end)));
        if (known != m_folders.end())
            return known->second + path.mid(end);
    }
    return path;
}

FoundBase ExportNames::firstFree(const QByteArray &base, const std::vector<NameEnd> &ends,
                                 const std::function<bool(const QByteArray &base)> &isFree)
{
    const int longestEnd = lengthOfLongest(ends);
    int &number = m_firstUntried.emplace(keyOf(base, ends), 1).first->second;
    for (;; ++number) {
        FoundBase found = numbered(base, number, longestEnd);
        if (!isAnyTaken(found.base, ends) && isFree(found.base))
            return found;
    }
}

bool ExportNames::isAnyTaken(const QByteArray &base, const std::vector<NameEnd> &ends) const
{
    return std::any_of(ends.begin(), ends.end(),
                       [&](const NameEnd &end) { return isTaken(base + end.text()); });
}

FoundBase ExportNames::numbered(const QByteArray &base, int number, int longestEnd) const
{
    const QByteArray suffix = number == 1 ? QByteArray() : " (" + QByteArray::number(number) + ')';
    const int nameStart = base.lastIndexOf('/') + 1;
    const QByteArray name = base.mid(nameStart);
    const QByteArray kept = cutName(name, m_longest - longestEnd - suffix.size());
    return {base.left(nameStart) + kept + suffix, kept != name};
}
