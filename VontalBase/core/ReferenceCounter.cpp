#include "VontalBase/core/ReferenceCounter.h"

#include "VontalBase/concurrency/ThreadMutexGuard.h"

#include <iostream>
#include <locale>
#include <sstream>

namespace qvbase
{

namespace
{

template <class Identity>
void reportInvalidCount(const Identity & identity, unsigned int counter)
{
    std::ostringstream report;
    report.imbue(std::locale::classic());
    report << "Invalid reference count for class: " << identity << ", counter=" << counter << '\n';
    std::cerr << report.str() << std::flush;
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

SafeReferenceCounter::SafeReferenceCounter(const SafeReferenceCounter & other) : ReferenceCounter(other)
{
}

SafeReferenceCounter & SafeReferenceCounter::operator=(const SafeReferenceCounter & other)
{
    ReferenceCounter::operator=(other);
    return *this;
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
