#include "engine/asset_words.h"

const char *wordFor(AssetKind kind)
{
    return kind == AssetKind::Video ? "video" : "photo";
}

const char *wordFor(AssetSource source)
{
    switch (source) {
    case AssetSource::Local:
        return "local";
    case AssetSource::Cloud:
        return "cloud";
    case AssetSource::Referenced:
        return "referenced";
    case AssetSource::Messages:
        return "messages";
    case AssetSource::Shared:
        return "shared";
    case AssetSource::Other:
        break;
    }
    return "other";
}

const char *wordFor(AlbumKind kind)
{
    switch (kind) {
    case AlbumKind::Shared:
        return "shared";
    case AlbumKind::Import:
        return "import";
    case AlbumKind::Smart:
        return "smart";
    case AlbumKind::Project:
        return "project";
    case AlbumKind::Folder:
        return "folder";
    case AlbumKind::Album:
        break;
    }
    return "album";
}

const std::array<AssetTypeWord, 7> &assetTypeWords()
{
    static const std::array<AssetTypeWord, 7> words = {{
        {AssetType::Burst, "burst"},
        {AssetType::Live, "live"},
        {AssetType::Panorama, "panorama"},
        {AssetType::ScreenRecording, "screenRecording"},
        {AssetType::Screenshot, "screenshot"},
        {AssetType::SlowMotion, "slowMotion"},
        {AssetType::TimeLapse, "timeLapse"},
    }};
    return words;
}
