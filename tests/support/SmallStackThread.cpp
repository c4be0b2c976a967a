#include "support/SmallStackThread.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

#ifdef _WIN32
#include <windows.h>
#else
#include <pthread.h>
#endif

namespace testsupport
{

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t frameGrowth = 8;
#else
constexpr std::size_t frameGrowth = 1;
#endif

struct Job
{
    const std::function<void()> & function;
    std::exception_ptr thrown;
    bool finished = false;

    void run() noexcept
    {
        try
        {
            function();
        }
        catch (...)
        {
            thrown = std::current_exception();
        }
        finished = true;
    }
};

#ifdef _WIN32

DWORD WINAPI runJob(void * job)
{
    static_cast<Job *>(job)->run();
    return 0;
}

void startAndWait(Job & job, std::size_t stackSize)
{
    const HANDLE thread =
        CreateThread(nullptr, stackSize, &runJob, &job, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (thread == nullptr)
        throw std::runtime_error("CreateThread failed with error " + std::to_string(GetLastError()));
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

#else

void * runJob(void * job)
{
    static_cast<Job *>(job)->run();
    return nullptr;
}

void startAndWait(Job & job, std::size_t stackSize)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    int error = pthread_attr_setstacksize(&attributes, stackSize);
    pthread_t thread = {};
    if (error == 0)
        error = pthread_create(&thread, &attributes, &runJob, &job);
    pthread_attr_destroy(&attributes);
    if (error != 0)
        throw std::runtime_error("no thread with a small stack, error " + std::to_string(error));
    pthread_join(thread, nullptr);
}

#endif

} // namespace

void runOnSmallStack(const std::function<void()> & function, std::size_t stackSize)
{
    Job job{function, nullptr};
    startAndWait(job, stackSize * frameGrowth);
    if (!job.finished)
    {
        // Wine ends the thread alone where Windows and Linux end the program.
        std::fputs("a thread with a small stack came to no end of its own\n", stderr);
        std::abort();
    }
    if (job.thrown)
        std::rethrow_exception(job.thrown);
}

std::size_t stackSizeOfThisThread()
{
#ifdef _WIN32
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    return high - low;
#else
    pthread_attr_t attributes;
    void * low = nullptr;
    std::size_t size = 0;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        throw std::runtime_error("pthread_getattr_np failed");
    pthread_attr_getstack(&attributes, &low, &size);
    pthread_attr_destroy(&attributes);
    return size;
#endif
}

} // namespace testsupport
