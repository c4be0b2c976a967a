// Runs a program and keeps what it prints.
//
//     watch_command COMMAND [ARGUMENTS]
//
// Every line that the program prints goes to a log of the day, watch_commandYYYYMMDD.log in the working
// directory, with the name of its stream. While the program runs, a line with the time and with the bytes of
// each stream is shown, if the standard error stream is a terminal. Ctrl-C ends that line; the program is let
// run on, and its lines are still kept. The exit code is that of the program; 127 if it cannot be started, 2
// for wrong arguments or a log that cannot be written.

#include "VontalBase/VontalBase.h"

#include "console/commands.h"
#include "console/console.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;
using Vontal::u8string;

constexpr unsigned int logLevel = 1024;
constexpr unsigned int lineLevel = 100;
constexpr int wrongUse = 2;
constexpr int notStarted = 127;

/// A line goes to the log in pieces of this size at the most, whatever the program prints.
constexpr std::size_t longestPiece = 65536;

/// Makes lines of the bytes of one stream.
class LineCollector
{
public:
    LineCollector(qvutils::LogFormaterInterface & log, std::string streamName)
        : m_log(log), m_start(std::move(streamName) + ": ")
    {
    }

    void add(const char * data, std::size_t size)
    {
        m_bytes += size;
        for (const char c : std::string_view(data, size))
        {
            if (c == '\n' || m_line.size() == longestPiece)
                writeLine();
            if (c != '\n')
                m_line += c == '\0' ? ' ' : c;
        }
    }

    /// Writes what has no line end.
    void finish()
    {
        if (!m_line.empty())
            writeLine();
    }

    [[nodiscard]] std::uint64_t bytes() const
    {
        return m_bytes;
    }

private:
    void writeLine()
    {
        if (m_line.ends_with('\r'))
            m_line.pop_back();
        m_log.writeMessage(lineLevel, (m_start + m_line).c_str());
        m_line.clear();
    }

    qvutils::LogFormaterInterface & m_log;
    std::string m_start;
    std::string m_line;
    /// The only member that other threads read.
    std::atomic<std::uint64_t> m_bytes{0};
};

//! [monitor]
/// Hears of the program, on a thread of the library.
class Monitor : public qvbase::ProcessMonitor
{
public:
    explicit Monitor(qvutils::LogFormaterInterface & log)
        : m_log(log), m_output(log, "output"), m_errors(log, "errors")
    {
    }
    Monitor(const Monitor &) = delete;
    Monitor & operator=(const Monitor &) = delete;
    virtual ~Monitor() = default;

    void onOutput(const char * data, unsigned int size) override
    {
        m_output.add(data, size);
    }

    void onError(const char * data, unsigned int size) override
    {
        m_errors.add(data, size);
    }

    void onFinished(unsigned int exitCode) override
    {
        m_output.finish();
        m_errors.finish();
        m_log.writeMessage(lineLevel, ("ended with exit code " + std::to_string(exitCode)).c_str());
        m_exitCode = exitCode;
        m_hasEnded = true;
        m_ended.release();
    }
    //! [monitor]

    [[nodiscard]] std::uint64_t outputBytes() const
    {
        return m_output.bytes();
    }

    [[nodiscard]] std::uint64_t errorBytes() const
    {
        return m_errors.bytes();
    }

    [[nodiscard]] bool hasEnded() const
    {
        return m_hasEnded;
    }

    int waitForExitCode()
    {
        m_ended.acquire();
        return static_cast<int>(m_exitCode);
    }

private:
    qvutils::LogFormaterInterface & m_log;
    LineCollector m_output;
    LineCollector m_errors;
    std::atomic<bool> m_hasEnded{false};
    unsigned int m_exitCode = 0;
    qvbase::Semaphore m_ended{0};
};

u8string sizeText(std::uint64_t size)
{
    std::string text;
    qvdisk::formatFileSize(static_cast<std::int64_t>(size), text);
    return text;
}

//! [command]
/// Tells its listener again and again how far the program is, until that has ended or nobody wants to know.
class WatchCommand : public qvbase::LongRunCommand
{
public:
    explicit WatchCommand(Monitor & monitor) : m_monitor(monitor)
    {
    }

protected:
    ~WatchCommand() override = default;

    void execute() override
    {
        constexpr unsigned int pause = 50;
        while (!isInterrupted())
        {
            if (m_monitor.hasEnded())
            {
                const qvbase::ThreadMutexGuard guard(mutex, true);
                result = qvbase::TriStateYes;
                return;
            }
            if (const auto told = getListener(); told != nullptr)
                told->setText(this, progress());
            qvbase::sleep(pause);
        }
    }

private:
    [[nodiscard]] u8string progress() const
    {
        const auto time = std::chrono::steady_clock::now() - m_start;
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time).count();
        return std::to_string(seconds) + " s, output " + sizeText(m_monitor.outputBytes()) + ", errors " +
               sizeText(m_monitor.errorBytes());
    }

    Monitor & m_monitor;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};
//! [command]

/// An argument as the other side of a command line reads it: in quotes where it needs them, with a backslash
/// in front of each quote, and with those that stand in front of one doubled.
u8string quoted(const u8string & argument)
{
    if (!argument.empty() && argument.find_first_of(" \t\n\v\"") == u8string::npos)
        return argument;
    std::string result = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument)
    {
        if (c == '"')
            result.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        result += c;
    }
    return result.append(backslashes, '\\').append(1, '"');
}

u8string joined(std::vector<u8string>::const_iterator begin, std::vector<u8string>::const_iterator end)
{
    u8string line;
    for (auto argument = begin; argument != end; ++argument)
    {
        if (argument != begin)
            line += ' ';
        line += quoted(*argument);
    }
    return line;
}

/// Shows what goes on until the program has ended or the user interrupts.
void watch(Monitor & monitor)
{
    const Reference<WatchCommand> command(new ReferencedImplMT<WatchCommand>(monitor));
    if (!console::run(command))
        std::cerr << "no longer shown; the log goes on until the program ends\n";
}

int run(qvutils::LogFormaterInterface & log, const std::vector<u8string> & arguments)
{
    const u8string rest = joined(arguments.begin() + 2, arguments.end());
    log.writeMessage(lineLevel, ("runs " + quoted(arguments[1]) + ' ' + rest).c_str());
    const Reference<Monitor> monitor(new ReferencedImplMT<Monitor>(log));
    qvbase::ProcessRunner runner;
    if (!runner.run(quoted(arguments[1]), rest, monitor, nullptr))
    {
        log.writeMessage(lineLevel, "could not be started");
        std::cerr << "watch_command: cannot start " << arguments[1] << '\n';
        return notStarted;
    }
    watch(*monitor);
    return monitor->waitForExitCode();
}

} // namespace

int main(int argc, char ** argv)
{
    const std::vector<u8string> arguments = console::arguments(argc, argv);
    if (arguments.size() < 2)
    {
        std::cerr << "usage: watch_command COMMAND [ARGUMENTS]\n";
        return wrongUse;
    }
    console::noteInterrupts();
    qvutils::DailyLogger logger;
    u8string logName;
    logger.init_logger(logLevel, "watch_command", ".log");
    if (!logger.getCurrentFileName(logName))
    {
        std::cerr << "watch_command: cannot write a log here\n";
        return wrongUse;
    }
    qvutils::LogFormater log(&logger, logLevel, true);
    return run(log, arguments);
}
