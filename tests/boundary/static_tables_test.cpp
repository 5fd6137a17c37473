#include "cameradb/cancel_flag.h"
#include "ios/photo_manager.h"

#include <gtest/gtest.h>

namespace {

// What the statics hold when the program has been loaded and no manager has been made.
class StateAtLoad : public testing::Environment
{
public:
    void SetUp() override
    {
        if (seen) // again for each repetition
            return;
        tableWasEmpty = photo_manager::m_mapAlbumKind2Type.isEmpty();
        uuidWasEmpty = photo_manager::m_photoLibUUID.isEmpty();
        cancelWasClear = !gbShouldQuit.load();
        seen = true;
    }

    bool seen = false;
    bool tableWasEmpty = false;
    bool uuidWasEmpty = false;
    bool cancelWasClear = false;
};

// Environments are set up before the first test, whichever it is.
StateAtLoad *const atLoad =
    static_cast<StateAtLoad *>(testing::AddGlobalTestEnvironment(new StateAtLoad));

TEST(StaticTables, AreEmptyUntilTheFirstManagerIsMade)
{
    ASSERT_TRUE(atLoad->seen);
    EXPECT_TRUE(atLoad->tableWasEmpty);
    EXPECT_TRUE(atLoad->uuidWasEmpty);
}

TEST(StaticTables, StartWithoutACancel)
{
    ASSERT_TRUE(atLoad->seen);
    EXPECT_TRUE(atLoad->cancelWasClear);
}

} // namespace
