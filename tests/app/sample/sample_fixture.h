#ifndef PHOTOLIB_TESTS_APP_SAMPLE_FIXTURE_H
#define PHOTOLIB_TESTS_APP_SAMPLE_FIXTURE_H

#include "support/sample_device.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

#include <sqlite3.h>

#include <memory>

/// A sample in a folder of its own, gone at the end of the test.
class WrittenSample
{
public:
    template <class Options>
    explicit WrittenSample(const Options &options)
    {
        writeSampleTo(root(), options);
    }

    QString root() const { return m_parent.filePath(QStringLiteral("device")); }
    QString path(const QString &relative) const { return root() + QLatin1Char('/') + relative; }

    QByteArray bytes(const QString &relative) const
    {
        QFile file(path(relative));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << relative.toStdString();
        return file.readAll();
    }

    /// All files, relative to the root, sorted.
    QStringList files() const
    {
        QStringList names;
        QDirIterator it(root(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext())
            names.append(QDir(root()).relativeFilePath(it.next()));
        names.sort();
        return names;
    }

    /// What is compared between runs: each file's bytes and modification time.
    QMap<QString, QPair<QByteArray, QDateTime>> contents() const
    {
        QMap<QString, QPair<QByteArray, QDateTime>> contents;
        for (const QString &name : files())
            contents[name] = {bytes(name), QFileInfo(path(name)).lastModified().toUTC()};
        return contents;
    }

private:
    QTemporaryDir m_parent;
};

/// A row as texts; NULL is a null string.
using SqlRow = QStringList;

/// Reads a copy of a sample's database, since opening it in place would change it.
class SampleDatabase
{
public:
    enum Files { WithLog, MainFileOnly };

    explicit SampleDatabase(const WrittenSample &sample, Files files = WithLog)
    {
        const QString source = sample.path(QStringLiteral("PhotoData/Photos.sqlite"));
        const QString copy = m_folder.filePath(QStringLiteral("Photos.sqlite"));
        EXPECT_TRUE(QFile::copy(source, copy));
        if (files == WithLog) {
            EXPECT_TRUE(QFile::copy(source + QLatin1String("-wal"), copy + QLatin1String("-wal")));
        }
        sqlite3 *handle = nullptr;
        EXPECT_EQ(sqlite3_open(QFile::encodeName(copy).constData(), &handle), SQLITE_OK);
        m_handle.reset(handle);
    }

    QVector<SqlRow> rows(const char *sql) const
    {
        QVector<SqlRow> rows;
        sqlite3_stmt *statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(m_handle.get(), sql, -1, &statement, nullptr), SQLITE_OK)
            << sqlite3_errmsg(m_handle.get());
        while (sqlite3_step(statement) == SQLITE_ROW) {
            SqlRow row;
            for (int i = 0; i < sqlite3_column_count(statement); ++i)
                row.append(text(statement, i));
            rows.append(row);
        }
        EXPECT_EQ(sqlite3_finalize(statement), SQLITE_OK);
        return rows;
    }

    /// The first column of all rows.
    QStringList column(const char *sql) const
    {
        QStringList values;
        for (const SqlRow &row : rows(sql))
            values.append(row.at(0));
        return values;
    }

    QString value(const char *sql) const { return column(sql).value(0); }
    int number(const char *sql) const { return value(sql).toInt(); }

private:
    struct Closer {
        void operator()(sqlite3 *handle) const { sqlite3_close(handle); }
    };

    static QString text(sqlite3_stmt *statement, int column)
    {
        const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
        return QString::fromUtf8(bytes);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<sqlite3, Closer> m_handle;
};

#endif // PHOTOLIB_TESTS_APP_SAMPLE_FIXTURE_H
