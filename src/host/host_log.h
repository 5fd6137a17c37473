#ifndef PHOTOLIB_HOST_HOST_LOG_H
#define PHOTOLIB_HOST_HOST_LOG_H

#if defined(__GNUC__)
#define PHOTOLIB_PRINTF_FORMAT(formatIndex, firstArgument)                                         \
    __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define PHOTOLIB_PRINTF_FORMAT(formatIndex, firstArgument)
#endif

/// The host's log. The plug-in always passes the tag "PHOTOLIB", level 1 for progress
/// and notices, and level 2 for failures. Texts carry no line break at their end and
/// may hold raw bytes that came from the device. The host defines it, for calls from
/// any thread; it must not throw.
void Log(const char *tag, int level, const char *format, ...) PHOTOLIB_PRINTF_FORMAT(3, 4);

#endif // PHOTOLIB_HOST_HOST_LOG_H
