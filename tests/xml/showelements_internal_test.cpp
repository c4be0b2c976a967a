#include "VontalBase/text/astring.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/xml/Node.h"
#include "VontalBase/xml/XMLDocPtr.h"
#include "VontalBase/xml/showelements.h"

#include "support/SmallStackThread.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace
{

/// Writes down what it is shown, and may give up.
class Recorder final : public qvplatform::ElementVisitor
{
public:
    explicit Recorder(int mostCalls = 1000000) : m_left(mostCalls)
    {
    }

    void begin(std::string_view name) override
    {
        note("<" + std::string(name));
    }
    void attribute(std::string_view name, std::string_view value) override
    {
        note(" " + std::string(name) + "=" + std::string(value));
    }
    void end() override
    {
        note("/");
    }

    std::string shown;

private:
    void note(const std::string & text)
    {
        if (m_left-- == 0)
            throw std::runtime_error("enough");
        shown += text;
    }

    int m_left;
};

const char * const someText = "<a x='1' y='2'><b/>t<!-- c --><c><d z=''/></c><e/></a>";
const char * const someElements = "<a x=1 y=2<b/<c<d z=//<e//";

TEST(ShownElements, AreInTheOrderOfTheDocument)
{
    qvxml::XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer(someText));
    Recorder recorder;
    qvxml::showElements(*document.getRootElement(), recorder);
    EXPECT_EQ(recorder.shown, someElements);
}

TEST(ShownElements, AreThoseWithinTheFirstAlone)
{
    qvxml::XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer(someText));
    Recorder recorder;
    qvxml::showElements(*document.getRootElement()->getFirstChild("c"), recorder);
    EXPECT_EQ(recorder.shown, "<c<d z=//");
    Recorder empty;
    qvxml::showElements(*document.getRootElement()->getFirstChild("b"), empty);
    EXPECT_EQ(empty.shown, "<b/");
}

TEST(ShownElements, AreLeftWhereTheVisitorThrows)
{
    qvxml::XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer(someText));
    for (int calls = 0; calls < 13; ++calls)
    {
        Recorder recorder(calls);
        EXPECT_THROW(qvxml::showElements(*document.getRootElement(), recorder), std::runtime_error) << calls;
    }
    Recorder whole(13);
    qvxml::showElements(*document.getRootElement(), whole);
    EXPECT_EQ(whole.shown, someElements);
}

TEST(ShownElements, NeedNoStackForDepth)
{
    qvxml::XMLDocPtr document;
    qvxml::Node * node = document.create("a");
    constexpr int depth = 20000;
    for (int i = 1; i < depth; ++i)
        node = node->createChild("a");
    Recorder recorder;
    testsupport::runOnSmallStack([&] { qvxml::showElements(*document.getRootElement(), recorder); });
    EXPECT_EQ(recorder.shown.size(), 3U * depth);
}

} // namespace
