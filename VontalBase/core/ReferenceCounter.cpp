#include "VontalBase/core/ReferenceCounter.h"

#include "VontalBase/concurrency/ThreadMutexGuard.h"

#include <iostream>
#include <locale>
#include <sstream>

namespace qvbase
{

namespace
{

/// Writes the report as one string. A bad count is no reason to end the process, and neither is a report that
/// cannot be made or written.
template <class Identity>
void reportInvalidCount(const Identity & identity, unsigned int counter) noexcept
{
    try
    {
        std::ostringstream report;
        report.imbue(std::locale::classic());
        report.exceptions(std::ios::badbit | std::ios::failbit);
        report << "Invalid reference count for class: " << identity << ", counter=" << counter << '\n';
        std::cerr << report.str() << std::flush;
    }
    catch (...) // NOLINT(bugprone-empty-catch): see above.
    {
    }
}

} // namespace

void ReferenceCounter::addRef()
{
    ++m_counter;
}

void ReferenceCounter::release()
{
    --m_counter;
}

ReferenceCounter::~ReferenceCounter()
{
    if (m_counter != 0)
        reportInvalidCount(static_cast<const void *>(this), m_counter);
}

unsigned int ReferenceCounter::getRefCounter()
{
    return m_counter;
}

// NOLINTNEXTLINE(bugprone-copy-constructor-init): the count is read under the other's lock.
SafeReferenceCounter::SafeReferenceCounter(const SafeReferenceCounter & other)
{
    m_counter = other.lockedCounter();
}

SafeReferenceCounter & SafeReferenceCounter::operator=(const SafeReferenceCounter & other)
{
    // One lock after the other, never both, so that two counters can be assigned to each other.
    const unsigned int counter = other.lockedCounter();
    const ThreadMutexGuard guard(m_mutex, true);
    m_counter = counter;
    return *this;
}

unsigned int SafeReferenceCounter::lockedCounter() const
{
    const ThreadMutexGuard guard(m_mutex, true);
    return m_counter;
}

void SafeReferenceCounter::addRef()
{
    const ThreadMutexGuard guard(m_mutex, true);
    ReferenceCounter::addRef();
}

void SafeReferenceCounter::release()
{
    const ThreadMutexGuard guard(m_mutex, true);
    ReferenceCounter::release();
}

unsigned int SafeReferenceCounter::getRefCounter()
{
    const ThreadMutexGuard guard(m_mutex, true);
    return ReferenceCounter::getRefCounter();
}

NamedReferenceCounter::NamedReferenceCounter(const std::string & name) : m_name(name)
{
}

NamedReferenceCounter::~NamedReferenceCounter()
{
    const unsigned int counter = NamedReferenceCounter::getRefCounter();
    if (counter != 0)
        reportInvalidCount(m_name, counter);
}

} // namespace qvbase
