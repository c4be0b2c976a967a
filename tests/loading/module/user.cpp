// A module that uses the library, as a plug-in of an application does. It is loaded and unloaded by a program
// that knows nothing of the library.

#include "VontalBase/VontalBase.h"

#include <cstdio>
#include <string>

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
    void onError(const char * data, unsigned int size) override
    {
        errors.append(data, size);
    }
    void onFinished(unsigned int code) override
    {
        exitCode = code;
        m_done.release();
    }

    std::string output;
    std::string errors;
    unsigned int exitCode = 0;

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
    {
        std::puts("the child was not started");
        return false;
    }
    done.acquire();
    if (monitor->output == output)
        return true;
    std::printf("the child ended with %u and said \"%s\" and \"%s\"\n", monitor->exitCode,
        monitor->output.c_str(), monitor->errors.c_str());
    return false;
}

/// Looks up a text of the process's manager for ever.
class Looking : public qvbase::Runnable
{
public:
    explicit Looking(qvbase::Semaphore & begun) : m_begun(begun)
    {
    }
    virtual ~Looking() = default;
    void run() override
    {
        const u8string key("k");
        for (unsigned int count = 0;; ++count)
        {
            if (qvutils::getResourceManager()->getString(key).size() < 2)
                qvbase::abort("a text is not there");
            if (count == 1000)
                m_begun.release();
        }
    }

private:
    qvbase::Semaphore & m_begun;
};

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

/// Uses what has threads, locks, streams and static objects. @param tries how often the child may be started
/// until it says what it should. @return 0, or the number of the step that failed.
extern "C" int useTheLibrary(
    const char * directory, const char * program, const char * arguments, const char * output, int tries)
{
    if (!qvutils::initSystemLog(u8string(directory) + "\\", "log", 1024))
        return 1;
    if (!runsATask())
        return 2;
    bool hasRun = false;
    for (int i = 0; i < tries && !hasRun; ++i)
        hasRun = runsAChild(program, arguments, output);
    if (!hasRun)
        return 3;
    if (!readsAndWrites(directory))
        return 4;
    qvutils::getSystemLogFormater()->writeMessage(1, "at the end");
    return 0;
}

/// Reads the bundle "menu" of a directory into the manager of the process. @return 0, or 1 where it has no
/// text.
extern "C" int useTexts(const char * directory)
{
    qvutils::getResourceManager()->setRootDirectory(directory);
    qvutils::getResourceManager()->setDefaultBundle("menu");
    return qvutils::getResourceManager()->getString("k").size() < 2 ? 1 : 0;
}

/// Does the same, and starts threads that look up its text for ever. @return 0, or the number of the step
/// that failed.
extern "C" int useTextsForEver(const char * directory)
{
    // The threads use it to the end of the process.
    qvbase::Semaphore & begun = *new qvbase::Semaphore(0);
    if (useTexts(directory) != 0)
        return 1;
    for (int i = 0; i < 4; ++i)
    {
        if (!qvbase::Thread::execute(new ReferencedImplMT<Looking>(begun)))
            return 2;
    }
    for (int i = 0; i < 4; ++i)
        begun.acquire();
    return 0;
}
