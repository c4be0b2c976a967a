/// @file
/// A text that leads into every state of the scanner, and which bytes are welcome there: written by hand.
#pragma once

#include <string>
#include <string_view>

namespace jsontest
{

struct ScannerState
{
    const char * name;
    /// What leads into the state; it is accepted as far as it goes.
    std::string_view prefix;
    /// The bytes that the scanner takes next.
    std::string accepted;
    /// Among them those that deliver a real number, which every acceptor refuses.
    std::string deliveringReal;
};

/// All bytes from `first` to `last`.
inline std::string bytes(int first, int last)
{
    std::string result;
    for (int byte = first; byte <= last; ++byte)
        result += static_cast<char>(byte);
    return result;
}

inline const std::string white = " \t\n\r";
inline const std::string digits = "0123456789";
inline const std::string hexadecimal = "0123456789abcdefABCDEF";
inline const std::string values = "{[\"-0123456789fnt";
/// Everything but control characters, continuation bytes, 0xFE and 0xFF.
inline const std::string inString = bytes(0x20, 0x7F) + bytes(0xC0, 0xFD);
inline const std::string continuations = bytes(0x80, 0xBF);

inline const ScannerState scannerStates[] = {
    {"the start", "", white + "{[", ""},
    {"the start behind a blank", " ", white + "{[", ""},
    {"behind the whole document", "{}", white, ""},
    {"behind a whole array", "[]", white, ""},
    {"behind the whole document and a line end", "[]\n", white, ""},
    {"behind a string in an array", "[\"x\"", white + ",]", ""},
    {"behind a string in an object", "{\"a\":\"x\"", white + ",}", ""},
    {"behind an array in an array", "[[]", white + ",]", ""},
    {"behind an object in an array", "[{}", white + ",]", ""},
    {"behind an array in an object", "{\"a\":[]", white + ",}", ""},
    {"behind true", "[true", white + ",]", ""},
    {"behind false and a blank", "[false ", white + ",]", ""},
    {"behind null in an object", "{\"a\":null", white + ",}", ""},
    {"an object has opened", "{", white + "}\"", ""},
    {"an object within an array has opened", "[{ ", white + "}\"", ""},
    {"a key is due", "{\"a\":\"x\",", white + "\"", ""},
    {"a key is due behind an object", "{\"a\":{},", white + "\"", ""},
    {"a colon is due", "{\"a\"", white + ":", ""},
    {"a colon is due behind a blank", "{\"a\" ", white + ":", ""},
    {"a value is due in an object", "{\"a\":", white + values, ""},
    {"a value is due in an array", "[\"x\",", white + values, ""},
    {"a value is due in an array behind an object", "[{},\t", white + values, ""},
    {"an array has opened", "[", white + values + "]", ""},
    {"an array within an object has opened", "{\"a\":[", white + values + "]", ""},
    {"in a string", "[\"", inString, ""},
    {"in a string behind a byte", "[\"x", inString, ""},
    {"in a key", "{\"", inString, ""},
    {"in a string behind a whole sequence", "[\"\xC3\xA4", inString, ""},
    {"one byte is due", "[\"\xC0", continuations, ""},
    {"one byte is due, last lead", "[\"\xDF", continuations, ""},
    {"one byte is due in a key", "{\"\xC3", continuations, ""},
    {"two bytes are due", "[\"\xE0", continuations, ""},
    {"two bytes are due, last lead", "[\"\xEF", continuations, ""},
    {"the last of two bytes is due", "[\"\xE2\x82", continuations, ""},
    {"three bytes are due", "[\"\xF0", continuations, ""},
    {"three bytes are due, last lead", "[\"\xF7", continuations, ""},
    {"the last of three bytes is due", "[\"\xF0\x9F\x98", continuations, ""},
    {"four bytes are due", "[\"\xF8", continuations, ""},
    {"four bytes are due, last lead", "[\"\xFB", continuations, ""},
    {"the last of four bytes is due", "[\"\xF8\x88\x80\x80", continuations, ""},
    {"five bytes are due", "[\"\xFC", continuations, ""},
    {"five bytes are due, last lead", "[\"\xFD", continuations, ""},
    {"the last of five bytes is due", "[\"\xFD\xBF\xBF\xBF\xBF", continuations, ""},
    {"behind five continuation bytes", "[\"\xFD\xBF\xBF\xBF\xBF\xBF", inString, ""},
    {"an escape", "[\"\\", "\"\\/bfnrtu", ""},
    {"an escape in a key", "{\"\\", "\"\\/bfnrtu", ""},
    {"behind an escape", "[\"\\n", inString, ""},
    {"the first hexadecimal digit", "[\"\\u", hexadecimal, ""},
    {"the second hexadecimal digit", "[\"\\u0", hexadecimal, ""},
    {"the third hexadecimal digit", "[\"\\uA0", hexadecimal, ""},
    {"the third hexadecimal digit of a surrogate", "[\"\\udc", hexadecimal, ""},
    {"the last hexadecimal digit", "[\"\\u004", hexadecimal, ""},
    {"the last hexadecimal digit of a high surrogate", "[\"\\uD80", hexadecimal, ""},
    {"the last hexadecimal digit of the last high surrogates", "[\"\\uDBF", hexadecimal, ""},
    {"the last hexadecimal digit of a lone low surrogate", "[\"\\uDC0", "", ""},
    {"the last hexadecimal digit of the last low surrogates", "[\"\\uDFF", "", ""},
    {"the last hexadecimal digit behind the surrogates", "[\"\\uE00", hexadecimal, ""},
    {"behind a code", "[\"\\u0041", inString, ""},
    {"the backslash of a low surrogate", "[\"\\ud83d", "\\", ""},
    {"the letter of a low surrogate", "[\"\\ud83d\\", "u", ""},
    {"the first digit of a low surrogate", "[\"\\ud83d\\u", hexadecimal, ""},
    {"the last digit of a low surrogate", "[\"\\ud83d\\ude0", hexadecimal, ""},
    {"the last digit of the first low surrogates", "[\"\\ud83d\\udc0", hexadecimal, ""},
    {"the last digit of the last low surrogates", "[\"\\ud83d\\udff", hexadecimal, ""},
    {"the last digit of a letter in place of a low surrogate", "[\"\\ud83d\\u004", "", ""},
    {"the last digit of a second high surrogate", "[\"\\ud83d\\udbf", "", ""},
    {"the last digit of what lies behind the surrogates", "[\"\\ud83d\\ue00", "", ""},
    {"behind a surrogate pair", "[\"\\ud83d\\ude00", inString, ""},
    {"behind a minus", "[-", digits, ""},
    {"behind a zero", "[0", white + ",].", ""},
    {"behind a minus and a zero", "[-0", white + ",].", ""},
    {"behind a zero in an object", "{\"a\":0", white + ",}.", ""},
    {"in an integer", "[1", white + ",].eE" + digits, ""},
    {"in a longer integer", "[-90", white + ",].eE" + digits, ""},
    {"in an integer in an object", "{\"a\":12", white + ",}.eE" + digits, ""},
    {"behind an integer and a blank", "[1 ", white + ",]", ""},
    {"behind a point", "[1.", digits, ""},
    {"behind a zero and a point", "[0.", digits, ""},
    {"in a fraction", "[1.5", white + ",]eE" + digits, ",]"},
    {"in a fraction of zero", "[0.05", white + ",]eE" + digits, ",]"},
    {"in a fraction in an object", "{\"a\":1.5", white + ",}eE" + digits, ",}"},
    {"behind a fraction and a blank", "[1.5 ", white + ",]", ",]"},
    {"behind an exponent's letter", "[1e", "+-" + digits, ""},
    {"behind an exponent's letter and a fraction", "[1.5E", "+-" + digits, ""},
    {"behind an exponent's sign", "[1e+", digits, ""},
    {"behind an exponent's minus", "[1E-", digits, ""},
    {"in an exponent", "[1e5", white + ",]" + digits, ",]"},
    {"in an exponent with a sign", "[1.5e-05", white + ",]" + digits, ",]"},
    {"in an exponent in an object", "{\"a\":1e5", white + ",}" + digits, ",}"},
    {"behind an exponent and a blank", "[1e5\n", white + ",]", ",]"},
    {"t of true", "[t", "r", ""},
    {"tr of true", "[tr", "u", ""},
    {"tru of true", "[tru", "e", ""},
    {"f of false", "[f", "a", ""},
    {"fa of false", "[fa", "l", ""},
    {"fal of false", "[fal", "s", ""},
    {"fals of false", "{\"a\":fals", "e", ""},
    {"n of null", "[n", "u", ""},
    {"nu of null", "[nu", "l", ""},
    {"nul of null", "{\"a\":nul", "l", ""},
};

} // namespace jsontest
