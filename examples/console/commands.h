// Running a command with somebody watching.
#pragma once

#include "VontalBase/VontalBase.h"

#include "console/LiveLine.h"
#include "console/console.h"

#include <atomic>

namespace console
{

/// Shows the texts of a command on the terminal.
class Display : public qvbase::LongRunCommandListener
{
public:
    Display() = default;
    Display(const Display &) = delete;
    Display & operator=(const Display &) = delete;
    virtual ~Display() = default;

    void setText(qvbase::LongRunCommand *, const Vontal::u8string & text) override
    {
        m_line.show(text);
    }

    void commandFinished(qvbase::LongRunCommand *, qvbase::TriState) override
    {
        m_line.clear();
        m_isFinished = true;
    }

    [[nodiscard]] bool isFinished() const
    {
        return m_isFinished;
    }

private:
    LiveLine m_line;
    std::atomic<bool> m_isFinished{false};
};

/// Runs a command on a thread of its own and shows its texts, until it has ended or the user has interrupted
/// it.
/// @return whether its result is yes.
inline bool run(qvbase::LongRunCommand * command)
{
    const qvbase::Reference<Display> display(new qvbase::ReferencedImplMT<Display>);
    command->setListener(display);
    qvbase::Reference<qvbase::TaskExecutor> executor;
    qvbase::createSimpleTaskExecutor(executor);
    executor->addTask(command);
    constexpr unsigned int pause = 20;
    while (!display->isFinished())
    {
        if (wasInterrupted())
            command->cancel();
        // In vain while it runs, and not if the system had no thread to give before.
        executor->start();
        qvbase::sleep(pause);
    }
    executor->stop();
    return command->getResult() == qvbase::TriStateYes;
}

} // namespace console
