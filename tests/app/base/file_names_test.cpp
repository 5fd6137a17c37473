#include "base/file_names.h"

#include "support/row_name.h"

#include <gtest/gtest.h>

namespace {

struct NameRow {
    const char *name;
    QString given;
    QByteArray expected;
};

class SafeFileName : public testing::TestWithParam<NameRow>
{
};

TEST_P(SafeFileName, IsOneNameThatIsSafeToUse)
{
    EXPECT_EQ(GetParam().expected, safeFileName(GetParam().given));
}

INSTANTIATE_TEST_SUITE_P(
    Names, SafeFileName,
    testing::Values(
        NameRow{"Ordinary", "IMG_0001.JPG", "IMG_0001.JPG"},
        NameRow{"OtherLanguages", "grün 日本 🌄.jpg", "grün 日本 🌄.jpg"},
        NameRow{"ParentFolders", "../../x.jpg", "___.._x.jpg"},
        NameRow{"Root", "/etc/passwd", "_etc_passwd"}, NameRow{"Parent", "..", "__"},
        NameRow{"Itself", ".", "_"}, NameRow{"Hidden", ".bashrc", "_bashrc"},
        NameRow{"DotsBeforeTheExtension", "...JPG", "__.JPG"}, NameRow{"OnlyDots", "...", "___"},
        NameRow{"Reserved", "a\\b:c?d*e\"f<g>h|i.jpg", "a_b_c_d_e_f_g_h_i.jpg"},
        NameRow{"Empty", "", "unnamed"}, NameRow{"Blanks", "  \t ", "_"},
        NameRow{"OnlyBlanks", "   ", "unnamed"},
        NameRow{"ControlCharacters", "a\n\x1b[2Jb.jpg", "a__[2Jb.jpg"},
        NameRow{"Nul", QString::fromLatin1("a\0b.jpg", 7), "a_b.jpg"},
        NameRow{"TurnedWriting", QString::fromUtf8("a\u202Egpj.exe"), "a_gpj.exe"},
        NameRow{"TooLong", QString(300, 'x') + ".jpg", QByteArray(196, 'x') + ".jpg"},
        NameRow{"TooLongInLettersOfTwoBytes", QString(150, QChar(0xe4)) + ".jpeg",
                QString(97, QChar(0xe4)).toUtf8() + ".jpeg"},
        NameRow{"TooLongWithoutExtension", QString(300, 'x'), QByteArray(200, 'x')},
        NameRow{"LikeAnOption", "-rf.jpg", "_rf.jpg"},
        NameRow{"LikeALongOption", "--help", "_-help"}, NameRow{"BlankBeforeADash", " -x", "_x"},
        NameRow{"DashWithin", "a-b.jpg", "a-b.jpg"}, NameRow{"Device", "con.jpg", "_con.jpg"},
        NameRow{"DeviceWithoutExtension", "NUL", "_NUL"},
        NameRow{"DeviceWithSeveralExtensions", "Aux.tar.gz", "_Aux.tar.gz"},
        NameRow{"Port", "LPT1.mov", "_LPT1.mov"}, NameRow{"LikeAPort", "COM10.jpg", "COM10.jpg"},
        NameRow{"LikeADevice", "Connie.jpg", "Connie.jpg"},
        NameRow{"DeviceThatIsTooLong", "CON." + QString(300, 'x'), "_CON." + QByteArray(195, 'x')},
        NameRow{"ExtensionThatIsNone", "a." + QString(300, 'x'), "a." + QByteArray(198, 'x')}),
    rowName<NameRow>);

TEST(SafeFileNames, AreNeverChangedAgain)
{
    for (const QString &name : {QString("../a\n.jpg"), QString(300, 'x') + ".jpg", QString(),
                                QString("...JPG"), QString("--x"), QString("CON.-")}) {
        const QByteArray once = safeFileName(name);
        EXPECT_EQ(once, safeFileName(QString::fromUtf8(once)));
    }
}

TEST(NumberedName, PutsTheNumberBeforeTheExtension)
{
    EXPECT_EQ("IMG_0001.JPG", numberedName("IMG_0001.JPG", 1));
    EXPECT_EQ("IMG_0001 (2).JPG", numberedName("IMG_0001.JPG", 2));
    EXPECT_EQ("unnamed (10)", numberedName("unnamed", 10));
    EXPECT_EQ("a.tar (3).gz", numberedName("a.tar.gz", 3));
}

TEST(ComparedName, IsTheSameForNamesThatADiskMayNotTellApart)
{
    EXPECT_EQ(comparedName("IMG.JPG"), comparedName("img.jpg"));
    EXPECT_EQ(comparedName("GRÜN.jpg"), comparedName("grün.jpg"));
    EXPECT_EQ(comparedName("u\u0308.jpg"), comparedName("ü.jpg"));
    EXPECT_NE(comparedName("a.jpg"), comparedName("b.jpg"));
}

} // namespace
