/// @file
/// What the tests of child processes share.
#pragma once

#include "VontalBase/concurrency/ProcessMonitor.h"
#include "VontalBase/concurrency/ProcessRunner.h"
#include "VontalBase/concurrency/RunningProcess.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/text/u8string.h"

#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/TempDirectory.h"
#include "support/TestSemaphore.h"
#include "support/Wine.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// What came of one child.
struct Heard
{
    std::string output;
    std::string error;
    /// The calls in their order: "o:3" for three bytes of output, "e:3" of error, "f:7" for the end with 7.
    std::vector<std::string> calls;
    std::vector<std::thread::id> threads;
    unsigned int exitCode = 0;
    unsigned int longestPiece = 0;
    std::size_t finishes = 0;
};

/// Notes all that it hears of one child.
class NotingMonitor : public qvbase::ProcessMonitor
{
public:
    NotingMonitor() = default;
    NotingMonitor(const NotingMonitor &) = delete;
    NotingMonitor & operator=(const NotingMonitor &) = delete;
    virtual ~NotingMonitor()
    {
        if (atEnd)
            atEnd();
    }

    void onOutput(const char * data, unsigned int size) override
    {
        note("o", data, size, &Heard::output);
        if (inOutput)
            inOutput(std::string(data, size));
    }
    void onError(const char * data, unsigned int size) override
    {
        note("e", data, size, &Heard::error);
        if (inError)
            inError(std::string(data, size));
    }
    void onFinished(unsigned int exitCode) override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_heard.calls.push_back("f:" + std::to_string(exitCode));
            m_heard.threads.push_back(std::this_thread::get_id());
            m_heard.exitCode = exitCode;
            ++m_heard.finishes;
        }
        if (inFinished)
            inFinished();
        m_finished.release();
    }

    /// Waits for the end of the child; false if that does not come.
    bool waitForEnd()
    {
        return m_finished.tryAcquireFor(testsupport::patience);
    }
    /// Waits until so much output has come.
    bool waitForOutput(const std::string & text)
    {
        return testsupport::eventually([&] { return heard().output == text; });
    }
    Heard heard() const
    {
        const std::lock_guard lock(m_mutex);
        return m_heard;
    }

    /// What to do within the calls, with no lock held. To be set before a child is started.
    std::function<void(const std::string &)> inOutput;
    std::function<void(const std::string &)> inError;
    std::function<void()> inFinished;
    std::function<void()> atEnd;

private:
    void note(const char * what, const char * data, unsigned int size, std::string Heard::*where)
    {
        const std::lock_guard lock(m_mutex);
        m_heard.calls.push_back(std::string(what) + ":" + std::to_string(size));
        m_heard.threads.push_back(std::this_thread::get_id());
        m_heard.longestPiece = size > m_heard.longestPiece ? size : m_heard.longestPiece;
        (m_heard.*where).append(data, size);
    }

    mutable std::mutex m_mutex;
    Heard m_heard;
    testsupport::TestSemaphore m_finished;
};

using MonitorReference = qvbase::Reference<qvbase::ReferencedImplMT<NotingMonitor>>;

inline MonitorReference newMonitor()
{
    return {new qvbase::ReferencedImplMT<NotingMonitor>};
}

/// Tries once to start a registered child function on a runner.
inline bool tryToStartChild(qvbase::ProcessRunner & runner, qvbase::ProcessMonitor * monitor,
    const std::string & name, const std::vector<std::string> & arguments = {},
    qvbase::RunningProcess ** process = nullptr)
{
    const testsupport::ChildCommand command = testsupport::childCommand(name, arguments);
    return runner.run(command.program, command.arguments, monitor, process);
}

/// Starts a registered child function on a runner.
inline bool startChild(qvbase::ProcessRunner & runner, qvbase::ProcessMonitor * monitor,
    const std::string & name, const std::vector<std::string> & arguments = {},
    qvbase::RunningProcess ** process = nullptr)
{
    for (int i = 0; i < testsupport::startingTries(); ++i)
    {
        if (tryToStartChild(runner, monitor, name, arguments, process))
            return true;
    }
    return false;
}

/// Lets a child go on, or shows how far it is: a file that is made by one process and seen by another.
class Signal
{
public:
    Signal(const testsupport::TempDirectory & directory, const std::string & name)
        : m_path(directory.text(name))
    {
    }
    explicit Signal(std::string path) : m_path(std::move(path))
    {
    }

    const std::string & path() const
    {
        return m_path;
    }
    void give() const
    {
        std::ofstream file(native());
    }
    bool isGiven() const
    {
        std::error_code ignored;
        return std::filesystem::exists(native(), ignored);
    }
    /// False if it was not given in time.
    bool waitFor() const
    {
        const auto end = std::chrono::steady_clock::now() + testsupport::patience;
        while (!isGiven())
        {
            if (std::chrono::steady_clock::now() >= end)
                return false;
            // A hundred children that ask more often leave a busy system no time to give the signal.
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return true;
    }

private:
    std::filesystem::path native() const
    {
        return std::u8string(m_path.begin(), m_path.end());
    }

    std::string m_path;
};
