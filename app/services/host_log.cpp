#pragma GCC visibility push(default)
#include "host/host_log.h"
#pragma GCC visibility pop

#include "services/log_output.h"
#include "services/no_throw.h"

#include <cstdarg>
#include <cstdio>

namespace {

// Room for a text of `length` characters and the closing NUL; empty when memory runs out.
QByteArray roomFor(int length)
{
    return withoutThrowing(QByteArray(), [length] { return QByteArray(length + 1, '\0'); });
}

} // namespace

void Log(const char *tag, int level, const char *format, ...)
{
    if (!isLogged(level))
        return;
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    QByteArray text = roomFor(qMax(length, 0));
    if (length < 0 || text.isEmpty())
        return;
    va_start(arguments, format);
    std::vsnprintf(text.data(), static_cast<size_t>(text.size()), format, arguments);
    va_end(arguments);
    text.chop(1);
    withoutThrowing(false, [&] {
        logLine(tag, level, text);
        return true;
    });
}
