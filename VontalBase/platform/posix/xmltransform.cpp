#include "VontalBase/platform/posix/xmltransform.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/xmlguard.h"
#include "VontalBase/platform/posix/xmlparsing.h"
#include "VontalBase/platform/posix/xmltext.h"
#include "VontalBase/platform/threads.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <libxml/globals.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>
#include <libxslt/extensions.h>
#include <libxslt/security.h>
#include <libxslt/transform.h>
#include <libxslt/variables.h>
#include <libxslt/xsltInternals.h>
#include <libxslt/xsltutils.h>
#include <memory>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace qvplatform
{

namespace
{

// Together these two bound the stack: each level of a template takes some hundred bytes for each instruction
// that the present one is nested in.
constexpr int deepestTemplates = 3000;
constexpr int deepestStylesheet = 128;
constexpr std::size_t stackBytes = std::size_t{256} * 1024 * 1024;

/// Instructions and steps of XPath: a few seconds. Large sources may take more.
constexpr unsigned long mostInstructions = 10'000'000;
constexpr unsigned long mostSteps = 100'000'000;
constexpr std::size_t mostNodes = 3'000'000;
constexpr std::size_t longestString = std::size_t{32} * 1024 * 1024;
/// So many bytes that go through variables count as one instruction.
constexpr std::size_t bytesAnInstruction = 64;
/// How much more memory the whole process may take while a stylesheet is at work. Others in the process may
/// need some, too, so this is only for what no other limit sees.
constexpr std::size_t mostMemory = std::size_t{2} * 1024 * 1024 * 1024;

struct FreeStylesheet
{
    void operator()(xsltStylesheet * stylesheet) const noexcept
    {
        xsltFreeStylesheet(stylesheet);
    }
};

struct FreeTransform
{
    void operator()(xsltTransformContext * context) const noexcept
    {
        xsltFreeTransformContext(context);
    }
};

struct FreeSecurity
{
    void operator()(xsltSecurityPrefs * preferences) const noexcept
    {
        xsltFreeSecurityPrefs(preferences);
    }
};

/// The bytes of memory that the process holds; 0 where the system does not tell. Allocates nothing.
std::size_t residentMemory() noexcept
{
    const int file = gateFails("memory use") ? -1 : open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return 0;
    char text[128];
    const ssize_t size = read(file, text, sizeof text);
    close(file);
    // Two numbers of pages, with a blank between them: all, and those in memory.
    const char * const end = text + std::max<ssize_t>(size, 0);
    const char * const blank = std::find(static_cast<const char *>(text), end, ' ');
    std::size_t pages = 0;
    if (blank != end)
        std::from_chars(blank + 1, end, pages);
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// Waits for the end of a thread when it goes.
class Joined
{
public:
    explicit Joined(void * handle) noexcept : m_handle(handle)
    {
    }
    Joined(const Joined &) = delete;
    Joined & operator=(const Joined &) = delete;
    ~Joined()
    {
        joinThread(m_handle);
    }

private:
    void * m_handle;
};

class Job;

/// The job of a thread that is at work for one.
thread_local Job * presentJob = nullptr;

class Job
{
public:
    Job(TransformInput & input, TransformOutput & output) noexcept : m_input(input), m_output(output)
    {
    }

    /// Runs it on a thread of its own, to the end.
    HRESULT run();

    void countNode() noexcept
    {
        if (++m_nodes > mostNodes + 4 * m_input.sourceFacts.nodes)
            stop();
    }
    void forgetNode() noexcept
    {
        if (m_nodes != 0)
            --m_nodes;
    }
    /// A string of that length is about to be used.
    void countBytes(std::size_t size) noexcept;
    void stop() noexcept;

private:
    static unsigned int enter(void * job);
    void work() noexcept;
    HRESULT apply();
    HRESULT keep(XmlDocument result, xsltStylesheet * stylesheet);
    void limit(xsltTransformContext & context) const;
    void watch();

    TransformInput & m_input;
    TransformOutput & m_output;
    std::mutex m_mutex;
    std::condition_variable m_change;
    bool m_isDone = false;
    xsltTransformContext * m_context = nullptr;
    std::atomic<bool> m_isStopped{false};
    std::size_t m_nodes = 0;
    HRESULT m_result = E_FAIL;
};

// ---------------------------------------------------------------------------------------------------
// What libxml2 and libxslt call

void onNode(xmlNode *)
{
    if (presentJob != nullptr)
        presentJob->countNode();
}

void onNodeGone(xmlNode *)
{
    if (presentJob != nullptr)
        presentJob->forgetNode();
}

/// Has libxml2 look at each thread's calls for nodes at all. It offers no other way than to set the call of
/// the main thread, which stays what it is.
void enableNodeCalls()
{
    static std::once_flag done;
    std::call_once(done,
        []
        {
            const xmlRegisterNodeFunc present = xmlRegisterNodeDefault(nullptr);
            if (present != nullptr)
                xmlRegisterNodeDefault(present);
        });
}

// libxslt calls both so.
void ignoreMessage(void *, const char *, ...) // NOLINT(cert-dcl50-cpp)
{
}

std::mutex quietMutex;
unsigned int quietUsers = 0;
xmlGenericErrorFunc usualHandler = nullptr;

/// Takes the messages of stylesheets that are not ours to the handler that somebody else has set.
void passMessage(void * context, const char * format, ...) // NOLINT(cert-dcl50-cpp)
{
    if (presentJob != nullptr)
        return;
    char text[8192];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    xmlGenericErrorFunc handler = nullptr;
    {
        const std::lock_guard lock(quietMutex);
        handler = usualHandler;
    }
    if (handler != nullptr)
        handler(context, "%s", text);
}

/// As long as it lives, what libxslt complains of on threads with a job goes nowhere. libxslt has one handler
/// for the whole process; for all other threads it stays at work.
class QuietStylesheets
{
public:
    QuietStylesheets()
    {
        const std::lock_guard lock(quietMutex);
        if (quietUsers++ != 0)
            return;
        const xmlGenericErrorFunc present =
            __atomic_exchange_n(&xsltGenericError, &passMessage, __ATOMIC_SEQ_CST);
        // Somebody may have put back ours, which was there when they set theirs: the usual one stays then.
        if (present != passMessage)
            usualHandler = present;
    }
    QuietStylesheets(const QuietStylesheets &) = delete;
    QuietStylesheets & operator=(const QuietStylesheets &) = delete;
    ~QuietStylesheets()
    {
        const std::lock_guard lock(quietMutex);
        xmlGenericErrorFunc ours = passMessage;
        // If somebody has set another one meanwhile, that stays.
        if (--quietUsers == 0)
        {
            __atomic_compare_exchange_n(
                &xsltGenericError, &ours, usualHandler, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
        }
    }
};

std::size_t lengthOf(const xmlChar * text) noexcept
{
    return text != nullptr ? std::strlen(reinterpret_cast<const char *>(text)) : 0;
}

/// The length of a value's text as far as it lies open: that of a string, or of the texts at the top of a
/// fragment.
std::size_t lengthOf(const xmlXPathObject & value) noexcept
{
    if (value.type == XPATH_STRING)
        return lengthOf(value.stringval);
    if (value.nodesetval == nullptr || value.nodesetval->nodeNr != 1)
        return 0;
    const xmlNode * const node = value.nodesetval->nodeTab[0];
    if (node == nullptr || node->type != XML_DOCUMENT_NODE)
        return 0;
    std::size_t length = 0;
    int left = 16;
    for (const xmlNode * child = node->children; child != nullptr && left > 0; child = child->next, --left)
        length += child->type == XML_TEXT_NODE ? lengthOf(child->content) : 0;
    return length;
}

xmlXPathObject * findVariable(void * context, const xmlChar * name, const xmlChar * uri)
{
    xmlXPathObject * const value = xsltXPathVariableLookup(context, name, uri);
    if (value != nullptr && presentJob != nullptr)
        presentJob->countBytes(lengthOf(*value));
    return value;
}

/// A string that doubles itself reaches its limit before any other is noticed.
void concatenate(xmlXPathParserContext * context, int count)
{
    std::size_t length = 0;
    for (int i = 0; i < count && i < context->valueNr; ++i)
        length += lengthOf(*context->valueTab[context->valueNr - 1 - i]);
    if (presentJob != nullptr)
        presentJob->countBytes(length);
    if (length > longestString)
        xmlXPathErr(context, XPATH_MEMORY_ERROR);
    else
        xmlXPathConcatFunction(context, count);
}

// ---------------------------------------------------------------------------------------------------
// The job

void Job::stop() noexcept
{
    m_isStopped.store(true, std::memory_order_relaxed);
    if (m_context != nullptr)
        std::atomic_ref<xsltTransformState>(m_context->state)
            .store(XSLT_STATE_STOPPED, std::memory_order_relaxed);
}

void Job::countBytes(std::size_t size) noexcept
{
    m_context->opCount += static_cast<unsigned long>(size / bytesAnInstruction);
    if (size > longestString || m_context->opCount > m_context->opLimit)
        stop();
}

void Job::limit(xsltTransformContext & context) const
{
    const unsigned long nodes = static_cast<unsigned long>(m_input.sourceFacts.nodes);
    context.maxTemplateDepth = deepestTemplates;
    context.opLimit = mostInstructions + 100 * nodes;
    context.xpathCtxt->opLimit = mostSteps + 1000 * nodes;
    xsltSetTransformErrorFunc(&context, nullptr, ignoreMessage);
    xmlXPathRegisterVariableLookup(context.xpathCtxt, findVariable, &context);
    xmlXPathRegisterFunc(context.xpathCtxt, xmlText("concat"), concatenate);
}

/// The stylesheet's own process-wide settings are left alone: they may be somebody else's.
bool forbidAll(xsltSecurityPrefs * preferences) noexcept
{
    bool isDone = preferences != nullptr;
    for (const xsltSecurityOption option : {XSLT_SECPREF_READ_FILE, XSLT_SECPREF_WRITE_FILE,
             XSLT_SECPREF_CREATE_DIRECTORY, XSLT_SECPREF_READ_NETWORK, XSLT_SECPREF_WRITE_NETWORK})
        isDone = isDone && xsltSetSecurityPrefs(preferences, option, xsltSecurityForbid) == 0;
    return isDone;
}

HRESULT Job::keep(XmlDocument result, xsltStylesheet * stylesheet)
{
    if (!m_input.wantsBytes)
    {
        m_output.document = std::move(result);
        return S_OK;
    }
    xmlChar * bytes = nullptr;
    int size = 0;
    if (gateFails("xml result") || xsltSaveResultToString(&bytes, &size, result.get(), stylesheet) != 0)
        return E_FAIL;
    const std::unique_ptr<xmlChar, decltype(xmlFree)> owner(bytes, xmlFree);
    if (bytes != nullptr && size > 0)
        m_output.bytes.assign(reinterpret_cast<const char *>(bytes), static_cast<std::size_t>(size));
    return S_OK;
}

HRESULT Job::apply()
{
    if (gateFails("xml stylesheet"))
        return E_OUTOFMEMORY;
    const std::unique_ptr<xsltStylesheet, FreeStylesheet> stylesheet(
        xsltParseStylesheetDoc(m_input.stylesheet.get()));
    if (!stylesheet)
        return E_FAIL;
    // It owns its document now.
    static_cast<void>(m_input.stylesheet.release());
    if (stylesheet->errors != 0)
        return E_FAIL;
    const std::unique_ptr<xsltSecurityPrefs, FreeSecurity> preferences(xsltNewSecurityPrefs());
    const std::unique_ptr<xsltTransformContext, FreeTransform> context(
        xsltNewTransformContext(stylesheet.get(), m_input.source.get()));
    if (!context || !forbidAll(preferences.get()) ||
        xsltSetCtxtSecurityPrefs(preferences.get(), context.get()) != 0 || gateFails("xml transformation"))
        return E_OUTOFMEMORY;
    limit(*context);
    {
        const std::lock_guard lock(m_mutex);
        m_context = context.get();
    }
    XmlDocument result(xsltApplyStylesheetUser(
        stylesheet.get(), m_input.source.get(), nullptr, nullptr, nullptr, context.get()));
    {
        const std::lock_guard lock(m_mutex);
        m_context = nullptr;
    }
    if (!result || context->state != XSLT_STATE_OK || m_isStopped)
        return E_FAIL;
    return keep(std::move(result), stylesheet.get());
}

void Job::work() noexcept
{
    presentJob = this;
    {
        const QuietErrors quiet;
        const QuietStylesheets quietStylesheets;
        // The values of this thread alone, which ends with the job.
        enableNodeCalls();
        xmlRegisterNodeDefaultValue = onNode;
        xmlDeregisterNodeDefaultValue = onNodeGone;
        try
        {
            m_result = apply();
        }
        catch (...)
        {
            m_result = E_OUTOFMEMORY;
        }
        xmlRegisterNodeDefaultValue = nullptr;
        xmlDeregisterNodeDefaultValue = nullptr;
    }
    presentJob = nullptr;
}

unsigned int Job::enter(void * job)
{
    Job & self = *static_cast<Job *>(job);
    self.work();
    const std::lock_guard lock(self.m_mutex);
    self.m_isDone = true;
    self.m_change.notify_one();
    return 0;
}

void Job::watch()
{
    const std::size_t before = residentMemory();
    std::unique_lock lock(m_mutex);
    while (!m_change.wait_for(lock, std::chrono::milliseconds(50), [this] { return m_isDone; }))
    {
        if (before != 0 && residentMemory() > before + mostMemory)
            stop();
    }
}

HRESULT Job::run()
{
    const StartedThread thread = startThread(enter, this, stackBytes);
    if (thread.handle == nullptr)
        return E_OUTOFMEMORY;
    {
        const Joined joined(thread.handle);
        watch();
    }
    return m_result;
}

} // namespace

HRESULT transform(TransformInput input, TransformOutput & output)
{
    if (input.stylesheetFacts.includesOthers || input.stylesheetFacts.depth > deepestStylesheet ||
        input.sourceFacts.depth > greatestDepth)
        return E_FAIL;
    startXmlLibrary();
    return Job(input, output).run();
}

} // namespace qvplatform
