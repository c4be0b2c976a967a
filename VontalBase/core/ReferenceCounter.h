/// @file
/// Counters that stand by themselves: they delete nothing and only report a count that is left over.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/export.h"

#include <string>

namespace qvbase
{

/// A plain counter, which begins at 0 and belongs to one thread at a time. Nothing checks it against 0: a
/// `release` too many wraps it.
///
/// A counter that is destroyed at any other value than 0 says so in one line on the standard error stream,
/// and the process goes on.
class VONTALBASE_API ReferenceCounter : public ReferencedObject
{
public:
    /// A counter at 0.
    ReferenceCounter() = default;
    /// Takes over the count of @p other.
    ReferenceCounter(const ReferenceCounter & other) = default;
    /// Takes over the count of @p other.
    ReferenceCounter & operator=(const ReferenceCounter & other) = default;

    /// Adds one.
    void addRef() override;
    /// Takes one, wrapping below 0. Nothing is destroyed.
    void release() override;
    /// Reports a count other than 0, with the address of this object.
    virtual ~ReferenceCounter();
    /// The count.
    virtual unsigned int getRefCounter();

private:
    friend class SafeReferenceCounter;

    unsigned int m_counter = 0;
};

/// A counter that threads may share: it has a lock of its own.
class VONTALBASE_API SafeReferenceCounter : public ReferenceCounter
{
public:
    /// A counter at 0.
    SafeReferenceCounter() = default;
    /// Takes over the count of @p other, under its lock. The lock here is this object's own.
    SafeReferenceCounter(const SafeReferenceCounter & other);
    /// Takes over the count of @p other, under its lock. The lock here stays this object's own.
    SafeReferenceCounter & operator=(const SafeReferenceCounter & other);
    ~SafeReferenceCounter() override = default;

    /// Adds one. Any thread may call it.
    void addRef() override;
    /// Takes one, wrapping below 0. Nothing is destroyed. Any thread may call it.
    void release() override;
    /// The count. Any thread may call it.
    unsigned int getRefCounter() override;

private:
    unsigned int lockedCounter() const;

    mutable ThreadMutex m_mutex;
};

/// A counter that threads may share, with a name for its report.
class VONTALBASE_API NamedReferenceCounter : public SafeReferenceCounter
{
public:
    /// A counter at 0.
    /// @param name what the report calls it.
    explicit NamedReferenceCounter(const std::string & name);
    /// Takes over the count and the name of @p other.
    NamedReferenceCounter(const NamedReferenceCounter & other) = default;
    /// Takes over the count and the name of @p other.
    NamedReferenceCounter & operator=(const NamedReferenceCounter & other) = default;
    /// Reports a count other than 0, with the name.
    ///
    /// Kept: the base then reports the same once more, with the address.
    ~NamedReferenceCounter() override;

private:
    std::string m_name;
};

} // namespace qvbase
