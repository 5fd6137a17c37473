#include "cameradb/bounded_prepare.h"

#include "cameradb/sqlite_statement.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>

namespace {

// A statement without subqueries names each column of one table at most, and SQLite has
// no tables of more than 2,000 columns.
const int mostColumns = 2500;

// Columns of one subquery are written out where the statement around it names them, so
// their numbers multiply from level to level: within these bounds to a million.
const int mostSelects = 6;
const int mostColumnsOfSubqueries = 64;

// Views are copied to where they are named, level by level, so that 32 references
// make up to 4^8 copies.
const int mostReferencesOfViews = 32;

// Each level takes some stack, and about twenty bytes of a view's text.
const std::size_t longestViews = 4096;

// A column that is made of one that is made of another, and so on, takes stack, too.
const int mostGeneratedColumns = 100;

// One call of some takes time in proportion to the product of its arguments' lengths, which
// can be minutes; fts3_tokenizer lets a text name an address to call.
const char *const deniedFunctions[] = {"fts3_tokenizer", "load_extension", "glob",   "instr",
                                       "replace",        "trim",           "ltrim",  "rtrim",
                                       "printf",         "format",         "snippet"};

// What one statement has named so far.
struct statement_budget {
    int selects = 0;
    int columns = 0;

    bool isExceeded() const
    {
        if (columns > mostColumns || selects > mostSelects)
            return true;
        return selects > 1 && columns > mostColumnsOfSubqueries;
    }
};

bool isDenied(const char *function)
{
    const auto equals = [function](const char *denied) {
        return sqlite3_stricmp(function, denied) == 0;
    };
    return std::any_of(std::begin(deniedFunctions), std::end(deniedFunctions), equals) ||
           sqlite3_strnicmp(function, "json", 4) == 0;
}

int authorize(void *context, int action, const char *, const char *name, const char *, const char *)
{
    statement_budget *budget = static_cast<statement_budget *>(context);
    if (action == SQLITE_SELECT)
        ++budget->selects;
    else if (action == SQLITE_READ)
        ++budget->columns;
    else if (action == SQLITE_FUNCTION && isDenied(name))
        return SQLITE_DENY;
    return budget->isExceeded() ? SQLITE_DENY : SQLITE_OK;
}

bool isWordCharacter(char character)
{
    return character == '_' || std::isalnum(static_cast<unsigned char>(character));
}

bool isWord(const char *word, std::size_t length, const char *keyword)
{
    return std::strlen(keyword) == length &&
           sqlite3_strnicmp(word, keyword, static_cast<int>(length)) == 0;
}

// Calls `visit` with the start and the length of each word, and for each other character
// with a length of 0.
template <class Visit>
void visitWords(const char *sql, const Visit &visit)
{
    while (*sql) {
        const char *word = sql;
        while (isWordCharacter(*sql))
            ++sql;
        visit(word, static_cast<std::size_t>(sql - word));
        if (sql == word)
            ++sql;
    }
}

// Each generated column has one.
int countAs(const char *sql)
{
    int count = 0;
    visitWords(sql, [&](const char *word, std::size_t length) {
        if (isWord(word, length, "as"))
            ++count;
    });
    return count;
}

bool startsWith(const char *text, const char *start)
{
    return std::strncmp(text, start, std::strlen(start)) == 0;
}

// In the forms that SQLite writes; what is written otherwise may be a view.
bool isNoView(const char *definition)
{
    for (const char *start : {"CREATE TABLE ", "CREATE INDEX ", "CREATE UNIQUE INDEX ",
                              "CREATE VIRTUAL TABLE ", "CREATE TRIGGER "}) {
        if (startsWith(definition, start))
            return true;
    }
    return false;
}

} // namespace

int prepareBounded(sqlite3 *db, const char *sql, sqlite3_stmt **stmt)
{
    statement_budget budget;
    sqlite3_set_authorizer(db, authorize, &budget);
    const int result = sqlite3_prepare(db, sql, -1, stmt, nullptr);
    sqlite3_set_authorizer(db, nullptr, nullptr);
    return result;
}

int countReferences(const char *sql)
{
    int references = 0;
    visitWords(sql, [&](const char *word, std::size_t length) {
        if (isWord(word, length, "from") || isWord(word, length, "join") ||
            isWord(word, length, "in") || (length == 0 && *word == ','))
            ++references;
    });
    return references;
}

bool hasSimpleSchema(sqlite3 *db)
{
    sqlite_statement schema(db, "SELECT sql FROM sqlite_master");
    if (!schema.isPrepared())
        return true;
    std::size_t length = 0;
    int references = 0;
    int generated = 0;
    while (schema.nextRow()) {
        const char *definition = schema.text(0);
        if (!definition)
            continue;
        // Triggers, of which devices have many, are not run.
        if (!startsWith(definition, "CREATE TRIGGER "))
            generated += countAs(definition);
        if (isNoView(definition))
            continue;
        length += std::strlen(definition);
        references += countReferences(definition);
    }
    return length <= longestViews && references <= mostReferencesOfViews &&
           generated <= mostGeneratedColumns;
}
