// Counts letters in several texts at once. The tally is shared by threads, its interface hides how it counts.

#include "VontalBase/VontalBase.h"

#include <algorithm>
#include <iostream>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;

class Tally : public qvbase::ReferencedObject
{
public:
    virtual void add(int count) = 0;
    virtual int total() = 0;

protected:
    ~Tally() = default;
};

class LockedTally : public Tally
{
public:
    virtual ~LockedTally() = default;

    void add(int count) override
    {
        const qvbase::ThreadMutexGuard guard(m_mutex, true);
        m_total += count;
    }
    int total() override
    {
        const qvbase::ThreadMutexGuard guard(m_mutex, true);
        return m_total;
    }

private:
    qvbase::ThreadMutex m_mutex;
    int m_total = 0;
};

void createTally(Reference<Tally> & out)
{
    out = new ReferencedImplMT<LockedTally>;
}

class LetterCounter : public qvbase::Runnable
{
public:
    LetterCounter(const Vontal::u8string & text, const Reference<Tally> & tally, qvbase::Semaphore & done)
        : m_text(text), m_tally(tally), m_done(done)
    {
    }
    virtual ~LetterCounter() = default;

    void run() override
    {
        m_tally->add(static_cast<int>(std::count(m_text.begin(), m_text.end(), 'e')));
        m_done.release();
    }

private:
    const Vontal::u8string m_text;
    const Reference<Tally> m_tally;
    qvbase::Semaphore & m_done;
};

} // namespace

int main()
{
    Reference<Tally> tally;
    createTally(tally);
    qvbase::Semaphore done(0);
    int started = 0;
    for (const char * const text : {"three", "trees", "were green"})
    {
        if (qvbase::Thread::execute(new ReferencedImplMT<LetterCounter>(text, tally, done)))
            ++started;
        else
            std::cerr << "no thread for " << text << '\n';
    }
    for (int i = 0; i < started; ++i)
        done.acquire();
    std::cout << started << " threads counted " << tally->total() << " letters\n";
    return 0;
}
