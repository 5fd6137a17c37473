#ifndef PHOTOLIB_SERVICES_NO_THROW_H
#define PHOTOLIB_SERVICES_NO_THROW_H

/// Runs `body` and returns its result, or `failure` when it throws: the plug-in expects
/// no exception from a host service.
template <class Result, class Body>
Result withoutThrowing(Result failure, const Body &body)
{
    try {
        return body();
    } catch (...) {
        return failure;
    }
}

#endif // PHOTOLIB_SERVICES_NO_THROW_H
