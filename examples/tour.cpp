// A short tour: text, failures, shared objects and threads. The manual's guide pages show its pieces.

#include "VontalBase/VontalBase.h"

#include <iostream>

namespace
{

//! [failure]
bool openDrawer(int number, VontalException & exception)
{
    if (number < 3)
        return true;
    exception.add("cabinet.cpp", 17, Vontal::U8StringBuilder().append("No drawer ").append(number));
    return false;
}

bool fetchFile(int drawer, VontalException & exception)
{
    if (openDrawer(drawer, exception))
        return true;
    exception.add("cabinet.cpp", 25, "Failed to fetch the file");
    return false;
}
//! [failure]

//! [shared]
/// Counts what its workers did. Threads share it, so it has a lock for what it holds.
class Tally : public qvbase::ReferencedObject
{
public:
    virtual ~Tally() = default;

    void add()
    {
        const qvbase::ThreadMutexGuard guard(m_mutex, true);
        ++m_count;
    }
    int count()
    {
        const qvbase::ThreadMutexGuard guard(m_mutex, true);
        return m_count;
    }

private:
    qvbase::ThreadMutex m_mutex;
    int m_count = 0;
};

class Worker : public qvbase::Runnable
{
public:
    Worker(const qvbase::Reference<Tally> & tally, qvbase::Semaphore & done) : m_tally(tally), m_done(done)
    {
    }
    virtual ~Worker() = default;

    void run() override
    {
        m_tally->add();
        m_done.release();
    }

private:
    qvbase::Reference<Tally> m_tally;
    qvbase::Semaphore & m_done;
};
//! [shared]

void showText()
{
    //! [text]
    const Vontal::u8string name = "Größe";
    const Vontal::astring wide = name.toAstring();
    Vontal::U8StringBuilder line;
    line.append(name).append(": ").append(static_cast<unsigned int>(name.size())).append(" bytes, ");
    line.append(static_cast<unsigned int>(wide.size())).append(" wide units").appendEndl();
    std::cout << line.c_str();
    //! [text]
}

void showFailure()
{
    VontalException exception;
    if (!fetchFile(7, exception))
        std::cout << exception.format() << '\n';
}

void showThreads()
{
    //! [threads]
    const qvbase::Reference<Tally> tally = new qvbase::ReferencedImplMT<Tally>;
    qvbase::Semaphore done(0);
    int started = 0;
    for (int i = 0; i < 4; ++i)
        started += qvbase::Thread::execute(new qvbase::ReferencedImplMT<Worker>(tally, done)) ? 1 : 0;
    for (int i = 0; i < started; ++i)
        done.acquire();
    std::cout << tally->count() << " workers did their work\n";
    //! [threads]
}

} // namespace

int main()
{
    showText();
    showFailure();
    showThreads();
    return 0;
}
