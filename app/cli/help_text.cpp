#include "cli/help_text.h"

#include <QtGlobal>

#include <algorithm>
#include <sstream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

const int usualWidth = 80;
const int narrowestWidth = 40; // below it, descriptions have no room beside their options

// Where the description begins: behind the first two blanks that follow a word, or else where the
// line does.
std::size_t descriptionColumn(const std::string &line)
{
    const std::size_t start = line.find_first_not_of(' ');
    if (start == std::string::npos)
        return 0;
    const std::size_t gap = line.find("  ", start);
    const std::size_t text = gap == std::string::npos ? gap : line.find_first_not_of(' ', gap);
    return text == std::string::npos ? start : text;
}

std::string wrappedLine(const std::string &line, std::size_t width)
{
    const std::size_t column = descriptionColumn(line);
    const std::string indent(column, ' ');
    std::string result;
    std::string rest = line;
    while (rest.size() > width) {
        std::size_t cut = rest.rfind(' ', width);
        if (cut == std::string::npos || cut <= column)
            cut = rest.find(' ', width);
        if (cut == std::string::npos)
            break;
        result.append(rest, 0, cut).push_back('\n');
        const std::size_t next = rest.find_first_not_of(' ', cut);
        rest = next == std::string::npos ? std::string() : std::string(indent).append(rest, next);
    }
    return result + rest + '\n';
}

} // namespace

int terminalWidth()
{
    winsize size = {};
    const bool isKnown = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    const int named = ::isatty(STDOUT_FILENO) != 0 ? qEnvironmentVariableIntValue("COLUMNS") : 0;
    const int width = isKnown ? size.ws_col : named;
    return width > 0 ? std::max(width, narrowestWidth) : usualWidth;
}

std::string wrappedHelp(const std::string &help, int width)
{
    std::string result;
    std::istringstream lines(help);
    bool isBehindBlank = false;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() || !isBehindBlank) // CLI11 leaves two between groups of options
            result += wrappedLine(line, static_cast<std::size_t>(width));
        isBehindBlank = line.empty();
    }
    return result;
}
