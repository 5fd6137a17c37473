#ifndef PHOTOLIB_SQLITE_REFUSED_FUNCTIONS_H
#define PHOTOLIB_SQLITE_REFUSED_FUNCTIONS_H

struct sqlite3;

/// Replaces every SQL function of the connection, those of a host's automatic extensions included,
/// by one that ends its statement with an error; only `like` of two arguments stays, for patterns
/// of at most 64 bytes and texts of at most 16 KiB.
///
/// An authorizer is asked about the functions of a statement only, and not about those that the
/// schema calls. Returns SQLITE_OK, or why some function may still be in place. The schema is not
/// read. No statement may be running.
int refuseFunctions(sqlite3 *db);

#endif // PHOTOLIB_SQLITE_REFUSED_FUNCTIONS_H
