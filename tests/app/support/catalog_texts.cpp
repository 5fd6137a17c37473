#include "support/catalog_texts.h"

#include <cstdio>

namespace {

std::string textOf(double number)
{
    return numberText(number);
}

std::string textOf(bool value)
{
    return value ? "true" : "false";
}

std::string textOf(qint64 number)
{
    return std::to_string(number);
}

std::string textOf(int number)
{
    return std::to_string(number);
}

std::string textOf(const QByteArray &text)
{
    return text.isNull() ? "null" : text.toStdString();
}

std::string textOf(const Location &location)
{
    return textOf(location.latitude) + ' ' + textOf(location.longitude);
}

std::string textOf(AssetSource source)
{
    const char *const names[] = {"local", "cloud", "referenced", "messages", "shared", "other"};
    return names[static_cast<int>(source)];
}

template <typename Value>
std::string textOf(const std::optional<Value> &value)
{
    return value ? textOf(*value) : "null";
}

template <typename Value>
std::string listOf(const std::vector<Value> &values, const char *separator)
{
    std::string text;
    for (const Value &value : values)
        text += (text.empty() ? "" : separator) + textOf(value);
    return text;
}

std::string typesOf(AssetTypes types)
{
    const std::pair<AssetType, const char *> names[] = {
        {AssetType::Burst, "burst"},
        {AssetType::Live, "live"},
        {AssetType::Panorama, "panorama"},
        {AssetType::Screenshot, "screenshot"},
        {AssetType::SlowMotion, "slowMotion"},
        {AssetType::TimeLapse, "timeLapse"},
        {AssetType::ScreenRecording, "screenRecording"},
    };
    std::string text;
    for (const auto &[type, name] : names) {
        if (types.testFlag(type))
            text += (text.empty() ? "" : " ") + std::string(name);
    }
    return text;
}

} // namespace

std::string numberText(double number)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", number);
    return text;
}

FieldTexts fieldsOf(const Asset &asset)
{
    return {
        {"id", textOf(asset.id)},
        {"kind", asset.kind == AssetKind::Video ? "video" : "photo"},
        {"types", typesOf(asset.types)},
        {"source", textOf(asset.source)},
        {"uuid", textOf(asset.uuid)},
        {"directory", textOf(asset.directory)},
        {"fileName", textOf(asset.fileName)},
        {"path", textOf(asset.path())},
        {"originalName", textOf(asset.originalName)},
        {"title", textOf(asset.title)},
        {"caption", textOf(asset.caption)},
        {"taken", textOf(asset.taken)},
        {"utcOffset", textOf(asset.utcOffset)},
        {"modified", textOf(asset.modified)},
        {"added", textOf(asset.added)},
        {"trashed", textOf(asset.trashed)},
        {"width", textOf(asset.width)},
        {"height", textOf(asset.height)},
        {"orientation", textOf(asset.orientation)},
        {"duration", textOf(asset.duration)},
        {"size", textOf(asset.size)},
        {"favorite", textOf(asset.favorite)},
        {"hidden", textOf(asset.hidden)},
        {"inTrash", textOf(asset.inTrash)},
        {"edited", textOf(asset.edited)},
        {"isInCloud", textOf(asset.isInCloud)},
        {"burst", textOf(asset.burst)},
        {"burstPicked", textOf(asset.burstPicked)},
        {"location", textOf(asset.location)},
        {"keywords", listOf(asset.keywords, "|")},
        {"people", listOf(asset.people, "|")},
        {"albums", listOf(asset.albums, " ")},
    };
}

FieldTexts fieldsOf(const Album &album)
{
    const char *const kinds[] = {"album", "shared", "import", "smart", "project", "folder"};
    return {
        {"id", textOf(album.id)},
        {"kind", kinds[static_cast<int>(album.kind)]},
        {"uuid", textOf(album.uuid)},
        {"title", textOf(album.title)},
        {"parent", textOf(album.parent)},
        {"created", textOf(album.created)},
        {"assets", listOf(album.assets, " ")},
    };
}

FieldTexts with(FieldTexts fields, const FieldTexts &changes)
{
    for (const auto &[name, text] : changes)
        fields[name] = text;
    return fields;
}
