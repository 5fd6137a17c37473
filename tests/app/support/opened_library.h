#ifndef PHOTOLIB_TESTS_APP_OPENED_LIBRARY_H
#define PHOTOLIB_TESTS_APP_OPENED_LIBRARY_H

#include "engine/library_session.h"

/// The library of the device in a folder, opened in the test's own process with the built plug-in.
class OpenedLibrary : private OpenObserver
{
public:
    /// Throws Error, which fails the test.
    OpenedLibrary(const QByteArray &device, const QByteArray &workFolder)
        : session(optionsFor(device, workFolder), *this, m_cancel)
    {
    }

private:
    static LibraryOptions optionsFor(const QByteArray &device, const QByteArray &workFolder)
    {
        LibraryOptions options;
        options.device = device;
        options.workFolder = workFolder;
        options.plugin = PHOTOLIB_PLUGIN_FILE;
        return options;
    }

    void waiting(const QByteArray &) override {}
    void copied(qint64, qint64) override {}

    CancelToken m_cancel;

public:
    LibrarySession session;
};

#endif // PHOTOLIB_TESTS_APP_OPENED_LIBRARY_H
