#ifndef PHOTOLIB_TESTS_APP_DEVICE_SQL_H
#define PHOTOLIB_TESTS_APP_DEVICE_SQL_H

#include "support/device_folder.h"

#include <string>
#include <vector>

/// A row of a statement, each value as a text; NULL is "NULL".
using SqlTexts = std::vector<std::string>;

/// The photo database of a device folder, read from a copy of its own.
class DeviceSql
{
public:
    explicit DeviceSql(const QByteArray &device);

    /// The rows of `sql`. A statement that fails fails the test.
    std::vector<SqlTexts> rows(const std::string &sql) const;

    bool hasColumn(const std::string &table, const std::string &column) const;

private:
    ScratchFolder m_folder;
    SqliteOwner m_db;
};

#endif // PHOTOLIB_TESTS_APP_DEVICE_SQL_H
