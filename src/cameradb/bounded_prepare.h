#ifndef PHOTOLIB_CAMERADB_BOUNDED_PREPARE_H
#define PHOTOLIB_CAMERADB_BOUNDED_PREPARE_H

#include <sqlite3.h>

/// Compiling a statement runs outside of every allowance of work: SQLite asks no one while
/// it replaces views by what they stand for. A schema of a few hundred bytes can make that
/// take all memory, and one of a megabyte all of the stack. So what a device's database
/// adds to a statement is held to what a simple view needs.

/// Like `sqlite3_prepare` of the whole text, but with an error when the statement does more than
/// read tables and a few simple views, or calls a function that can be made to work for
/// minutes at once. An authorizer of the connection is lost.
int prepareBounded(sqlite3 *db, const char *sql, sqlite3_stmt **stmt);

/// Counts in a text how many tables its statements can name; no less, and perhaps more.
int countReferences(const char *sql);

/// Whether the views of the database are few and short, and so are its generated columns. What
/// is neither a table, an index nor a trigger counts as a view.
bool hasSimpleSchema(sqlite3 *db);

#endif // PHOTOLIB_CAMERADB_BOUNDED_PREPARE_H
