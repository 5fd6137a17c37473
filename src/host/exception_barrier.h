#ifndef PHOTOLIB_HOST_EXCEPTION_BARRIER_H
#define PHOTOLIB_HOST_EXCEPTION_BARRIER_H

#include <exception>

#if defined(__GLIBCXX__)
#include <cxxabi.h>
#endif

/// Runs `body` and returns its result, or `failure` when it throws. Exported operations
/// wrap what allocates in it: a host built by another compiler cannot catch our
/// exceptions, so running out of memory must come back as a failed call.
template <class Result, class Body>
Result withoutThrowing(const Result &failure, const Body &body)
{
    try {
        return body();
#if defined(__GLIBCXX__)
    } catch (abi::__forced_unwind &) {
        // The host is ending this thread; stopping that would end the process instead.
        throw;
#endif
    } catch (...) {
        return failure;
    }
}

#endif // PHOTOLIB_HOST_EXCEPTION_BARRIER_H
