#ifndef PHOTOLIB_TESTS_APP_SECOND_NAME_H
#define PHOTOLIB_TESTS_APP_SECOND_NAME_H

#include <QByteArray>

#include <sys/mount.h>

/// Mounts a folder at a second place while it lives, where the test may do that.
class SecondName
{
public:
    SecondName(const QByteArray &folder, const QByteArray &place)
        : m_place(place),
          m_isThere(::mount(folder.constData(), place.constData(), nullptr, MS_BIND, nullptr) == 0)
    {
    }

    ~SecondName()
    {
        if (m_isThere)
            ::umount2(m_place.constData(), MNT_DETACH);
    }

    SecondName(const SecondName &) = delete;
    SecondName &operator=(const SecondName &) = delete;

    bool isThere() const { return m_isThere; }

private:
    const QByteArray m_place;
    const bool m_isThere;
};

#endif // PHOTOLIB_TESTS_APP_SECOND_NAME_H
