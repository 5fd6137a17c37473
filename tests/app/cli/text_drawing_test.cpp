#include "cli/text_drawing.h"

#include <gtest/gtest.h>

#include <new>

namespace {

TEST(TextDrawing, NeedsMemoryForWhatIsDrawnBesideText)
{
    constexpr qint64 moreThanThereIs = qint64(1) << 60;
    EXPECT_THROW(TextDrawing{moreThanThereIs}, std::bad_alloc);
}

} // namespace
