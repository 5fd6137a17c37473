#ifndef PHOTOLIB_TESTS_CAMERADB_PARSE_LOG_H
#define PHOTOLIB_TESTS_CAMERADB_PARSE_LOG_H

#include "support/fake_host.h"

#include <QByteArray>

#include <vector>

using LogLines = std::vector<LogLine>;

/// What a parse of a good database logs once it is open.
inline LogLines parsedLog(const QByteArray &table = "Z_26ASSETS")
{
    return {notice("Parser_Ath_camera_DB"), notice("Got asset table name: " + table),
            notice("Parser_Ath_camera_DB success"), notice("Parser_Ath_camera_DB extend info"),
            notice("Parser_Ath_camera_DB extend info end")};
}

/// What a parse logs that fails after the database is open.
inline LogLines failedLog(const LogLines &failures)
{
    LogLines lines = {notice("Parser_Ath_camera_DB")};
    lines.insert(lines.end(), failures.begin(), failures.end());
    lines.push_back(notice("Parser_Ath_camera_DB extend info"));
    lines.push_back(notice("Parser_Ath_camera_DB extend info end"));
    return lines;
}

#endif // PHOTOLIB_TESTS_CAMERADB_PARSE_LOG_H
