#ifndef PHOTOLIB_IOS_OPEN_FILE_H
#define PHOTOLIB_IOS_OPEN_FILE_H

#include "host/device_files.h"

/// Owns an open file of the device and closes it; null where none opened.
class open_file
{
public:
    explicit open_file(VFile *file) : m_file(file) {}
    ~open_file()
    {
        if (m_file)
            vFileClose(m_file);
    }

    VFile *get() const { return m_file; }

private:
    Q_DISABLE_COPY(open_file)

    VFile *m_file;
};

#endif // PHOTOLIB_IOS_OPEN_FILE_H
