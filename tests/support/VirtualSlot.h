/// @file
/// Where a virtual operation stands in its class's virtual table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace testsupport
{

/// What the compilers of both systems put in front of the operations for a virtual destructor.
constexpr std::size_t slotsOfDestructor = 2;

/// The slot of a virtual operation, counted from 0, as g++ and clang lay tables out on both systems: a
/// destructor takes two slots, and a pointer to a virtual member holds one more than its offset.
template <class Pointer>
std::size_t virtualSlot(Pointer member)
{
    std::uintptr_t words[2] = {};
    static_assert(sizeof member == sizeof words, "not the layout that is read here");
    std::memcpy(words, &member, sizeof words);
    return static_cast<std::size_t>(words[0] - 1) / sizeof(void *);
}

/// A class with one operation more.
template <class Class>
class WithNextOperation : public Class
{
public:
    virtual void nextOperation()
    {
    }
};

/// How many slots the virtual table of a class has.
template <class Class>
std::size_t virtualSlots()
{
    return virtualSlot(&WithNextOperation<Class>::nextOperation);
}

} // namespace testsupport
