#include "engine/new_photo.h"

#include "base/error.h"
#include "support/device_folder.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QImage>

namespace {

QString nameOf(const ScratchFolder &scratch, const char *file)
{
    return QString::fromUtf8(scratch.path(file));
}

std::string failureFor(const QString &file)
{
    try {
        newPhoto(file);
        return "none";
    } catch (const Error &error) {
        return error.what();
    }
}

TEST(NewPhoto, DescribesAPicture)
{
    const ScratchFolder scratch;
    const QString file = nameOf(scratch, "grün.png");
    ASSERT_TRUE(QImage(40, 30, QImage::Format_RGB32).save(file));
    const photoItem photo = newPhoto(file);
    EXPECT_EQ(0U, photo.id);
    EXPECT_EQ(QStringLiteral("grün.png"), photo.name);
    EXPECT_EQ(file, photo.path);
    EXPECT_EQ(3, photo.type);
    EXPECT_EQ(40, photo.width);
    EXPECT_EQ(30, photo.height);
    EXPECT_EQ(quint64(scratch.size("grün.png")), photo.fileSize);
    EXPECT_EQ(QFileInfo(file).lastModified(), photo.modifyDate);
    EXPECT_TRUE(photo.createDate.isValid());
}

TEST(NewPhoto, TakesVideosByTheirSuffix)
{
    const ScratchFolder scratch;
    for (const char *name : {"a.MOV", "a.mp4", "a.m4v"}) {
        scratch.write(name, "movie");
        const photoItem photo = newPhoto(nameOf(scratch, name));
        EXPECT_EQ(2, photo.type) << name;
        EXPECT_EQ(0, photo.width) << name;
        EXPECT_EQ(5U, photo.fileSize) << name;
    }
}

TEST(NewPhoto, KnowsNoSizeOfOtherFiles)
{
    const ScratchFolder scratch;
    scratch.write("a.jpg", "text");
    EXPECT_EQ(0, newPhoto(nameOf(scratch, "a.jpg")).width);
    EXPECT_EQ(3, newPhoto(nameOf(scratch, "a.jpg")).type);
}

TEST(NewPhoto, NamesTheFileFromTheRoot)
{
    const ScratchFolder scratch;
    scratch.write("a.jpg", "text");
    const QString relative = QDir::current().relativeFilePath(nameOf(scratch, "a.jpg"));
    ASSERT_FALSE(relative.startsWith(QLatin1Char('/')));
    EXPECT_EQ(nameOf(scratch, "a.jpg"), newPhoto(relative).path);
}

TEST(NewPhoto, IsNoneWithoutAFile)
{
    const ScratchFolder scratch;
    scratch.makeFolder("folder");
    scratch.makePipe("pipe");
    EXPECT_EQ(scratch.path("none").toStdString() + ": no such file",
              failureFor(nameOf(scratch, "none")));
    EXPECT_EQ(scratch.path("folder").toStdString() + ": not a regular file",
              failureFor(nameOf(scratch, "folder")));
    EXPECT_EQ(scratch.path("pipe").toStdString() + ": not a regular file",
              failureFor(nameOf(scratch, "pipe")));
}

} // namespace
