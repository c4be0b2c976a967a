// Starts itself once more as a child, with an argument that has a blank, and hears what that prints.

#include "VontalBase/VontalBase.h"

#include <iostream>
#include <string>

namespace
{

class Collector : public qvbase::ProcessMonitor
{
public:
    explicit Collector(qvbase::Semaphore & ended) : m_ended(ended)
    {
    }
    virtual ~Collector() = default;

    void onOutput(const char * data, unsigned int size) override
    {
        output.append(data, size);
    }
    void onError(const char * data, unsigned int size) override
    {
        std::cerr.write(data, size);
    }
    void onFinished(unsigned int code) override
    {
        exitCode = code;
        m_ended.release();
    }

    // The semaphore tells when they may be read.
    std::string output;
    unsigned int exitCode = 0;

private:
    qvbase::Semaphore & m_ended;
};

} // namespace

int main(int argc, char ** argv)
{
    if (argc > 1)
    {
        std::cout << "The child was given " << argv[1];
        return 3;
    }
    Vontal::u8string program;
    if (!qvdisk::getModuleFullName(program))
        return 1;
    qvbase::Semaphore ended(0);
    const qvbase::Reference<qvbase::ReferencedImplMT<Collector>> monitor =
        new qvbase::ReferencedImplMT<Collector>(ended);
    qvbase::ProcessRunner runner;
    if (!runner.run("\"" + program + "\"", "\"two words\"", monitor, nullptr))
    {
        std::cerr << "cannot start " << program << '\n';
        return 1;
    }
    ended.acquire();
    std::cout << monitor->output << '\n' << "It ended with " << monitor->exitCode << '\n';
    return 0;
}
