/// @file
/// Conversions that take a text as a terminated run of units, or as a string.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <string_view>

/// Both forms of a conversion say true and give `expected`, into a destination that held text.
/// @param convert calls the conversion with a destination and with what it is given.
template <class From, class To, class Convert>
void expectBothForms(
    const std::basic_string<From> & source, const std::basic_string<To> & expected, const Convert & convert)
{
    const auto expectOf = [&](const auto & form)
    {
        const std::string_view before = "what was here before";
        std::basic_string<To> destination(before.begin(), before.end());
        EXPECT_TRUE(convert(destination, form));
        EXPECT_EQ(destination, expected);
    };
    expectOf(source.c_str());
    expectOf(source);
}
