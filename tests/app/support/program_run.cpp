#include "support/program_run.h"

#include "support/disk_faults.h"

#include <QProcessEnvironment>

#include <csignal>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int longestRun = 120 * 1000; // milliseconds; only a run that hangs takes so long

QProcessEnvironment environmentFor(const ProgramSetup &setup)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), setup.cacheFolder);
    environment.remove(QStringLiteral("PHOTOLIB_PLUGIN"));
    // The check for leaks misreads where the thread-local memory of some loaded libraries
    // lies, such as that of libjpeg, and crashes, unless it leaves it out.
    environment.insert(QStringLiteral("LSAN_OPTIONS"),
                       QStringLiteral("intercept_tls_get_addr=0:print_suppressions=0:"
                                      "suppressions=") +
                           QLatin1String(PHOTOLIB_LSAN_SUPPRESSIONS));
    environment.insert(QStringLiteral("UBSAN_OPTIONS"), QStringLiteral("print_stacktrace=1"));
    for (const auto &variable : setup.environment)
        environment.insert(variable.first, variable.second);
    for (const QString &name : setup.unset)
        environment.remove(name);
    return environment;
}

QStringList decoded(const QList<QByteArray> &arguments)
{
    QStringList result;
    for (const QByteArray &argument : arguments)
        result.append(QString::fromUtf8(argument));
    return result;
}

// The superuser may read and write everything through two capabilities; without them in
// the bounding set no program that is started gets them.
bool dropFileCapabilities()
{
    return ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE) == 0 &&
           ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH) == 0;
}

// A test run in the background inherits signals that are ignored or blocked.
void restoreSignals()
{
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE})
        std::signal(signal, SIG_DFL);
}

} // namespace

Program::Program(const ProgramSetup &setup, const QList<QByteArray> &arguments) : m_setup(setup)
{
    setProcessEnvironment(environmentFor(setup));
    setStandardInputFile(setup.input.isEmpty() ? nullDevice() : setup.input);
    if (!setup.output.isEmpty())
        setStandardOutputFile(setup.output);
    const QString program =
        setup.program.isEmpty() ? QStringLiteral(PHOTOLIB_PROGRAM) : setup.program;
    start(program, decoded(arguments));
}

Program::~Program()
{
    kill();
    waitForFinished();
}

int Program::waitForExitCode()
{
    const bool hasEnded = state() == NotRunning || waitForFinished(longestRun);
    return hasEnded && exitStatus() == NormalExit && error() != FailedToStart ? exitCode() : -1;
}

void Program::setupChildProcess()
{
    restoreSignals();
    const rlimit limit = {m_setup.largestFile, m_setup.largestFile};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    if (m_setup.closesOutput)
        ::close(STDOUT_FILENO);
    if (m_setup.outputFd >= 0)
        ::dup2(m_setup.outputFd, STDOUT_FILENO);
    if (m_setup.errorFd >= 0)
        ::dup2(m_setup.errorFd, STDERR_FILENO);
    if (m_setup.respectsPermissions && ::geteuid() == 0)
        dropFileCapabilities();
    if (m_setup.lacksLinks && !takeLinksAway())
        ::_exit(77);
}

ProgramResult runProgram(const ProgramSetup &setup, const QList<QByteArray> &arguments)
{
    Program program(setup, arguments);
    const int exitCode = program.waitForExitCode();
    return {exitCode, program.readAllStandardOutput(), program.readAllStandardError()};
}

bool canRespectPermissions()
{
    // Dropping a capability takes one itself, which containers may lack.
    return ::geteuid() != 0 || ::prctl(PR_CAPBSET_READ, CAP_SETPCAP) == 1;
}
