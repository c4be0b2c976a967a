/// @file
/// How much of something a test does.
#pragma once

#include <cstdlib>

namespace testsupport
{

/// What a plain Linux build does without effort takes long under the sanitizers, and where the system itself
/// is run by another one.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(_WIN32)
constexpr bool isSlow = true;
#else
constexpr bool isSlow = false;
#endif

/// So many repetitions, or a tenth of them where they are slow and in the second run of a program, abroad
/// (main.cpp), which looks for what depends on the place and not for what depends on chance.
inline int repetitions(int wanted)
{
    return isSlow || std::getenv("VONTALBASE_TEST_LOCALE") != nullptr ? (wanted + 9) / 10 : wanted;
}

} // namespace testsupport
