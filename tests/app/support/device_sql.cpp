#include "support/device_sql.h"

#include <gtest/gtest.h>

#include <QFile>

namespace {

SqlTexts row(sqlite3_stmt *stmt)
{
    SqlTexts result;
    for (int i = 0; i < sqlite3_column_count(stmt); ++i) {
        const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(stmt, i));
        result.emplace_back(text ? text : "NULL");
    }
    return result;
}

} // namespace

DeviceSql::DeviceSql(const QByteArray &device)
{
    for (const char *suffix : {"", "-wal"}) {
        const QByteArray name = QByteArray("Photos.sqlite") + suffix;
        QFile source(QString::fromUtf8(device + "/PhotoData/" + name));
        if (source.open(QIODevice::ReadOnly))
            m_folder.write(name, source.readAll());
    }
    sqlite3 *db = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_open(m_folder.path("Photos.sqlite").constData(), &db));
    m_db.reset(db);
}

std::vector<SqlTexts> DeviceSql::rows(const std::string &sql) const
{
    std::vector<SqlTexts> result;
    sqlite3_stmt *stmt = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_prepare_v2(m_db.get(), sql.c_str(), -1, &stmt, nullptr))
        << sqlite3_errmsg(m_db.get());
    while (sqlite3_step(stmt) == SQLITE_ROW)
        result.push_back(row(stmt));
    sqlite3_finalize(stmt);
    return result;
}

bool DeviceSql::hasColumn(const std::string &table, const std::string &column) const
{
    return !rows("select 1 from pragma_table_info('" + table + "') where name = '" + column + "'")
                .empty();
}
