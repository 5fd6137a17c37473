#ifndef PHOTOLIB_TESTS_IOS_PARSE_FIXTURE_H
#define PHOTOLIB_TESTS_IOS_PARSE_FIXTURE_H

#include "ios/photo_manager.h"
#include "support/fake_host.h"
#include "support/photos_database.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace synthetic {

const quint64 CameraRoll = 1000;
const quint64 Library = 16777215;
const quint64 Panorama = 16777214;
const quint64 Video = 16777213;

} // namespace synthetic

/// A manager for a device with a database, whose copies go to a folder of their own.
class ParseFixture : public testing::Test
{
protected:
    using Lines = std::vector<std::string>;
    using Log = std::vector<LogLine>;
    using Ids = QList<quint64>;

    ParseFixture() : manager(std::make_unique<photo_manager>(&device))
    {
        device.localData = work.path() + QLatin1Char('/');
    }

    ~ParseFixture() override { renewManager(); }

    /// Puts a new manager in the place of the old one, which frees only its last model.
    void renewManager()
    {
        for (CameraDB *model : m_models) {
            if (model != manager->m_pCameraDB)
                freeModel(model);
        }
        m_models.clear();
        manager = std::make_unique<photo_manager>(&device);
    }

    /// Parses what the builder holds by now.
    bool parse()
    {
        host.setDeviceFile("/PhotoData/Photos.sqlite", database.bytes());
        const bool parsed = manager->parseLib();
        if (manager->m_pCameraDB != nullptr)
            m_models.push_back(manager->m_pCameraDB);
        return parsed;
    }

    void addAlbum(int key, int kind, const std::vector<int> &members, int trashedState = 0)
    {
        AlbumRow album = albumRow(key, kind);
        album.trashedState = trashedState;
        database.rows.albums.push_back(album);
        for (const int member : members)
            database.join().add(key, member);
    }

    void addPhotos(const std::vector<int> &keys, const char *directory = "DCIM/100APPLE")
    {
        for (const int key : keys) {
            AssetRow row = photoRow(key);
            row.directory = directory;
            row.uuid = QByteArray("photo-") + QByteArray::number(key);
            database.rows.assets.push_back(row);
        }
    }

    /// The log after the database was read.
    Log mergeLog() const
    {
        const Log all = host.log();
        for (std::size_t i = all.size(); i > 0; --i) {
            if (all[i - 1] == notice("load ATHCameraDB end"))
                return Log(all.begin() + static_cast<std::ptrdiff_t>(i), all.end());
        }
        return Log{failure("the database was not read")};
    }

    Ids listOf(quint64 album) const { return manager->m_mapAlbum2Photos.value(album); }

    FakeHost host{FakeHost::Disk::Real};
    QTemporaryDir work;
    FakeIPod device;
    PhotosDatabase database;
    std::unique_ptr<photo_manager> manager;

private:
    static void freeModel(CameraDB *model)
    {
        for (Camera_Album *album : model->albums)
            delete album;
        for (Camera_Data *asset : model->assets)
            delete asset;
        delete model;
    }

    QList<CameraDB *> m_models;
};

/// The line of a photo that joins the Photo Library because of an album.
inline LogLine added(int key)
{
    return notice("To add a photo: " + QByteArray::number(key));
}

/// The lines of a photo that is in no album; its uuid is "photo-" and its key.
inline LogLine loose(int key)
{
    const QByteArray number = QByteArray::number(key);
    return notice("Add some photo not in album: " + number + ", uuid: photo-" + number);
}

inline LogLine looseCameraPhoto(int key)
{
    const QByteArray number = QByteArray::number(key);
    return notice("Add some photo not in album but as Camera roll: " + number + ", uuid: photo-" +
                  number);
}

#endif // PHOTOLIB_TESTS_IOS_PARSE_FIXTURE_H
