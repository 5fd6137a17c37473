#ifndef PHOTOLIB_TESTS_APP_ENVIRONMENT_H
#define PHOTOLIB_TESTS_APP_ENVIRONMENT_H

#include <QByteArray>

#include <ctime>

/// Sets an environment variable while it lives.
class Environment
{
public:
    Environment(const char *name, const QByteArray &value)
        : m_name(name), m_old(qgetenv(name)), m_wasSet(qEnvironmentVariableIsSet(name))
    {
        qputenv(name, value);
        tzset();
    }
    ~Environment()
    {
        if (m_wasSet)
            qputenv(m_name, m_old);
        else
            qunsetenv(m_name);
        tzset();
    }
    Environment(const Environment &) = delete;
    Environment &operator=(const Environment &) = delete;

private:
    const char *m_name;
    QByteArray m_old;
    bool m_wasSet;
};

#endif // PHOTOLIB_TESTS_APP_ENVIRONMENT_H
