#ifndef PHOTOLIB_TESTS_APP_CATALOG_FIXTURE_H
#define PHOTOLIB_TESTS_APP_CATALOG_FIXTURE_H

#include "base/cancel_token.h"
#include "catalog/catalog.h"
#include "support/catalog_texts.h"
#include "support/device_folder.h"
#include "support/library_tables_writer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Reads catalogs of databases that a test has made.
class CatalogFixture : public testing::Test
{
protected:
    Catalog catalogOf(const QByteArray &database)
    {
        m_scratch.write("Photos.sqlite", database);
        return readCatalog(QString::fromUtf8(m_scratch.path("Photos.sqlite")), m_cancel);
    }

    Catalog catalogOf(const LibraryTablesWriter &writer) { return catalogOf(writer.bytes()); }

    /// The fields of the asset `id`, which must be listed.
    static FieldTexts asset(const Catalog &catalog, qint64 id)
    {
        const Asset *const found = catalog.asset(id);
        EXPECT_NE(nullptr, found) << "no asset " << id;
        return found ? fieldsOf(*found) : FieldTexts();
    }

    /// The fields of the album `id`, which must be listed.
    static FieldTexts album(const Catalog &catalog, qint64 id)
    {
        const Album *const found = catalog.album(id);
        EXPECT_NE(nullptr, found) << "no album " << id;
        return found ? fieldsOf(*found) : FieldTexts();
    }

    static std::vector<std::string> missing(const Catalog &catalog)
    {
        std::vector<std::string> names;
        for (const QByteArray &name : catalog.missing)
            names.push_back(name.toStdString());
        return names;
    }

    static std::vector<std::string> unread(const Catalog &catalog)
    {
        std::vector<std::string> names;
        for (const UnreadTable &table : catalog.unread)
            names.push_back(table.table.toStdString());
        return names;
    }

    ScratchFolder m_scratch;
    CancelToken m_cancel;
};

#endif // PHOTOLIB_TESTS_APP_CATALOG_FIXTURE_H
