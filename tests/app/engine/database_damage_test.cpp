#include "engine/database_damage.h"
#include "support/device_folder.h"
#include "support/raw_pages.h"

#include <gtest/gtest.h>

namespace {

constexpr int pageSize = 512;

// A library whose tables take many pages each.
class DatabaseDamage : public testing::Test
{
protected:
    explicit DatabaseDamage(bool isZasset = false) : m_assets(isZasset ? "ZASSET" : "ZGENERICASSET")
    {
        PhotosDatabase database;
        database.schema.isZasset = isZasset;
        for (int pk = 1; pk <= 200; ++pk) {
            const std::string number = std::to_string(1000 + pk);
            database.rows.assets.push_back(pk % 8 == 0 ? videoRow(pk, pk) : photoRow(pk, pk));
            database.rows.assets.back().fileName = "IMG_" + number + ".JPG";
            database.rows.attributes.push_back({pk, pk, 1.5, 100});
            database.rows.albums.push_back(albumRow(pk));
            database.rows.albums.back().title = "Album " + number;
            database.join().add(pk, pk);
        }
        database.rows.sql = {"CREATE INDEX byKind ON " + m_assets + " (ZKIND, ZMODIFICATIONDATE)"};
        m_sound = inPagesOf(pageSize, database.bytes());
    }

    bool isFoundDamaged(const QByteArray &database)
    {
        m_scratch.write("Photos.sqlite", database);
        CancelToken cancel;
        return isDamaged(QString::fromUtf8(m_scratch.path("Photos.sqlite")), cancel);
    }

    // The database without the page that has `text`.
    QByteArray withoutPageOf(const QByteArray &text) const
    {
        const int at = m_sound.indexOf(text);
        EXPECT_GT(at, 0) << text.constData();
        return withoutPage(at / pageSize + 1);
    }

    QByteArray withoutPage(int page) const
    {
        QByteArray damaged = m_sound;
        return damaged.replace((page - 1) * pageSize, pageSize, QByteArray(pageSize, '\0'));
    }

    // The last child of the inner page at which a table or an index begins.
    int lastPageOf(const std::string &name) const
    {
        const int root = RawPages(m_sound).root(name);
        const QByteArray header = m_sound.mid((root - 1) * pageSize, 12);
        EXPECT_TRUE(header[0] == 5 || header[0] == 2) << name << " has one page only";
        return static_cast<unsigned char>(header[10]) << 8 | static_cast<unsigned char>(header[11]);
    }

    const std::string m_assets; // the table of photos and videos
    ScratchFolder m_scratch;
    QByteArray m_sound;
};

class DatabaseDamageOfALaterSystem : public DatabaseDamage
{
protected:
    DatabaseDamageOfALaterSystem() : DatabaseDamage(true) {}
};

TEST_F(DatabaseDamage, IsNotFoundInASoundDatabase)
{
    EXPECT_FALSE(isFoundDamaged(m_sound));
}

TEST_F(DatabaseDamage, IsNotFoundInADatabaseOfAnEarlierVersion)
{
    PhotosDatabase early;
    early.schema = Schema::early();
    early.rows.assets = {photoRow(1)};
    EXPECT_FALSE(isFoundDamaged(early.bytes()));
}

TEST_F(DatabaseDamage, IsFoundInOnePageOfThePhotos)
{
    EXPECT_TRUE(isFoundDamaged(withoutPageOf("IMG_1117.JPG")));
}

TEST_F(DatabaseDamage, IsFoundInTheLastPageOfEachTable)
{
    for (const char *table :
         {"ZGENERICASSET", "ZADDITIONALASSETATTRIBUTES", "ZGENERICALBUM", "Z_26ASSETS"})
        EXPECT_TRUE(isFoundDamaged(withoutPage(lastPageOf(table)))) << table;
}

TEST_F(DatabaseDamageOfALaterSystem, IsNotFoundInASoundDatabase)
{
    EXPECT_FALSE(isFoundDamaged(m_sound));
}

TEST_F(DatabaseDamageOfALaterSystem, IsFoundInTheLastPageOfThePhotos)
{
    EXPECT_TRUE(isFoundDamaged(withoutPage(lastPageOf("ZASSET"))));
}

TEST_F(DatabaseDamageOfALaterSystem, IsFoundInAnIndexThatLeadsToThePhotos)
{
    EXPECT_TRUE(isFoundDamaged(withoutPage(lastPageOf("byKind"))));
}

TEST_F(DatabaseDamage, IsFoundInAnIndexThatLeadsToThePhotos)
{
    EXPECT_TRUE(isFoundDamaged(withoutPage(lastPageOf("byKind"))));
}

TEST_F(DatabaseDamage, IsNotLookedForOnceItIsCancelled)
{
    m_scratch.write("Photos.sqlite", withoutPageOf("IMG_1117.JPG"));
    CancelToken cancel;
    cancel.cancel();
    EXPECT_FALSE(isDamaged(QString::fromUtf8(m_scratch.path("Photos.sqlite")), cancel));
}

} // namespace
