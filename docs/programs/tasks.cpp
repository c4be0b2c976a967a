// Adds numbers on another thread, shows how far it has come, and stops when it is told to.

#include "VontalBase/VontalBase.h"

#include <iostream>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;

class Adder : public qvbase::LongRunCommand
{
public:
    explicit Adder(unsigned int steps) : m_steps(steps)
    {
    }
    ~Adder() override = default;

protected:
    void execute() override
    {
        for (unsigned int step = 1; step <= m_steps; ++step)
        {
            if (isInterrupted())
                return;
            const Reference<qvbase::LongRunCommandListener> watcher = getListener();
            if (watcher != nullptr)
                watcher->setProgress(this, step, m_steps);
        }
        const qvbase::ThreadMutexGuard guard(mutex, true);
        result = qvbase::TriStateYes;
    }

private:
    const unsigned int m_steps;
};

class Watcher : public qvbase::LongRunCommandListener
{
public:
    explicit Watcher(qvbase::Semaphore & finished) : m_finished(finished)
    {
    }
    virtual ~Watcher() = default;

    void setProgress(qvbase::LongRunCommand * command, unsigned int position, unsigned int total) override
    {
        std::cout << position << " of " << total << '\n';
        if (position == 2 && total > 3)
            command->cancel(); // No lock is held here.
    }
    void commandFinished(qvbase::LongRunCommand *, qvbase::TriState result) override
    {
        std::cout << (result == qvbase::TriStateYes ? "done\n" : "stopped\n");
        m_finished.release();
    }

private:
    qvbase::Semaphore & m_finished;
};

} // namespace

int main()
{
    Reference<qvbase::TaskExecutor> executor;
    qvbase::createSimpleTaskExecutor(executor);
    qvbase::Semaphore finished(0);
    for (const unsigned int steps : {3U, 1000U})
    {
        const Reference<qvbase::LongRunCommand> command = new ReferencedImplMT<Adder>(steps);
        command->setListener(new ReferencedImplMT<Watcher>(finished));
        executor->addTask(command);
    }
    finished.acquire();
    finished.acquire();
    executor->stop();
    return 0;
}
