#include "support/test_time_limit.h"

#include <QTextCodec>

#include <gtest/gtest.h>

#include <clocale>
#include <ctime>
#include <initializer_list>

namespace {

// Local times and local encodings must not leak into results, so the tests run where
// both differ from UTC and UTF-8.
void leaveUtc()
{
    qputenv("TZ", "America/St_Johns");
    tzset();
}

void leaveUtf8()
{
    // The C library's encoding matters little and a system may lack such a locale; Qt's is
    // set in any case.
    for (const char *locale : {"en_US.ISO-8859-1", "en_GB.ISO-8859-1", "de_DE.ISO-8859-1"}) {
        if (std::setlocale(LC_CTYPE, locale) != nullptr)
            break;
    }
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO 8859-1"));
}

} // namespace

int main(int argc, char **argv)
{
    leaveUtc();
    leaveUtf8();
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new TestTimeLimit(120));
    return RUN_ALL_TESTS();
}
