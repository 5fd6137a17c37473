#ifndef PHOTOLIB_TESTS_BOUNDARY_VIRTUAL_SLOTS_H
#define PHOTOLIB_TESTS_BOUNDARY_VIRTUAL_SLOTS_H

#include <cstddef>
#include <cstring>

/// The place of virtual operations in a class's table (Itanium C++ ABI), counted from 1.
/// The plug-in and its hosts are built apart and meet only there.
namespace vtable {

/// The slot that a call through `operation` takes, or 0 when it is not virtual.
template <typename Operation>
std::size_t of(Operation operation)
{
    std::size_t words[2];
    static_assert(sizeof operation == sizeof words, "a pointer and an adjustment");
    std::memcpy(words, &operation, sizeof words);
    // A virtual operation is its table offset in bytes plus one.
    return words[0] % 2 == 1 ? (words[0] - 1) / sizeof(void *) + 1 : 0;
}

/// Calls what lies in the slot of the object's table, the way foreign code does.
template <typename Result, typename... Arguments>
Result call(void *object, std::size_t slot, Arguments... arguments)
{
    void **table = nullptr;
    std::memcpy(&table, object, sizeof table);
    Result (*operation)(void *, Arguments...) = nullptr;
    std::memcpy(&operation, table + slot - 1, sizeof operation);
    return operation(object, arguments...);
}

} // namespace vtable

#endif // PHOTOLIB_TESTS_BOUNDARY_VIRTUAL_SLOTS_H
