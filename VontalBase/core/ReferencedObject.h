/// @file
/// The interface of everything that is shared by counting.
#pragma once

namespace qvbase
{

/// An object whose lifetime is counted.
///
/// An interface derives from it; a concrete class is made on the heap through `ReferencedImpl` or
/// `ReferencedImplMT`, which supply the count; callers hold it in a `Reference`. The object begins with a
/// count of 0, and the first `Reference` makes it 1. Nobody deletes it by hand, which is why there is no
/// public destructor here.
class ReferencedObject
{
public:
    /// Adds one to the count.
    virtual void addRef() = 0;
    /// Takes one from the count, and destroys the object when that leaves none.
    virtual void release() = 0;

protected:
    ReferencedObject() = default;
    /// Copies what the other one has.
    ReferencedObject(const ReferencedObject &) = default;
    /// Takes over what the other one has.
    ReferencedObject(ReferencedObject &&) noexcept = default;
    /// Copies what the other one has.
    ReferencedObject & operator=(const ReferencedObject &) = default;
    /// Takes over what the other one has.
    ReferencedObject & operator=(ReferencedObject &&) noexcept = default;
    ~ReferencedObject() = default;
};

} // namespace qvbase
