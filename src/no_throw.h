#ifndef PHOTOLIB_NO_THROW_H
#define PHOTOLIB_NO_THROW_H

/// Runs `body` and returns its result, or `failure` when it throws. Exported operations
/// wrap what allocates in it: a host built by another compiler can not catch our
/// exceptions, so running out of memory must come back as a failed call.
template <class Result, class Body>
Result withoutThrowing(const Result &failure, const Body &body)
{
    try {
        return body();
    } catch (...) {
        return failure;
    }
}

#endif // PHOTOLIB_NO_THROW_H
