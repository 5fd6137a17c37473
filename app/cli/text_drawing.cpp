#include "cli/text_drawing.h"

#include "base/blocked_signals.h"
#include "base/error.h"
#include "base/log_output.h"
#include "base/unique_fd.h"

#include <QDir>
#include <QFile>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Qt looks for sockets of the session when it starts, and where the session has no folder for
// them it makes one and leaves it. This one is gone when Qt has started.
class RuntimeFolder
{
public:
    RuntimeFolder()
    {
        if (qEnvironmentVariableIsSet(variable))
            return;
        m_path = QFile::encodeName(QDir::tempPath()) + "/photolib-XXXXXX";
        if (::mkdtemp(m_path.data()))
            qputenv(variable, m_path);
        else
            m_path.clear();
    }

    ~RuntimeFolder()
    {
        if (m_path.isEmpty())
            return;
        ::rmdir(m_path.constData());
        qunsetenv(variable);
    }

    RuntimeFolder(const RuntimeFolder &) = delete;
    RuntimeFolder &operator=(const RuntimeFolder &) = delete;

private:
    static constexpr char variable[] = "XDG_RUNTIME_DIR";

    const BlockedSignals m_blocked{signalSet({SIGHUP, SIGINT, SIGQUIT, SIGTERM})};
    QByteArray m_path;
};

std::unique_ptr<const QGuiApplication> newApplication()
{
    static char name[] = "photolib";
    static char *arguments[] = {name, nullptr};
    static int count = 1;
    return std::make_unique<const QGuiApplication>(count, arguments);
}

bool hasFont()
{
    // Qt lists families also where there is no font for them.
    return QFontMetrics(QFont(QStringLiteral("sans-serif"))).inFont(QLatin1Char('A'));
}

void drawSomeText()
{
    const auto application = newApplication();
    QImage image(100, 50, QImage::Format_RGB32);
    QPainter painter(&image);
    for (const bool isBold : {false, true}) {
        QFont font(QStringLiteral("sans-serif"));
        font.setBold(isBold);
        painter.setFont(font);
        painter.drawText(0, 25, QStringLiteral("photolib"));
    }
}

constexpr int noMemory = 3;

// Whether there is room for so much, which is never given back.
bool takeAway(qint64 bytes)
{
    constexpr int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
    return ::mmap(nullptr, static_cast<size_t>(bytes), PROT_READ | PROT_WRITE, flags, -1, 0) !=
           MAP_FAILED;
}

[[noreturn]] void drawAndExit(qint64 otherBytes)
{
    const rlimit noCore = {};
    ::setrlimit(RLIMIT_CORE, &noCore);
    const UniqueFd nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    ::dup2(nowhere.get(), STDERR_FILENO);
    for (const int signal : {SIGSEGV, SIGBUS, SIGABRT})
        std::signal(signal, SIG_DFL);
    if (!takeAway(otherBytes))
        ::_exit(noMemory);
    try {
        drawSomeText();
    } catch (...) {
        ::_exit(noMemory);
    }
    ::_exit(0);
}

// What reads the fonts ends the process when it has no memory, and Qt does when it cannot
// start. So another process tries first.
void tryToDrawText(qint64 otherBytes)
{
    const pid_t child = ::fork();
    if (child == 0)
        drawAndExit(otherBytes);
    int status = 0;
    while (child > 0 && ::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == noMemory)
        throw std::bad_alloc();
    if (child > 0 && WIFSIGNALED(status))
        throw Error("text", std::string("cannot be drawn (") + ::strsignal(WTERMSIG(status)) +
                                "): out of memory, or no use of the fonts or of "
                                "QT_QPA_PLATFORM");
}

} // namespace

TextDrawing::TextDrawing(qint64 otherBytes)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    {
        const RuntimeFolder folder;
        tryToDrawText(otherBytes);
        m_application = newApplication();
    }
    if (!hasFont())
        writeErrorLine("photolib: no font is installed: the sheet has no text");
}
