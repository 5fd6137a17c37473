#include "cli/arguments.h"

#include <QTextCodec>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

// A file must not get the number of a standard stream that is closed, or the program's
// output would end up in it. The stand-ins refuse what the streams are for.
void occupyStandardStreams()
{
    const int modes[] = {O_WRONLY, O_RDONLY, O_RDONLY};
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        // The lowest free number is this one, since those below are taken.
        if (::fcntl(fd, F_GETFD) < 0)
            ::open("/dev/null", modes[fd]);
    }
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardStreams();
    // A reader of the output that goes away and a file that gets too large are noticed when
    // writing.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // File names are UTF-8 between program and plug-in, whatever the locale is.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    return runProgram(argc, argv);
}
