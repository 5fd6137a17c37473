#ifndef PHOTOLIB_FUZZ_FUZZ_HOST_H
#define PHOTOLIB_FUZZ_FUZZ_HOST_H

#include "support/fake_host.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// Makes what the fake host takes for a misuse, such as a closed handle, end the process.
inline int initializeFuzzing(int *argc, char ***argv)
{
    testing::InitGoogleTest(argc, *argv);
    testing::GTEST_FLAG(break_on_failure) = true;
    return 0;
}

/// A folder for the copies of databases, in memory where there is a disk there: one for the
/// process, as long as it lives.
inline QString copiesFolder()
{
    static const QTemporaryDir folder((QDir(QStringLiteral("/dev/shm")).exists()
                                           ? QStringLiteral("/dev/shm")
                                           : QDir::tempPath()) +
                                      QStringLiteral("/photolib-fuzz-XXXXXX"));
    return folder.path() + QLatin1Char('/');
}

#endif // PHOTOLIB_FUZZ_FUZZ_HOST_H
