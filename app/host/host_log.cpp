#pragma GCC visibility push(default)
#include "host/host_log.h"
#pragma GCC visibility pop

#include "base/log_output.h"
#include "host/exception_barrier.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>

void Log(const char *tag, int level, const char *format, ...)
{
    if (!isLogged(level))
        return;
    char *text = nullptr;
    va_list arguments;
    va_start(arguments, format);
    const int length = ::vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length < 0)
        return;
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    withoutThrowing(false, [&] {
        logLine(tag, level, QByteArray(text, length));
        return true;
    });
}
