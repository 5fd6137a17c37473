#include <QCoreApplication>
#include <QTextCodec>

#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    // QProcess needs one.
    const QCoreApplication application(argc, argv);
    // As the program does, so that file names mean the same to both.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    return RUN_ALL_TESTS();
}
