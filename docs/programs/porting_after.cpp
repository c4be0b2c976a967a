// Keeps a small cache of texts on the disk. The same on Windows and on Linux.

#include "VontalBase/VontalBase.h"

#include <cstdint>
#include <iostream>
#include <string>

namespace
{

using Vontal::u8string;

bool writeEntry(const u8string & directory, const u8string & name, const std::string & text)
{
    return qvdisk::writeTextFile(directory + "\\" + name, text);
}

class SizeAdder : public qvdisk::FileEnumerator
{
public:
    bool onEntry(qvdisk::File & entry) override
    {
        if (entry.getExtension() == L".txt")
            total += entry.getFileSize();
        return true;
    }

    std::int64_t total = 0;
};

class EntryCounter : public qvbase::Runnable
{
public:
    EntryCounter(Vontal::ulong32 & count, qvbase::Semaphore & done) : m_count(count), m_done(done)
    {
    }
    virtual ~EntryCounter() = default;

    void run() override
    {
        qvxml::XMLDocPtr document;
        u8string text;
        bool isNumber = false;
        if (document.loadFile(u8string("cache\\index.xml")) &&
            document.getRootElement()->getProperty("count", text))
            m_count = text.toULong(isNumber);
        m_done.release();
    }

private:
    Vontal::ulong32 & m_count;
    qvbase::Semaphore & m_done;
};

} // namespace

int main()
{
    if (!qvdisk::createDirectory("cache") || !writeEntry("cache", "a.txt", "first") ||
        !writeEntry("cache", "b.txt", "second") || !writeEntry("cache", "index.xml", "<index count='2'/>"))
        return 1;
    Vontal::ulong32 count = 0;
    qvbase::Semaphore done(0);
    if (!qvbase::Thread::execute(new qvbase::ReferencedImplMT<EntryCounter>(count, done)))
        return 1;
    done.acquire();
    SizeAdder adder;
    if (!qvdisk::File("cache").getEntries(&adder))
        return 1;
    std::cout << count << " entries, " << adder.total << " bytes\n";
    return 0;
}
