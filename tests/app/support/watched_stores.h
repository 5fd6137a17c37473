#ifndef PHOTOLIB_TESTS_APP_WATCHED_STORES_H
#define PHOTOLIB_TESTS_APP_WATCHED_STORES_H

#include <QByteArray>
#include <QList>

#include <functional>

/// While one lives, notes each file and folder that the process has a disk store. One at a time.
class WatchedStores
{
public:
    /// `beforeStore` is called first, with the path of the file or folder, on the thread that asks
    /// the disk: one at a time.
    explicit WatchedStores(std::function<void(const QByteArray &path)> beforeStore =
                               [](const QByteArray &) {});
    ~WatchedStores();

    WatchedStores(const WatchedStores &) = delete;
    WatchedStores &operator=(const WatchedStores &) = delete;

    /// Whether the disk was told to store the file or folder `path`, which is the path without
    /// links.
    bool has(const QByteArray &path) const;
};

#endif // PHOTOLIB_TESTS_APP_WATCHED_STORES_H
