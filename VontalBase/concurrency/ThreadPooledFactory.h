/// @file
/// The name of a thread pool that there is none of.
#pragma once

#include "VontalBase/export.h"

namespace qvbase
{

class Runnable;
class Thread;

/// Kept: exists in name only.
class VONTALBASE_API ThreadPooledFactory
{
public:
    /// Starts nothing. Any thread may call it.
    /// @param runnable is left alone; may be null.
    /// @return null.
    static Thread * createThread(Runnable * runnable) noexcept;
};

/// Kept: exists in name only.
class VONTALBASE_API ThreadPooledFactoryImpl
{
public:
    ThreadPooledFactoryImpl() = default;
    /// Copies nothing.
    ThreadPooledFactoryImpl(const ThreadPooledFactoryImpl &) = default;
    /// Copies nothing.
    ThreadPooledFactoryImpl & operator=(const ThreadPooledFactoryImpl &) = default;
    /// Destroys nothing.
    virtual ~ThreadPooledFactoryImpl();
};

} // namespace qvbase
