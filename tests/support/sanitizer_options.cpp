// What the sanitizers are told in each test program; the environment may add to it.

#define EXPORTED __attribute__((visibility("default"))) // the sanitizers' libraries look them up

// A release that frees no more than the storage and a string that stays with its library leak by
// contract; the file names each. The check for leaks misreads where the thread-local memory of
// some loaded libraries lies, such as that of libjpeg, and crashes, unless it leaves it out.
extern "C" EXPORTED const char *__lsan_default_options()
{
    return "intercept_tls_get_addr=0:print_suppressions=0:suppressions=" PHOTOLIB_LSAN_SUPPRESSIONS;
}

extern "C" EXPORTED const char *__ubsan_default_options()
{
    return "print_stacktrace=1";
}

extern "C" EXPORTED const char *__tsan_default_options()
{
    return "halt_on_error=1";
}
