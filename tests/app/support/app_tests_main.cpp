#include "support/test_time_limit.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new TestTimeLimit(300));
    // QProcess needs one.
    const QCoreApplication application(argc, argv);
    // As the program does, so that file names mean the same to both.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    return RUN_ALL_TESTS();
}
