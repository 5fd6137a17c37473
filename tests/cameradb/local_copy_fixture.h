#ifndef PHOTOLIB_TESTS_CAMERADB_LOCAL_COPY_FIXTURE_H
#define PHOTOLIB_TESTS_CAMERADB_LOCAL_COPY_FIXTURE_H

#include "cameradb/camera_db_parse.h"
#include "cameradb/owned_model.h"
#include "cameradb/parse_log.h"
#include "support/expected_leak.h"
#include "support/fake_host.h"
#include "support/photos_database.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <algorithm>

/// Parses of databases that may be damaged or hostile. They lie in the work folder already and
/// the device's access is blocked, which spares the copies.
class LocalCopyFixture : public testing::Test
{
protected:
    LocalCopyFixture() : host(FakeHost::Disk::Real)
    {
        device.localData = folder.path() + QLatin1Char('/');
        device.accessBlocked = true;
    }

    QByteArray local(const char *suffix = "") const
    {
        return folder.path().toUtf8() + "/Photos.sqlite" + suffix;
    }

    /// Parses `bytes` into `model`. A damaged table may yield a key twice, and the record
    /// that is replaced belongs to nobody then.
    int parse(const QByteArray &bytes)
    {
        host.setHostFile(local(), bytes);
        return parseLocal();
    }

    int parseLocal()
    {
        host.clearRecords();
        model = emptyModel();
        const ExpectedLeak replaced;
        return parseCameraDB(&device, model.get());
    }

    /// A parse of the same folder must succeed whatever came before.
    void expectHealthyParse()
    {
        PhotosDatabase healthy;
        healthy.rows.assets = {photoRow(1, 1), videoRow(2, 2)};
        healthy.rows.albums = {albumRow(3)};
        healthy.join().add(3, 1);
        host.setHostFile(local(), healthy.bytes());
        host.clearRecords();
        const OwnedModel loaded(cameraDBParse(&device));
        ASSERT_TRUE(loaded);
        EXPECT_EQ(loaded->assets.keys(), (QList<quint64>{1, 2}));
        EXPECT_EQ(loaded->albums.value(3)->assetKeys, QList<quint64>{1});
    }

    /// The result and the log belong together, and the model is consistent.
    void expectContract(int result) const
    {
        const LogLines log = host.log();
        const std::size_t ending = result == 1 ? 3 : 2;
        ASSERT_TRUE(result == 0 || result == 1) << result;
        ASSERT_GE(log.size(), ending + 2);
        EXPECT_EQ(log.front(), notice("Parser_Ath_camera_DB"));
        EXPECT_EQ(log.back(), notice("Parser_Ath_camera_DB extend info end"));
        EXPECT_EQ(log[log.size() - 2], notice("Parser_Ath_camera_DB extend info"));
        if (result == 1)
            EXPECT_EQ(log[log.size() - 3], notice("Parser_Ath_camera_DB success"));
        else
            EXPECT_TRUE(isKnownFailure(log[log.size() - 3])) << log[log.size() - 3];
        expectConsistentModel();
    }

    FakeHost host;
    QTemporaryDir folder;
    FakeIPod device;
    PhotosDatabase database;
    OwnedModel model = emptyModel();

private:
    static bool isKnownFailure(const LogLine &line)
    {
        const std::vector<QByteArray> starts = {"master sql error #",
                                                "Can not parse camera album",
                                                "photo sql error #",
                                                "Can not parse camera video",
                                                "Can not get the proper assets table name",
                                                "Can not parse camera photos: "};
        return line.level == 2 && std::any_of(starts.begin(), starts.end(), [&](const auto &start) {
                   return line.text.startsWith(start);
               });
    }

    void expectConsistentModel() const
    {
        for (auto it = model->assets.constBegin(); it != model->assets.constEnd(); ++it)
            EXPECT_EQ(it.key(), it.value()->pk);
        for (auto it = model->videos.constBegin(); it != model->videos.constEnd(); ++it)
            EXPECT_EQ(it.value(), model->assets.value(it.key()));
        for (const quint64 key : model->panoramas.keys())
            EXPECT_TRUE(model->assets.contains(key));
        for (auto it = model->albums.constBegin(); it != model->albums.constEnd(); ++it)
            EXPECT_EQ(it.key(), it.value()->pk);
    }
};

#endif // PHOTOLIB_TESTS_CAMERADB_LOCAL_COPY_FIXTURE_H
