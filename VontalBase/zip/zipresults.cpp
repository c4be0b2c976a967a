#include "VontalBase/zip/zipresults.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace zip
{

namespace
{

struct Text
{
    Result code;
    std::string_view text;
};

// Kept: "Culdn't".
constexpr Text texts[] = {
    {result::success, "Success"},
    {result::noDuplicate, "Culdn't duplicate handle"},
    {result::noFile, "Couldn't create/open file"},
    {result::noMemory, "Failed to allocate memory"},
    {result::writeFailed, "Error writing to file"},
    {result::notFound, "File not found in the zipfile"},
    {result::moreData, "Still more data to unzip"},
    {result::corrupt, "Zipfile is corrupt or not a zipfile"},
    {result::readFailed, "Error reading file"},
    {result::faultyArguments, "Caller: faulty arguments"},
    {result::notInMemory, "Caller: can only get memory of a memory zipfile"},
    {result::memoryTooSmall, "Caller: not enough space allocated for memory zipfile"},
    {result::previousError, "Caller: there was a previous error"},
    {result::alreadyEnded, "Caller: additions to the zip have already been ended"},
    {result::wrongSize, "Zip-bug: the anticipated size turned out wrong"},
    {result::partiallyUnzipped, "Caller: the file had already been partially unzipped"},
    {result::mixedHandles, "Caller: mixing creation and opening of zip"},
    {result::notInitialised, "Zip-bug: internal initialisation not completed"},
    {result::unseekable, "Zip-bug: trying to seek the unseekable"},
    {result::mindChanged, "Zip-bug: tried to change mind, but not allowed"},
    {result::flateFailed, "Zip-bug: an internal error during flation"},
};
constexpr std::string_view unknownCode = "unknown zip result code";

std::string_view textOf(Result code) noexcept
{
    const auto * const found = std::find_if(
        std::begin(texts), std::end(texts), [&](const Text & text) { return text.code == code; });
    return found != std::end(texts) ? found->text : unknownCode;
}

} // namespace

unsigned int formatMessage(Result code, Result lastResult, char * buffer, unsigned int size) noexcept
{
    const std::string_view text = textOf(code == result::last ? lastResult : code);
    if (buffer != nullptr && size != 0)
    {
        const std::size_t count = std::min<std::size_t>(text.size(), size - 1);
        std::memcpy(buffer, text.data(), count);
        buffer[count] = '\0';
    }
    return static_cast<unsigned int>(text.size());
}

} // namespace zip
