#include "sqlite/plain_table.h"

#include <sqlite3.h>

#include <cctype>
#include <cstddef>
#include <cstring>

namespace {

// As SQLite sees them: names may hold any byte that is not ASCII.
bool isNameCharacter(char character)
{
    const unsigned char byte = static_cast<unsigned char>(character);
    return byte >= 0x80 || byte == '_' || byte == '$' || std::isalnum(byte);
}

// What closes a quoted name; 0 for one that is not quoted.
char closingQuote(char first)
{
    if (first == '[')
        return ']';
    return first == '"' || first == '`' || first == '\'' ? first : '\0';
}

// Whether `text` begins with `name`, quoted or not, as a whole name.
bool startsWithName(const char *text, const char *name)
{
    const char quote = closingQuote(*text);
    if (quote)
        ++text;
    const std::size_t length = std::strlen(name);
    if (length == 0 || std::strncmp(text, name, length) != 0)
        return false;
    return quote ? text[length] == quote : !isNameCharacter(text[length]);
}

bool isWord(const char *word, std::size_t length, const char *keyword)
{
    return std::strlen(keyword) == length &&
           sqlite3_strnicmp(word, keyword, static_cast<int>(length)) == 0;
}

// SQLite takes one at the start of a word for a blank.
const char *pastByteOrderMarks(const char *sql)
{
    const char mark[] = "\xef\xbb\xbf";
    const std::size_t length = sizeof mark - 1;
    while (std::strncmp(sql, mark, length) == 0)
        sql += length;
    return sql;
}

// A generated column has the word AS, with or without GENERATED ALWAYS before it. Words within
// quotes count as well, which libraries do not have.
bool hasExpressions(const char *sql)
{
    while (*sql) {
        const char *word = pastByteOrderMarks(sql);
        sql = word;
        while (isNameCharacter(*sql))
            ++sql;
        const std::size_t length = static_cast<std::size_t>(sql - word);
        if (isWord(word, length, "as") || isWord(word, length, "check"))
            return true;
        if (length == 0 && *sql)
            ++sql;
    }
    return false;
}

} // namespace

bool definesPlainTable(const char *definition, const char *name)
{
    // SQLite writes it so, whatever the statement was.
    const char start[] = "CREATE TABLE ";
    const std::size_t length = sizeof start - 1;
    return std::strncmp(definition, start, length) == 0 &&
           startsWithName(definition + length, name) && !hasExpressions(definition + length);
}
