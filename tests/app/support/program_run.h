#ifndef PHOTOLIB_TESTS_APP_PROGRAM_RUN_H
#define PHOTOLIB_TESTS_APP_PROGRAM_RUN_H

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>

/// How a test runs the program.
struct ProgramSetup {
    QString cacheFolder;                        ///< where the user's cache folder is
    QString program;                            ///< another file than the built program
    QList<QPair<QString, QString>> environment; ///< further variables
    QStringList unset;                          ///< variables that it does not have
    QString input;                              ///< a file for standard input; empty for none
    QString output;                             ///< a file for standard output; empty to collect it
    bool closesOutput = false;                  ///< starts with a closed standard output
    /// Its disks are without links, see `takeLinksAway`; it exits with 77 where that cannot be.
    bool lacksLinks = false;
    bool respectsPermissions = false; ///< even for the superuser a file's mode counts
    /// Bytes of a file that it may write; the default keeps a program that does not stop
    /// from filling the disk.
    quint64 largestFile = quint64(16) << 30;
    int outputFd = -1; ///< takes standard output instead of collecting it
    int errorFd = -1;  ///< takes standard error instead of collecting it
};

/// A running or ended program. Destroying it kills a running one.
class Program : public QProcess
{
public:
    /// Starts the program; the arguments are the bytes of its command line.
    Program(const ProgramSetup &setup, const QList<QByteArray> &arguments);
    ~Program() override;

    /// Waits for its end and returns its exit code; -1 when it crashed or does not end.
    int waitForExitCode();

protected:
    void setupChildProcess() override;

private:
    const ProgramSetup m_setup;
};

struct ProgramResult {
    int exitCode;
    QByteArray output;
    QByteArray errors;
};

/// Runs the program to its end.
ProgramResult runProgram(const ProgramSetup &setup, const QList<QByteArray> &arguments);

/// Whether a test may rely on `ProgramSetup::respectsPermissions`.
bool canRespectPermissions();

#endif // PHOTOLIB_TESTS_APP_PROGRAM_RUN_H
