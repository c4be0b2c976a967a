#include "support/FailingAllocator.h"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

#ifdef _WIN32
#include <malloc.h>
#endif

namespace
{

// Relaxed throughout: counting must not order the threads that allocate.
std::atomic<std::int64_t> live{0};
std::atomic<bool> windowOpen{false};
std::atomic<bool> seesAllThreads{false};
std::atomic<std::uint64_t> firstRefused{0};
std::atomic<std::uint64_t> concerned{0};
std::atomic<std::uint64_t> seen{0};
std::atomic<std::uint64_t> refusals{0};

thread_local bool openedHere = false;
thread_local unsigned unseenDepth = 0;

bool mustRefuse() noexcept
{
    if (!windowOpen.load(std::memory_order_relaxed) || unseenDepth != 0)
        return false;
    if (!openedHere && !seesAllThreads.load(std::memory_order_relaxed))
        return false;
    const std::uint64_t number = seen.fetch_add(1, std::memory_order_relaxed) + 1;
    const std::uint64_t first = firstRefused.load(std::memory_order_relaxed);
    if (first == 0 || number < first || number - first >= concerned.load(std::memory_order_relaxed))
        return false;
    refusals.fetch_add(1, std::memory_order_relaxed);
    return true;
}

void * allocate(std::size_t size) noexcept
{
    if (mustRefuse())
        return nullptr;
    void * const block = std::malloc(size == 0 ? 1 : size);
    if (block != nullptr)
        live.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void * allocateAligned(std::size_t size, std::size_t alignment) noexcept
{
    if (mustRefuse())
        return nullptr;
#ifdef _WIN32
    void * const block = _aligned_malloc(size == 0 ? 1 : size, alignment);
#else
    // aligned_alloc wants a multiple of the alignment.
    const std::size_t wanted = size == 0 ? 1 : size;
    const std::size_t rounded = (wanted + alignment - 1) / alignment * alignment;
    void * const block = rounded < wanted ? nullptr : std::aligned_alloc(alignment, rounded);
#endif
    if (block != nullptr)
        live.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void release(void * block) noexcept
{
    if (block == nullptr)
        return;
    live.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}

void releaseAligned(void * block) noexcept
{
    if (block == nullptr)
        return;
    live.fetch_sub(1, std::memory_order_relaxed);
#ifdef _WIN32
    _aligned_free(block);
#else
    std::free(block);
#endif
}

void * orThrow(void * block)
{
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

} // namespace

// The library installs no new handler, so none is asked.

void * operator new(std::size_t size)
{
    return orThrow(allocate(size));
}

void * operator new[](std::size_t size)
{
    return orThrow(allocate(size));
}

void * operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return allocate(size);
}

void * operator new[](std::size_t size, const std::nothrow_t &) noexcept
{
    return allocate(size);
}

void * operator new(std::size_t size, std::align_val_t alignment)
{
    return orThrow(allocateAligned(size, static_cast<std::size_t>(alignment)));
}

void * operator new[](std::size_t size, std::align_val_t alignment)
{
    return orThrow(allocateAligned(size, static_cast<std::size_t>(alignment)));
}

void * operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t &) noexcept
{
    return allocateAligned(size, static_cast<std::size_t>(alignment));
}

void * operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t &) noexcept
{
    return allocateAligned(size, static_cast<std::size_t>(alignment));
}

void operator delete(void * block) noexcept
{
    release(block);
}

void operator delete[](void * block) noexcept
{
    release(block);
}

void operator delete(void * block, std::size_t) noexcept
{
    release(block);
}

void operator delete[](void * block, std::size_t) noexcept
{
    release(block);
}

void operator delete(void * block, const std::nothrow_t &) noexcept
{
    release(block);
}

void operator delete[](void * block, const std::nothrow_t &) noexcept
{
    release(block);
}

void operator delete(void * block, std::align_val_t) noexcept
{
    releaseAligned(block);
}

void operator delete[](void * block, std::align_val_t) noexcept
{
    releaseAligned(block);
}

void operator delete(void * block, std::size_t, std::align_val_t) noexcept
{
    releaseAligned(block);
}

void operator delete[](void * block, std::size_t, std::align_val_t) noexcept
{
    releaseAligned(block);
}

void operator delete(void * block, std::align_val_t, const std::nothrow_t &) noexcept
{
    releaseAligned(block);
}

void operator delete[](void * block, std::align_val_t, const std::nothrow_t &) noexcept
{
    releaseAligned(block);
}

namespace testsupport
{

FailingAllocator::FailingAllocator(const AllocationFault & fault) noexcept
{
    if (windowOpen.load(std::memory_order_relaxed))
    {
        std::fputs("a second FailingAllocator in one process\n", stderr);
        std::abort();
    }
    firstRefused.store(fault.allocation, std::memory_order_relaxed);
    concerned.store(fault.repeats, std::memory_order_relaxed);
    seesAllThreads.store(fault.threads == AllocatingThreads::All, std::memory_order_relaxed);
    seen.store(0, std::memory_order_relaxed);
    refusals.store(0, std::memory_order_relaxed);
    openedHere = true;
    windowOpen.store(true, std::memory_order_release);
}

FailingAllocator::~FailingAllocator()
{
    windowOpen.store(false, std::memory_order_relaxed);
    openedHere = false;
}

std::uint64_t FailingAllocator::allocations() const noexcept
{
    return seen.load(std::memory_order_relaxed);
}

std::uint64_t FailingAllocator::refused() const noexcept
{
    return refusals.load(std::memory_order_relaxed);
}

UnseenAllocations::UnseenAllocations() noexcept
{
    ++unseenDepth;
}

UnseenAllocations::~UnseenAllocations()
{
    --unseenDepth;
}

std::int64_t liveAllocations() noexcept
{
    return live.load(std::memory_order_relaxed);
}

} // namespace testsupport
