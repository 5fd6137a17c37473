#ifndef PHOTOLIB_TESTS_APP_WATCHED_FILES_H
#define PHOTOLIB_TESTS_APP_WATCHED_FILES_H

#include "devices/device_file_system.h"
#include "devices/folder_file_system.h"

#include <array>
#include <atomic>
#include <functional>

/// A device in a folder that counts what it is asked for, and fails when a test wants it to. Any
/// threads may use it at a time.
class WatchedFiles : public DeviceFileSystem
{
public:
    enum Operation { Read, Info, Open, List, operations };

    explicit WatchedFiles(const QByteArray &root)
    {
        FileError error;
        m_files = FolderFileSystem::openFolder(root, &error);
    }

    /// Called before each read; set while nobody reads.
    std::function<void()> beforeRead = [] {};

    /// Counts from 0 again.
    void startCounting()
    {
        for (std::atomic<int> &count : m_counts)
            count = 0;
    }

    int count(Operation operation) const { return m_counts[operation]; }

    /// Has the operation fail that is the `number`th of its kind from now on, counted from 1. After
    /// one that fails with FileError::Disconnected all others do.
    void failAt(Operation operation, int number, const FileError &fault)
    {
        m_fault = fault;
        m_failing = operation;
        m_number = number;
        startCounting();
    }

    /// The same, and all that comes after it fails with `fault`, too.
    void failFrom(Operation operation, int number, const FileError &fault)
    {
        failAt(operation, number, fault);
        m_isLasting = true;
    }

    std::unique_ptr<DeviceFile> open(const QByteArray &path, FileError *error) override
    {
        if (fails(Open, error))
            return nullptr;
        std::unique_ptr<DeviceFile> file = m_files->open(path, error);
        return file ? std::make_unique<File>(*this, std::move(file)) : nullptr;
    }

    bool info(const QByteArray &path, FileInfo *info, FileError *error) override
    {
        return !fails(Info, error) && m_files->info(path, info, error);
    }

    bool list(const QByteArray &path, QList<QByteArray> *names, FileError *error) override
    {
        return !fails(List, error) && m_files->list(path, names, error);
    }

    DeviceState state() override { return m_isGone ? DeviceState::Gone : m_files->state(); }
    void close() override { m_files->close(); }
    QByteArray id() const override { return m_files->id(); }
    QByteArray name() const override { return m_files->name(); }

    UniqueFd openLocal(const QByteArray &path, FileError *error) override
    {
        return m_files->openLocal(path, error);
    }

    QByteArray displayName(const QByteArray &path) const override
    {
        return m_files->displayName(path);
    }

private:
    class File : public DeviceFile
    {
    public:
        File(WatchedFiles &files, std::unique_ptr<DeviceFile> file)
            : m_files(files), m_file(std::move(file))
        {
        }

        qint64 read(qint64 offset, char *buffer, qint64 length, FileError *error) override
        {
            m_files.beforeRead();
            return m_files.fails(Read, error) ? -1 : m_file->read(offset, buffer, length, error);
        }

        qint64 size(FileError *error) override { return m_file->size(error); }

    private:
        WatchedFiles &m_files;
        const std::unique_ptr<DeviceFile> m_file;
    };

    bool fails(Operation operation, FileError *error)
    {
        const int number = ++m_counts[operation];
        const bool isFault = operation == m_failing && number == m_number;
        if (isFault && (m_isLasting || m_fault.kind == FileError::Disconnected))
            m_isGone = true;
        if (!isFault && !m_isGone)
            return false;
        *error = m_fault;
        return true;
    }

    std::unique_ptr<DeviceFileSystem> m_files;
    std::array<std::atomic<int>, operations> m_counts{};
    Operation m_failing = Read;
    int m_number = 0; // none
    FileError m_fault;
    bool m_isLasting = false;
    std::atomic<bool> m_isGone{false};
};

#endif // PHOTOLIB_TESTS_APP_WATCHED_FILES_H
