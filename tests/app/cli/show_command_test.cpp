#include "support/program_fixture.h"

namespace {

using ShowCommand = ProgramTest;

TEST_F(ShowCommand, ListsTheFilesOfAPhotoByRole)
{
    writeTwoPhotos();
    const QByteArray edits = "device/PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/";
    m_scratch.write("device/DCIM/100APPLE/IMG_0001.mov", "film");
    m_scratch.write("device/DCIM/100APPLE/IMG_0001.DNG", "raw");
    m_scratch.write("device/DCIM/100APPLE/IMG_0001.AAE", "recipe");
    m_scratch.write(edits + "Adjustments.plist", "recipe");
    m_scratch.write(edits + "FullSizeRender.jpg", "edited");
    m_scratch.write(edits + "FullSizeRender.mov", "edited film");
    m_scratch.write("device/PhotoData/Metadata/DCIM/100APPLE/IMG_0001.JPG", "still");
    m_scratch.write("device/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/5005.JPG", "small");
    const QByteArray output = run({"show", "1", "-d", device()}).output;
    EXPECT_EQ("File:        DCIM/100APPLE/IMG_0001.JPG, 7 bytes (7 bytes)\n"
              "Live film:   DCIM/100APPLE/IMG_0001.mov, 4 bytes (4 bytes)\n"
              "Edited file: PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/"
              "FullSizeRender.jpg, 6 bytes (6 bytes)\n"
              "Edited film: PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/"
              "FullSizeRender.mov, 11 bytes (11 bytes)\n"
              "Recipe:      DCIM/100APPLE/IMG_0001.AAE, 6 bytes (6 bytes)\n"
              "Recipe:      PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/"
              "Adjustments.plist, 6 bytes (6 bytes)\n"
              "Other file:  DCIM/100APPLE/IMG_0001.DNG, 3 bytes (3 bytes)\n"
              "Still:       PhotoData/Metadata/DCIM/100APPLE/IMG_0001.JPG, 5 bytes (5 bytes)\n"
              "Thumbnail:   PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/5005.JPG, "
              "5 bytes (5 bytes)\n",
              output.mid(output.indexOf("File:")));
}

TEST_F(ShowCommand, ListsWhatIsLeftOfAPhotoThatIsMissing)
{
    writeTwoPhotos();
    m_scratch.write("device/DCIM/100APPLE/IMG_0002.MOV", "film");
    const QByteArray output = run({"show", "2", "-d", device()}).output;
    EXPECT_EQ("File:        missing on the device\n"
              "Live film:   DCIM/100APPLE/IMG_0002.MOV, 4 bytes (4 bytes)\n",
              output.mid(output.indexOf("File:")));
}

} // namespace
