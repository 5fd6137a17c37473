#include "engine/reported_file.h"

#include "engine/json_writer.h"

namespace {

const char *wordFor(ReportedFile::Status status)
{
    switch (status) {
    case ReportedFile::Copied:
        return "copied";
    case ReportedFile::Unchanged:
        return "unchanged";
    case ReportedFile::NotOnDevice:
        return "notOnDevice";
    case ReportedFile::Failed:
        return "failed";
    }
    return "";
}

// An empty text says no more than none.
QByteArray nullIfEmpty(const QByteArray &text)
{
    return text.isEmpty() ? QByteArray() : text;
}

} // namespace

QByteArray reportLine(const ReportedFile &file)
{
    JsonWriter json;
    json.startObject();
    json.key("id");
    json.number(file.id);
    json.key("uuid");
    json.text(nullIfEmpty(file.uuid));
    json.key("role");
    json.word(wordFor(file.role));
    json.key("path");
    json.text(nullIfEmpty(file.path));
    json.key("status");
    json.word(wordFor(file.status));
    json.key("bytes");
    json.number(file.bytes);
    json.key("sha256");
    json.text(nullIfEmpty(file.sha256));
    json.key("cause");
    json.text(nullIfEmpty(file.cause.toUtf8()));
    json.endObject();
    return json.taken() + '\n';
}
