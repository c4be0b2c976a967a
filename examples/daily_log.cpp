// Starts the log of the process in a directory, logs from several threads, and shows the file. The manual's
// page on the log shows its pieces.
//
//     daily_log DIRECTORY

#include "VontalBase/VontalBase.h"

#include "console/console.h"

#include <iostream>
#include <vector>

namespace
{

//! [levels]
/// The application's own levels. A lower number is more important.
enum Level : unsigned int
{
    Error = 10,
    Notice = 100,
    Detail = 1000
};
//! [levels]

//! [write]
void openDrawer(int number)
{
    qvutils::LogFormaterInterface & log = *qvutils::getSystemLogFormater();
    if (number == 3)
        log.writeMessage(Error, "The drawer is stuck", __FILE__, __LINE__);
    // What costs something to put together is put together only where it is wanted.
    if (log.isLoggingLevel(Detail))
    {
        const Vontal::u8string text = Vontal::U8StringBuilder().append("Opened drawer ").append(number);
        log.writeMessage(Detail, text, nullptr, 0);
    }
}
//! [write]

class Opener : public qvbase::Runnable
{
public:
    Opener(int number, qvbase::Semaphore & done) : m_number(number), m_done(done)
    {
    }
    virtual ~Opener() = default;

    void run() override
    {
        openDrawer(m_number);
        m_done.release();
    }

private:
    int m_number;
    qvbase::Semaphore & m_done;
};

//! [sink]
/// Shows lines on the terminal.
class TerminalLogger : public qvutils::LoggerInterface
{
public:
    TerminalLogger() : LoggerInterface(Notice)
    {
    }
    // NOLINTNEXTLINE(readability-identifier-naming)
    bool internal_log(const char * text) override
    {
        return static_cast<bool>(std::cout << text << std::flush);
    }
};

void showOnTerminal()
{
    TerminalLogger terminal;
    // The level of its farewell is above the threshold.
    qvutils::LogFormater log(&terminal, Detail, false);
    log.writeMessage(Notice, "Everything has been opened");
}
//! [sink]

void openAll()
{
    qvbase::Semaphore done(0);
    int started = 0;
    for (int number = 1; number <= 4; ++number)
        started += qvbase::Thread::execute(new qvbase::ReferencedImplMT<Opener>(number, done)) ? 1 : 0;
    for (; started > 0; --started)
        done.acquire();
}

} // namespace

int main(int argc, char ** argv)
{
    const std::vector<Vontal::u8string> arguments = console::arguments(argc, argv);
    if (arguments.size() != 2)
    {
        std::cerr << "usage: daily_log DIRECTORY\n";
        return 2;
    }
    //! [start]
    // The directory is given with its final separator, and must be there.
    if (!qvutils::initSystemLog(arguments[1] + "/", "cabinet", Detail))
        std::cerr << "The log is on already.\n";
    //! [start]
    openAll();
    qvutils::setSystemLogLevel(Notice);
    openAll();
    showOnTerminal();
    return 0;
}
