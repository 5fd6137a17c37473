#ifndef PHOTOLIB_TESTS_CAMERADB_QUERY_FIXTURE_H
#define PHOTOLIB_TESTS_CAMERADB_QUERY_FIXTURE_H

#include "cameradb/asset_queries.h"
#include "cameradb/owned_model.h"
#include "support/fake_host.h"
#include "support/photos_database.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Keys = QList<quint64>;

/// A database key as the model holds it.
inline quint64 key(qint32 pk)
{
    return static_cast<quint64>(static_cast<qint64>(pk));
}

/// A database to fill and the model that a query shall file its rows in. The host is
/// there to see that a query neither calls nor logs more than it has to.
class QueryFixture : public testing::Test
{
protected:
    void expectSilence() const { EXPECT_EQ(host.trace(), std::vector<std::string>()); }
    void expectLogged(const QByteArray &text) const
    {
        EXPECT_EQ(host.log(), std::vector<LogLine>{failure(text)});
        EXPECT_EQ(host.calls(), std::vector<std::string>());
    }

    FakeHost host;
    PhotosDatabase database;
    OwnedModel model = emptyModel();
};

#endif // PHOTOLIB_TESTS_CAMERADB_QUERY_FIXTURE_H
