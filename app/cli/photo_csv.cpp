#include "cli/photo_csv.h"

#include "base/printable.h"
#include "base/valid_utf8.h"
#include "cli/output.h"
#include "engine/asset_words.h"
#include "engine/json_writer.h"
#include "engine/library_date.h"

#include <cmath>

namespace {

constexpr char listSeparator = ';';

QByteArray text(std::optional<qint64> number)
{
    return number ? QByteArray::number(*number) : QByteArray();
}

QByteArray text(std::optional<double> number)
{
    return number && std::isfinite(*number) ? shortestText(*number) : QByteArray();
}

QByteArray text(std::optional<bool> value)
{
    if (!value)
        return QByteArray();
    return *value ? "true" : "false";
}

QByteArray joined(const std::vector<QByteArray> &texts)
{
    QByteArray result;
    for (const QByteArray &each : texts)
        result.append(&each == &texts.front() ? "" : QByteArray(1, listSeparator)).append(each);
    return result;
}

QByteArray joined(const std::vector<qint64> &numbers)
{
    std::vector<QByteArray> texts;
    texts.reserve(numbers.size());
    for (const qint64 number : numbers)
        texts.push_back(QByteArray::number(number));
    return joined(texts);
}

QByteArray typeWords(const Asset &photo)
{
    std::vector<QByteArray> words;
    for (const AssetTypeWord &each : assetTypeWords()) {
        if (photo.types & each.type)
            words.emplace_back(each.word);
    }
    return joined(words);
}

std::optional<double> latitude(const Asset &photo)
{
    return photo.location ? std::optional(photo.location->latitude) : std::nullopt;
}

std::optional<double> longitude(const Asset &photo)
{
    return photo.location ? std::optional(photo.location->longitude) : std::nullopt;
}

struct Field {
    const char *name;
    QByteArray (*text)(const Asset &photo);
};

// In the order of the keys in JSON.
const std::vector<Field> &fields()
{
    static const std::vector<Field> all = {
        {"id", [](const Asset &photo) { return QByteArray::number(photo.id); }},
        {"kind", [](const Asset &photo) { return QByteArray(wordFor(photo.kind)); }},
        {"uuid", [](const Asset &photo) { return photo.uuid; }},
        {"name", [](const Asset &photo) { return photo.fileName; }},
        {"path", [](const Asset &photo) { return photo.path(); }},
        {"originalName", [](const Asset &photo) { return photo.originalName; }},
        {"title", [](const Asset &photo) { return photo.title; }},
        {"caption", [](const Asset &photo) { return photo.caption; }},
        {"taken", [](const Asset &photo) { return isoDateText(photo.taken, photo.utcOffset); }},
        {"modified", [](const Asset &photo) { return isoDateText(photo.modified, std::nullopt); }},
        {"added", [](const Asset &photo) { return isoDateText(photo.added, std::nullopt); }},
        {"trashed", [](const Asset &photo) { return isoDateText(photo.trashed, std::nullopt); }},
        {"width", [](const Asset &photo) { return text(photo.width); }},
        {"height", [](const Asset &photo) { return text(photo.height); }},
        {"orientation", [](const Asset &photo) { return text(photo.orientation); }},
        {"duration",
         [](const Asset &photo) {
             return photo.kind == AssetKind::Video ? text(photo.duration) : QByteArray();
         }},
        {"size", [](const Asset &photo) { return text(photo.size); }},
        {"favorite", [](const Asset &photo) { return text(photo.favorite); }},
        {"hidden", [](const Asset &photo) { return text(photo.hidden); }},
        {"inTrash", [](const Asset &photo) { return text(photo.inTrash); }},
        {"edited", [](const Asset &photo) { return text(photo.edited); }},
        {"types", typeWords},
        {"burst", [](const Asset &photo) { return photo.burst; }},
        {"burstPicked",
         [](const Asset &photo) {
             return photo.burst.isNull() ? QByteArray() : text(photo.burstPicked);
         }},
        {"latitude", [](const Asset &photo) { return text(latitude(photo)); }},
        {"longitude", [](const Asset &photo) { return text(longitude(photo)); }},
        {"keywords", [](const Asset &photo) { return joined(photo.keywords); }},
        {"people", [](const Asset &photo) { return joined(photo.people); }},
        {"source",
         [](const Asset &photo) { return QByteArray(photo.source ? wordFor(*photo.source) : ""); }},
        {"albums", [](const Asset &photo) { return joined(photo.albums); }},
    };
    return all;
}

QByteArray quoted(const QByteArray &field)
{
    const auto needsQuotes = [](char letter) {
        return letter == ',' || letter == '"' || letter == '\n' || letter == '\r';
    };
    if (std::none_of(field.begin(), field.end(), needsQuotes))
        return field;
    return '"' + QByteArray(field).replace('"', "\"\"") + '"';
}

QByteArray record(const Asset &photo, bool isForTerminal)
{
    QByteArray line;
    for (const Field &field : fields()) {
        const QByteArray content = field.text(photo);
        line.append(&field == &fields().front() ? "" : ",");
        line.append(quoted(isForTerminal ? printable(content) : validUtf8(content)));
    }
    return line.append("\r\n");
}

} // namespace

QByteArray photoCsvHeader()
{
    QByteArray line;
    for (const Field &field : fields())
        line.append(&field == &fields().front() ? "" : ",").append(field.name);
    return line.append("\r\n");
}

QByteArray photoCsvRecord(const Asset &photo)
{
    return record(photo, false);
}

void writePhotosAsCsv(const std::vector<const Asset *> &photos, Output &output)
{
    const bool isForTerminal = Output::isTerminal();
    output.write(photoCsvHeader());
    for (const Asset *photo : photos)
        output.write(record(*photo, isForTerminal));
}
