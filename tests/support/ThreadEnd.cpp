#include "support/ThreadEnd.h"

#include <cstdlib>
#include <memory>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#else
#include <pthread.h>
#endif

namespace testsupport
{

namespace
{

using Action = std::function<void()>;

void act(void * value)
{
    const std::unique_ptr<Action> action(static_cast<Action *>(value));
    if (action)
        (*action)();
}

#ifdef _WIN32

void WINAPI actAtTheEnd(void * value)
{
    act(value);
}

void keep(Action * action)
{
    static const DWORD slot = FlsAlloc(&actAtTheEnd);
    if (slot == FLS_OUT_OF_INDEXES || !FlsSetValue(slot, action))
        std::abort();
}

#else

pthread_key_t makeKey()
{
    pthread_key_t key = 0;
    if (pthread_key_create(&key, &act) != 0)
        std::abort();
    return key;
}

void keep(Action * action)
{
    static const pthread_key_t key = makeKey();
    if (pthread_setspecific(key, action) != 0)
        std::abort();
}

#endif

} // namespace

void atThreadEnd(std::function<void()> action)
{
    keep(std::make_unique<Action>(std::move(action)).release());
}

} // namespace testsupport
