#include "engine/exported_files.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace {

bool isShown(ExportRole role)
{
    return role != ExportRole::Recipe && role != ExportRole::Sidecar;
}

RecordedFile recordOf(const PlannedFile &file)
{
    RecordedFile record;
    record.photo = recordKey(*file.asset);
    record.role = file.source.role;
    record.source = file.source.source;
    record.size = file.size;
    record.path = file.path;
    record.sha256 = file.sha256;
    return record;
}

} // namespace

std::vector<RecordedFile> shownFiles(const std::vector<RecordedFile> &files, ExportFolder &folder)
{
    std::vector<RecordedFile> shown;
    for (const RecordedFile &file : files) {
        if (file.isCurrent && isShown(file.role) &&
            folder.entry(file.path).kind == ExportFolder::Kind::File)
            shown.push_back(file);
    }
    return shown;
}

std::vector<RecordedFile> shownFilesAfter(const ExportPlan &plan,
                                          const std::vector<RecordedFile> &before,
                                          ExportFolder &folder)
{
    const auto key = [](const RecordedFile &file) {
        return std::make_tuple(file.photo, file.role, file.source);
    };
    std::vector<RecordedFile> files;
    std::set<std::tuple<QByteArray, ExportRole, QByteArray>> planned;
    for (const PlannedFile &file : plan.files) {
        const bool isThere = file.action == PlannedFile::Copy || file.action == PlannedFile::Keep;
        if (!isThere || file.path.isNull() || !isShown(file.source.role))
            continue;
        files.push_back(recordOf(file));
        planned.insert(key(files.back()));
    }
    for (RecordedFile &file : shownFiles(before, folder)) {
        if (planned.count(key(file)) == 0)
            files.push_back(std::move(file));
    }
    return files;
}

bool isToBeCopied(const RecordedFile &file)
{
    return file.sha256.isEmpty();
}

ExportedFiles filesByPhoto(const Catalog &catalog, const std::vector<RecordedFile> &files)
{
    std::map<QByteArray, qint64> ids;
    for (const Asset &asset : catalog.assets)
        ids.emplace(recordKey(asset), asset.id);
    std::map<qint64, std::vector<std::pair<ExportRole, QByteArray>>> photos;
    for (const RecordedFile &file : files) {
        const auto id = ids.find(file.photo);
        if (id != ids.end())
            photos[id->second].emplace_back(file.role, file.path);
    }
    ExportedFiles result;
    for (auto &photo : photos) {
        std::sort(photo.second.begin(), photo.second.end());
        for (const auto &file : photo.second)
            result[photo.first].push_back(file.second);
    }
    return result;
}
