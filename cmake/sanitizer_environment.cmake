# For the environment of tests under sanitizers. A release that frees no more than the storage
# and a string that stays with its library leak by contract; the file names each.
# The check for leaks misreads where the thread-local memory of some loaded libraries lies,
# such as that of libjpeg, and crashes, unless it leaves it out.
set(sanitizer_environment
    "LSAN_OPTIONS=intercept_tls_get_addr=0:suppressions=${PROJECT_SOURCE_DIR}/tests/support/lsan_suppressions.txt:print_suppressions=0"
    "UBSAN_OPTIONS=print_stacktrace=1"
    "TSAN_OPTIONS=halt_on_error=1"
)
