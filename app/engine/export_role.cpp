#include "engine/export_role.h"

namespace {

struct RoleWord {
    ExportRole role;
    const char *word;
};

constexpr RoleWord roleWords[] = {
    {ExportRole::Original, "original"}, {ExportRole::Live, "live"},
    {ExportRole::Edited, "edited"},     {ExportRole::EditedLive, "editedLive"},
    {ExportRole::Recipe, "recipe"},     {ExportRole::Sidecar, "sidecar"},
    {ExportRole::Stored, "stored"},
};

} // namespace

const char *wordFor(ExportRole role)
{
    for (const RoleWord &each : roleWords) {
        if (each.role == role)
            return each.word;
    }
    return "";
}

std::optional<ExportRole> exportRoleOf(const QByteArray &word)
{
    for (const RoleWord &each : roleWords) {
        if (word == each.word)
            return each.role;
    }
    return std::nullopt;
}
