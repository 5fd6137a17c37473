#ifndef PHOTOLIB_SQLITE_PLAIN_TABLE_H
#define PHOTOLIB_SQLITE_PLAIN_TABLE_H

/// Whether `definition`, a text of the schema, makes an ordinary table called `name` whose columns
/// are only stored, without CHECK constraints and generated columns. False for what SQLite would
/// have written otherwise, and for some tables that use the words CHECK or AS as names.
bool definesPlainTable(const char *definition, const char *name);

#endif // PHOTOLIB_SQLITE_PLAIN_TABLE_H
