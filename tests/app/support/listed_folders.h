#ifndef PHOTOLIB_TESTS_APP_LISTED_FOLDERS_H
#define PHOTOLIB_TESTS_APP_LISTED_FOLDERS_H

#include "devices/device_file_system.h"

#include <QByteArray>
#include <QList>
#include <QMap>

#include <gtest/gtest.h>

#include <algorithm>

/// A device of folders in memory that counts how often they are listed. Nothing may ask for more.
class ListedFolders : public DeviceFileSystem
{
public:
    QMap<QByteArray, QList<QByteArray>> folders;
    FileError fault; ///< of every listing, unless its kind is None
    int listings = 0;

    /// Puts a file into its folder, and this into the one above.
    void addFile(const QByteArray &path)
    {
        const int slash = path.lastIndexOf('/');
        const QByteArray folder = path.left(qMax(slash, 0));
        QList<QByteArray> &names = folders[folder];
        const QByteArray name = path.mid(slash + 1);
        const auto place = std::lower_bound(names.begin(), names.end(), name);
        if (place != names.end() && *place == name)
            return;
        names.insert(place, name);
        if (!folder.isEmpty())
            addFile(folder);
    }

    bool list(const QByteArray &path, QList<QByteArray> *names, FileError *error) override
    {
        ++listings;
        *error = fault;
        if (fault.kind == FileError::None && !folders.contains(path))
            error->kind = FileError::NotFound;
        if (error->kind != FileError::None)
            return false;
        *names = folders[path];
        return true;
    }

    std::unique_ptr<DeviceFile> open(const QByteArray &, FileError *) override
    {
        ADD_FAILURE() << "asks for a file";
        return nullptr;
    }

    bool info(const QByteArray &, FileInfo *, FileError *) override
    {
        ADD_FAILURE() << "asks about a file";
        return false;
    }

    DeviceState state() override { return DeviceState::Ready; }
    void close() override {}
    QByteArray id() const override { return "memory"; }
    QByteArray name() const override { return "memory"; }
    QByteArray displayName(const QByteArray &path) const override { return path; }
};

#endif // PHOTOLIB_TESTS_APP_LISTED_FOLDERS_H
