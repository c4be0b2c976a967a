// What is left of the library's services at the very end of a process, for threads that still run then.

#include "VontalBase/core/Secret.h"
#include "VontalBase/text/u8string.h"

#include "support/ChildProcess.h"
#include "support/VeryEnd.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace
{

constexpr int good = 3;
constexpr int isUnusable = 10;

/// Protects a text, which takes more than one block, and asks for it again.
void useASecret()
{
    const Vontal::u8string text = std::string(100, 'x');
    qvbase::Secret secret;
    if (!secret.set(text) || qvbase::Secret::Clear(secret).get() != text)
        std::_Exit(isUnusable);
}

VONTALBASE_TEST_CHILD(usesASecretAtVeryEnd, arguments)
{
    useASecret();
    testsupport::callAtVeryEnd(useASecret);
    return good;
}

TEST(SecretAtTheEndOfAProcess, IsUsableUntilTheVeryEnd)
{
    const testsupport::ChildResult child = testsupport::runChild("usesASecretAtVeryEnd");
    EXPECT_FALSE(child.timedOut);
    EXPECT_EQ(child.exitCode, good) << child.standardError;
    EXPECT_EQ(child.standardError, "");
}

} // namespace
