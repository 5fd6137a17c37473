#include "sqlite/refused_functions.h"

#include "sqlite/sqlite_statement.h"

#include <string>
#include <vector>

namespace {

// The pattern is tried at each character.
const int longestPattern = 64;
const int longestText = 16384;

// The schema may call them in tables that are not read. SQLite takes it for damaged where it calls
// functions that are unsafe, or whose results vary.
const int kinds = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;

struct function_name {
    std::string name;
    int arguments;
};

void refuse(sqlite3_context *context, int, sqlite3_value **)
{
    sqlite3_result_error(context, "function is not available", -1);
}

void like(sqlite3_context *context, int, sqlite3_value **arguments)
{
    const unsigned char *pattern = sqlite3_value_text(arguments[0]);
    const unsigned char *text = sqlite3_value_text(arguments[1]);
    if (!pattern || !text)
        return;
    if (sqlite3_value_bytes(arguments[0]) > longestPattern ||
        sqlite3_value_bytes(arguments[1]) > longestText) {
        sqlite3_result_error_toobig(context);
        return;
    }
    const int difference = sqlite3_strlike(reinterpret_cast<const char *>(pattern),
                                           reinterpret_cast<const char *>(text), 0);
    sqlite3_result_int(context, difference == 0);
}

int listFunctions(sqlite3 *db, std::vector<function_name> &functions)
{
    sqlite_statement list(db, "PRAGMA function_list");
    if (!list.isPrepared())
        return list.result();
    const int arguments = 4; // its column
    while (list.nextRow()) {
        const char *name = list.text(0);
        if (!name)
            return SQLITE_NOMEM;
        functions.push_back(function_name{name, sqlite3_column_int(list.get(), arguments)});
    }
    // An end by an error leaves the list short.
    const int result = list.finish();
    return result == SQLITE_OK && functions.empty() ? SQLITE_ERROR : result;
}

} // namespace

int refuseFunctions(sqlite3 *db)
{
    std::vector<function_name> functions;
    int result = listFunctions(db, functions);
    for (std::size_t i = 0; result == SQLITE_OK && i < functions.size(); ++i)
        result = sqlite3_create_function_v2(db, functions[i].name.c_str(), functions[i].arguments,
                                            kinds, nullptr, refuse, nullptr, nullptr, nullptr);
    if (result != SQLITE_OK)
        return result;
    return sqlite3_create_function_v2(db, "like", 2, kinds, nullptr, like, nullptr, nullptr,
                                      nullptr);
}
