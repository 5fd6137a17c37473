#include "engine/sheet_plan.h"

#include "base/error.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

SheetOptions options(int columns, int boxSize, int perPage, int labels)
{
    SheetOptions options;
    options.columns = columns;
    options.boxSize = boxSize;
    options.perPage = perPage;
    options.labels = QVector<SheetLabel>(labels, SheetLabel::Name);
    return options;
}

bool isTooLarge(const SheetOptions &options, int cells)
{
    try {
        const SheetPlan plan(options, cells);
        return false;
    } catch (const Error &error) {
        EXPECT_EQ(Error::WrongUsage, error.kind());
        return true;
    }
}

TEST(SheetPlan, SharesThePicturesOutAmongPages)
{
    const SheetPlan plan(options(3, 184, 5, 1), 12);
    EXPECT_EQ(3, plan.pages());
    EXPECT_EQ(5, plan.cellsOn(0));
    EXPECT_EQ(10, plan.firstCell(2));
    EXPECT_EQ(2, plan.cellsOn(2));
    EXPECT_EQ(plan.layout(0).width(), plan.layout(2).width()) << "all pages are equally wide";
    EXPECT_GT(plan.layout(0).height(), plan.layout(2).height());
}

TEST(SheetPlan, HasOneEmptyPageWithoutPictures)
{
    const SheetPlan plan(SheetOptions(), 0);
    EXPECT_EQ(1, plan.pages());
    EXPECT_EQ(0, plan.cellsOn(0));
    EXPECT_TRUE(plan.layout(0).isDrawable());
}

TEST(SheetPlan, CountsOnlyThePicturesThatThereAre)
{
    EXPECT_EQ(SheetPlan(options(0, 184, 1000000, 1), 30).layout(0).size(),
              SheetPlan(options(0, 184, 30, 1), 30).layout(0).size());
}

TEST(SheetPlan, RefusesAPageThatNobodyCanDraw)
{
    EXPECT_FALSE(isTooLarge(options(160, 184, 400, 1), 400));
    EXPECT_TRUE(isTooLarge(options(161, 184, 400, 1), 400)) << "too wide";
    EXPECT_FALSE(isTooLarge(options(1, 184, 144, 1), 1000));
    EXPECT_TRUE(isTooLarge(options(1, 184, 145, 1), 1000)) << "too high";
    EXPECT_TRUE(isTooLarge(options(10, 2048, 100, 1), 100)) << "too many pixels";
    EXPECT_TRUE(isTooLarge(options(1000000, 2048, 1000000, 3), 1000000));
    EXPECT_FALSE(isTooLarge(options(0, 2048, 400, 1), 4)) << "which nobody asked for";
}

TEST(SheetPlan, DrawsOnlyOneOfTwoVeryLargePagesAtATime)
{
    EXPECT_TRUE(SheetPlan(SheetOptions(), 1000).hasRoomForTwoPages());
    EXPECT_FALSE(SheetPlan(SheetOptions(), 10).hasRoomForTwoPages()) << "there is one";
    EXPECT_FALSE(SheetPlan(options(0, 1024, 100, 1), 200).hasRoomForTwoPages());
}

TEST(SheetLayout, IsAboutSquareByDefault)
{
    for (const int boxSize : {32, 96, 184, 500, 2048}) {
        for (const int labels : {0, 1, 3}) {
            const SheetStyle style = {boxSize, labels};
            const SheetLayout layout(2000, SheetLayout::columnsFor(2000, style), style);
            const double shape = double(layout.width()) / double(layout.height());
            EXPECT_NEAR(1.0, shape, 0.15) << boxSize << ' ' << labels;
        }
    }
}

TEST(SheetLayout, IsTheUsualOneForTheUsualSize)
{
    for (int cells = 0; cells <= 400; ++cells)
        EXPECT_EQ(std::max(5, int(std::ceil(std::sqrt(cells * 1.15)))),
                  SheetLayout::columnsFor(cells));
    EXPECT_EQ(QSize(4540, 4422), SheetLayout(400, 22).size());
    EXPECT_EQ(QRect(240, 110, 184, 184), SheetLayout(400, 22).pictureBox(1));
    EXPECT_EQ(QRect(36, 336 + 191, 184, 17), SheetLayout(400, 22).labelLine(22));
}

TEST(SheetLayout, HasRoomForAHeadingByDefault)
{
    for (const int boxSize : {32, 96, 184, 2048}) {
        const SheetStyle style = {boxSize, 1};
        const SheetLayout layout(1, SheetLayout::columnsFor(1, style), style);
        EXPECT_GE(layout.title().width(), 1000);
    }
}

// All that a cell shows.
QVector<QRect> partsOf(const SheetLayout &layout, int index)
{
    QVector<QRect> parts = {layout.pictureBox(index)};
    for (int line = 0; line < layout.style().labelLines; ++line)
        parts.append(layout.labelLine(index, line));
    return parts;
}

void expectApart(const SheetLayout &layout, int cells)
{
    QVector<QRect> all = {layout.title(), layout.subtitle()};
    for (int i = 0; i < cells; ++i)
        all += partsOf(layout, i);
    const QRect page(QPoint(), layout.size());
    for (int i = 0; i < all.size(); ++i) {
        EXPECT_TRUE(page.contains(all[i])) << i;
        for (int j = 0; j < i; ++j)
            EXPECT_FALSE(all[i].intersects(all[j])) << i << ' ' << j;
    }
}

TEST(SheetLayout, KeepsPicturesAndLabelsApart)
{
    constexpr int cells = 7;
    for (const int boxSize : {32, 184, 2048}) {
        for (const int labels : {0, 1, 2, 3}) {
            for (const int columns : {1, 3, 10})
                expectApart(SheetLayout(cells, columns, {boxSize, labels}), cells);
        }
    }
}

TEST(SheetStyle, FillsTheBoxAndGrowsSmallPicturesToTwiceTheirSize)
{
    const SheetStyle style = {100, 1};
    EXPECT_EQ(QSize(100, 75), style.shownSize({400, 300}));
    EXPECT_EQ(QSize(100, 50), style.shownSize({60, 30}));
    EXPECT_EQ(QSize(40, 60), style.shownSize({20, 30}));
    EXPECT_EQ(QSize(100, 1), style.shownSize({5000, 1}));
    EXPECT_EQ(QSize(800, 600), (SheetStyle{2048, 1}).shownSize({400, 300}));
}

} // namespace
