#pragma GCC visibility push(default)
#include "host/host_log.h"
#pragma GCC visibility pop

#include "services/log_output.h"
#include "services/no_throw.h"

#include <cstdarg>
#include <cstdio>

namespace {

// The formatted text, of any length.
QByteArray formatted(const char *format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    QByteArray text(length > 0 ? length : 0, '\0');
    // A QByteArray has room for the closing NUL.
    if (length > 0)
        std::vsnprintf(text.data(), static_cast<size_t>(length) + 1, format, again);
    va_end(again);
    return text;
}

} // namespace

void Log(const char *tag, int level, const char *format, ...)
{
    if (!isLogged(level))
        return;
    va_list arguments;
    va_start(arguments, format);
    withoutThrowing(false, [&] {
        logLine(tag, level, formatted(format, arguments));
        return true;
    });
    va_end(arguments);
}
