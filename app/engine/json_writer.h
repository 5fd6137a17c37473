#ifndef PHOTOLIB_ENGINE_JSON_WRITER_H
#define PHOTOLIB_ENGINE_JSON_WRITER_H

#include <QByteArray>

// Texts are most of a list, and go several letters at a time.
#if defined(__SSE2__)
#define RAPIDJSON_SSE2
#elif defined(__ARM_NEON)
#define RAPIDJSON_NEON
#endif
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <optional>
#include <vector>

/// The shortest decimal number that is read as `number` again, which must be finite.
QByteArray shortestText(double number);

/// Writes values as JSON, one after the other and without spaces. What is not known is null. Texts
/// are UTF-8, whatever else is in them being replaced, and nothing in them acts on a terminal:
/// control characters and marks that change the direction of writing are escaped.
class JsonWriter
{
public:
    void startObject() { m_writer.StartObject(); }
    void endObject() { m_writer.EndObject(); }
    void startList() { m_writer.StartArray(); }
    void endList() { m_writer.EndArray(); }

    void key(const char *name) { m_writer.Key(name); }
    void null() { m_writer.Null(); }
    void word(const char *word) { m_writer.String(word); }

    void text(const QByteArray &text); ///< null for a null one
    void number(qint64 number) { m_writer.Int64(number); }
    void number(std::optional<qint64> number);
    void number(std::optional<double> number); ///< null also for what is not finite
    void boolean(std::optional<bool> value);
    void list(const std::vector<qint64> &numbers);
    void list(const std::vector<QByteArray> &texts);

    /// What has been written since the last time, which must be a whole value.
    QByteArray taken();

private:
    rapidjson::StringBuffer m_buffer;
    rapidjson::Writer<rapidjson::StringBuffer> m_writer{m_buffer};
};

#endif // PHOTOLIB_ENGINE_JSON_WRITER_H
