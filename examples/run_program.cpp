// Runs a program, shows what it prints, each line with its stream in front, and ends with its exit code.
//
//     run_program COMMAND [ARGUMENTS]
//
// Both are handed on as they are: the arguments are one text, and what has blanks in it is quoted within.

#include "VontalBase/VontalBase.h"

#include "console/console.h"

#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

//! [monitor]
/// Shows whole lines, and tells when the child has ended. Only the watching thread touches the texts.
class LineMonitor : public qvbase::ProcessMonitor
{
public:
    explicit LineMonitor(qvbase::Semaphore & ended) : m_ended(ended)
    {
    }
    virtual ~LineMonitor() = default;

    void onOutput(const char * data, unsigned int size) override
    {
        show("out| ", m_output, std::string_view(data, size));
    }
    void onError(const char * data, unsigned int size) override
    {
        show("err| ", m_error, std::string_view(data, size));
    }
    void onFinished(unsigned int exitCode) override
    {
        // What is left has no line end.
        if (!m_output.empty())
            show("out| ", m_output, "\n");
        if (!m_error.empty())
            show("err| ", m_error, "\n");
        std::cout << std::flush;
        m_exitCode = exitCode;
        m_ended.release();
    }

    unsigned int exitCode() const
    {
        return m_exitCode;
    }

private:
    /// A piece of output may end anywhere, also within a line.
    /// @param begun what has come of a line that is not at its end.
    static void show(const char * mark, std::string & begun, std::string_view piece)
    {
        for (std::size_t end = piece.find('\n'); end != std::string_view::npos; end = piece.find('\n'))
        {
            std::cout << mark << begun << piece.substr(0, end + 1);
            begun.clear();
            piece.remove_prefix(end + 1);
        }
        begun += piece;
        if (begun.size() < longestLine)
            return;
        // A line without an end is shown in parts.
        std::cout << mark << begun << '\n';
        begun.clear();
    }

    static constexpr std::size_t longestLine = 65536;

    qvbase::Semaphore & m_ended;
    std::string m_output;
    std::string m_error;
    unsigned int m_exitCode = 0;
};
//! [monitor]

} // namespace

int main(int argc, char ** argv)
{
    const std::vector<Vontal::u8string> words = console::arguments(argc, argv);
    if (words.size() < 2 || words.size() > 3)
    {
        std::cerr << "usage: run_program COMMAND [ARGUMENTS], the arguments as one text\n";
        return 2;
    }
    const Vontal::u8string arguments = words.size() > 2 ? words[2] : Vontal::u8string();

    //! [run]
    qvbase::Semaphore ended(0);
    const qvbase::Reference<qvbase::ReferencedImplMT<LineMonitor>> monitor =
        new qvbase::ReferencedImplMT<LineMonitor>(ended);
    qvbase::ProcessRunner runner;
    if (!runner.run(words[1], arguments, monitor, nullptr))
    {
        std::cerr << "cannot start " << words[1] << '\n';
        return 1;
    }
    ended.acquire();
    return static_cast<int>(monitor->exitCode());
    //! [run]
}
