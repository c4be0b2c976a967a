#include "support/SignalStorm.h"

#ifdef _WIN32

namespace testsupport
{

struct SignalStorm::System
{
};

SignalStorm::SignalStorm() = default;
SignalStorm::~SignalStorm() = default;

} // namespace testsupport

#else

#include <atomic>
#include <chrono>
#include <csignal>
#include <pthread.h>
#include <thread>

namespace testsupport
{

struct SignalStorm::System
{
    struct sigaction former = {};
    std::atomic<bool> over{false};
    std::thread sender;
};

SignalStorm::SignalStorm() : m_system(std::make_unique<System>())
{
    // No SA_RESTART: a system call must come back with an error.
    struct sigaction action = {};
    action.sa_handler = [](int) {
    };
    sigaction(SIGUSR1, &action, &m_system->former);
    m_system->sender = std::thread(
        [this, target = pthread_self()]
        {
            while (!m_system->over)
            {
                pthread_kill(target, SIGUSR1);
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
}

SignalStorm::~SignalStorm()
{
    m_system->over = true;
    m_system->sender.join();
    sigaction(SIGUSR1, &m_system->former, nullptr);
}

} // namespace testsupport

#endif
