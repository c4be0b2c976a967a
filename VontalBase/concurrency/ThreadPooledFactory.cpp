#include "VontalBase/concurrency/ThreadPooledFactory.h"

namespace qvbase
{

Thread * ThreadPooledFactory::createThread(Runnable *) noexcept
{
    return nullptr;
}

ThreadPooledFactoryImpl::~ThreadPooledFactoryImpl() = default;

} // namespace qvbase
