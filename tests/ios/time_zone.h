#ifndef PHOTOLIB_TESTS_IOS_TIME_ZONE_H
#define PHOTOLIB_TESTS_IOS_TIME_ZONE_H

#include <QByteArray>
#include <QtGlobal>

#include <ctime>

/// Runs its scope in the time zone `zone`, a POSIX text such as "EAST-9".
class TimeZone
{
public:
    explicit TimeZone(const QByteArray &zone)
        : m_wasSet(qEnvironmentVariableIsSet("TZ")), m_before(qgetenv("TZ"))
    {
        qputenv("TZ", zone);
        tzset();
    }
    ~TimeZone()
    {
        if (m_wasSet)
            qputenv("TZ", m_before);
        else
            qunsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone &) = delete;
    TimeZone &operator=(const TimeZone &) = delete;

private:
    const bool m_wasSet;
    const QByteArray m_before;
};

#endif // PHOTOLIB_TESTS_IOS_TIME_ZONE_H
