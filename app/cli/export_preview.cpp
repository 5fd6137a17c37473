#include "cli/export_preview.h"

#include "base/byte_count.h"
#include "base/printable.h"
#include "catalog/asset.h"
#include "cli/output.h"
#include "cli/text_table.h"
#include "engine/export_plan.h"
#include "engine/json_writer.h"

namespace {

const char *wordFor(PlannedFile::Action action)
{
    switch (action) {
    case PlannedFile::Copy:
        return "copy";
    case PlannedFile::Keep:
    case PlannedFile::Skip:
        return "unchanged";
    case PlannedFile::Missing:
        return "notOnDevice";
    case PlannedFile::Fail:
        return "failed";
    }
    return "";
}

QString textFor(const PlannedFile &file)
{
    if (file.action == PlannedFile::Copy)
        return file.replaces ? QStringLiteral("replace") : QStringLiteral("copy");
    return file.cause;
}

// What an export would leave as it is is of interest to few, and there may be a lot of it.
bool isListed(const PlannedFile &file)
{
    return file.action != PlannedFile::Keep && file.action != PlannedFile::Skip;
}

QStringList rowOf(const PlannedFile &file)
{
    const bool isCopied = file.action == PlannedFile::Copy;
    return {QString::number(file.asset->id),
            QString::fromLatin1(wordFor(file.source.role)),
            textFor(file),
            isCopied ? byteCountText(file.size) : QString(),
            file.source.label,
            QString::fromUtf8(printable(file.path))};
}

// As that of an export, for what it would do.
QString summaryOf(const ExportPlan &plan)
{
    int files = 0;
    int kept = 0;
    for (const PlannedFile &file : plan.files) {
        files += file.action == PlannedFile::Copy ? 1 : 0;
        kept += isListed(file) ? 0 : 1;
    }
    return QStringLiteral("Would copy %1 %2 (%3), %4 unchanged; nothing was written")
        .arg(QString::number(files), files == 1 ? QStringLiteral("file") : QStringLiteral("files"),
             byteCountText(plan.bytes), QString::number(kept));
}

void writeFile(const PlannedFile &file, JsonWriter &json)
{
    const auto text = [&json](const char *key, const QByteArray &value) {
        json.key(key);
        json.text(value.isEmpty() ? QByteArray() : value);
    };
    json.startObject();
    json.key("id");
    json.number(file.asset->id);
    text("uuid", file.asset->uuid);
    text("role", wordFor(file.source.role));
    text("source", file.source.role == ExportRole::Sidecar ? QByteArray() : file.source.source);
    text("path", file.path);
    text("action", wordFor(file.action));
    json.key("replaces");
    json.boolean(file.replaces);
    json.key("bytes");
    json.number(isListed(file) && file.action != PlannedFile::Copy ? std::nullopt
                                                                   : std::optional(file.size));
    text("cause", file.cause.toUtf8());
    json.endObject();
}

} // namespace

void writePreviewTable(const ExportPlan &plan, Output &output)
{
    TextTable table({QStringLiteral("ID"), QStringLiteral("ROLE"), QStringLiteral("ACTION"),
                     QStringLiteral("SIZE"), QStringLiteral("FROM"), QStringLiteral("TO")});
    constexpr int idColumn = 0;
    constexpr int sizeColumn = 3;
    table.alignRight(idColumn);
    table.alignRight(sizeColumn);
    bool isEmpty = true;
    for (const PlannedFile &file : plan.files) {
        if (!isListed(file))
            continue;
        isEmpty = false;
        table.addRow(rowOf(file));
    }
    if (!isEmpty)
        table.write(output);
    output.writeLine(summaryOf(plan));
}

void writePreviewAsJson(const ExportPlan &plan, Output &output)
{
    JsonWriter json;
    output.write("{\"bytes\": " + QByteArray::number(plan.bytes) + ", \"files\": [");
    bool isFirst = true;
    for (const PlannedFile &file : plan.files) {
        output.write(isFirst ? "\n" : ",\n");
        isFirst = false;
        writeFile(file, json);
        output.write(json.taken());
    }
    output.write(isFirst ? "]}\n" : "\n]}\n");
}
