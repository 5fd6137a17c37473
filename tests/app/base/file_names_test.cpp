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

TEST(SafeNames, AreAsLongAsTheGivenOne)
{
    EXPECT_EQ(QByteArray(300, 'x') + ".jpg", safeName(QString(300, 'x') + ".jpg"));
    EXPECT_EQ("__.a_b", safeName("...a/b"));
    EXPECT_EQ("_CON", safeName("CON"));
    EXPECT_EQ("unnamed", safeName(" "));
}

TEST(SafeNames, DoNotEndWithADot)
{
    EXPECT_EQ("a_", safeName("a."));
    EXPECT_EQ("a._", safeName("a.. "));
}

TEST(SafeFolderNames, AreNoLongerThanDisksTake)
{
    EXPECT_EQ(QByteArray(255, 'x'), safeFolderName(QString(255, 'x')));
    EXPECT_EQ(QByteArray(255, 'x'), safeFolderName(QString(256, 'x')));
    EXPECT_EQ(QByteArray(253, 'x'), safeFolderName(QString(253, 'x') + "  y"));
    EXPECT_EQ(QByteArray(254, 'x') + '_', safeFolderName(QString(254, 'x') + "..y"));
}

struct CutRow {
    const char *name;
    QByteArray given;
    int bytes;
    QByteArray expected;
};

class CutName : public testing::TestWithParam<CutRow>
{
};

TEST_P(CutName, EndsWithAWholeCharacter)
{
    EXPECT_EQ(GetParam().expected, cutName(GetParam().given, GetParam().bytes));
}

INSTANTIATE_TEST_SUITE_P(
    Names, CutName,
    testing::Values(CutRow{"ThatFits", "abc", 3, "abc"}, CutRow{"TooLong", "abcd", 3, "abc"},
                    CutRow{"None", "abc", 0, ""}, CutRow{"TwoBytes", "a\u00e4b", 2, "a"},
                    CutRow{"FourBytes", "a🌄b", 4, "a"}, CutRow{"FourBytesThatFit", "a🌄b", 5, "a🌄"},
                    CutRow{"AccentOfItsOwn", "ae\u0301b", 3, "a"},
                    CutRow{"AccentThatFollows", "ae\u0301b", 2, "a"},
                    CutRow{"AccentThatFits", "ae\u0301b", 4, "ae\u0301"},
                    CutRow{"Family", "a👩\u200d👧b", 9, "a"},
                    CutRow{"SkinTone", "a👍🏽b", 5, "a"}, CutRow{"Flag", "a🇮🇹b", 5, "a"},
                    CutRow{"Syllable", "a\u1100\u1161b", 4, "a"},
                    CutRow{"OneCharacterThatIsTooLong", "e" + QByteArray("\u0301").repeated(9), 6,
                           "e" + QByteArray("\u0301").repeated(2)},
                    CutRow{"NotUtf8",
                           "ab\xff\xff"
                           "cd",
                           4, "ab\xff\xff"},
                    CutRow{"HalfACharacterAtTheEnd", "abc\xc3", 3, "abc"}),
    rowName<CutRow>);

} // namespace
