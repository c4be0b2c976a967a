// A module that uses the library, as a plug-in of an application does. It is loaded and unloaded by a program
// that knows nothing of the library.

#include "VontalBase/VontalBase.h"

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;
using Vontal::u8string;

class Releasing : public qvbase::Task
{
public:
    explicit Releasing(qvbase::Semaphore & done) : m_done(done)
    {
    }
    virtual ~Releasing() = default;
    void cancel() override
    {
    }

protected:
    void run(qvbase::TaskExecutor *) override
    {
        qvutils::getSystemLogFormater()->writeMessage(1, "from a task");
        m_done.release();
    }

private:
    qvbase::Semaphore & m_done;
};

class Monitor : public qvbase::ProcessMonitor
{
public:
    explicit Monitor(qvbase::Semaphore & done) : m_done(done)
    {
    }
    virtual ~Monitor() = default;
    void onOutput(const char * data, unsigned int size) override
    {
        output.append(data, size);
    }
    void onError(const char *, unsigned int) override
    {
    }
    void onFinished(unsigned int) override
    {
        m_done.release();
    }

    std::string output;

private:
    qvbase::Semaphore & m_done;
};

bool runsATask()
{
    qvbase::Semaphore done(0);
    Reference<qvbase::TaskExecutor> executor;
    qvbase::createSimpleTaskExecutor(executor);
    const Reference<qvbase::Task> task(new ReferencedImplMT<Releasing>(done));
    executor->addTask(task);
    done.acquire();
    executor->stop();
    return executor->getTaskCount() == 0;
}

bool runsAChild(const char * program, const char * arguments, const char * output)
{
    qvbase::Semaphore done(0);
    const Reference<Monitor> monitor(new ReferencedImplMT<Monitor>(done));
    qvbase::ProcessRunner runner;
    if (!runner.run(program, arguments, monitor, nullptr))
        return false;
    done.acquire();
    return monitor->output == output;
}

bool readsAndWrites(const u8string & directory)
{
    const u8string path = directory + "\\file.json";
    u8string text;
    Reference<qvjson::Item> root;
    VontalException failure;
    return qvdisk::writeTextFile(path, "{\"a\": [1, 2]}") && qvdisk::readUnicodeTextFile(path, text) &&
           qvjson::jsonParse(text, root, failure) && qvdisk::deleteFile(path);
}

} // namespace

/// Uses what has threads, locks, streams and static objects. @return 0, or the number of the step that
/// failed.
extern "C" int useTheLibrary(
    const char * directory, const char * program, const char * arguments, const char * output)
{
    if (!qvutils::initSystemLog(u8string(directory) + "\\", "log", 1024))
        return 1;
    if (!runsATask())
        return 2;
    if (!runsAChild(program, arguments, output))
        return 3;
    if (!readsAndWrites(directory))
        return 4;
    qvutils::getSystemLogFormater()->writeMessage(1, "at the end");
    return 0;
}
