// What is told of a rich error that the system refuses to give out.

#include "VontalBase/core/ComUtils.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/text/U8StringBuilder.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/u8string.h"

#include <gtest/gtest.h>

namespace
{

using Vontal::u8string;

/// An object with rich errors.
class Failing : public ISupportErrorInfo
{
public:
    virtual ~Failing() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void ** out) override
    {
        *out = static_cast<ISupportErrorInfo *>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return ++references;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        return --references;
    }
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID) override
    {
        return S_OK;
    }

    ULONG references = 1;
};

TEST(ComErrors, SayThatTheSystemRefusesThem)
{
    Failing object;
    const GUID someInterface = {};
    Vontal::U8StringBuilder out;
    VontalException failure;
    qvplatform::armGates({"thread error", 1, 2});
    qvbase::processComException(&object, &someInterface, 0, out);
    qvbase::processComException(&object, &someInterface, failure);
    qvplatform::disarmGates();
    if (qvplatform::gatePassages() == 0)
        GTEST_SKIP() << "the errors of threads are the system's own here, which refuses none";
    EXPECT_EQ(static_cast<const u8string &>(out), "Cannot get error detail");
    ASSERT_NE(failure.first, nullptr);
    EXPECT_EQ(failure.first->file, "ComUtils");
    EXPECT_EQ(failure.first->text, "Cannot get error detail");
    EXPECT_EQ(failure.first->next, nullptr);
    EXPECT_EQ(object.references, 1U);
}

} // namespace
