/// Any bytes under the cursor: it visits each up to the first zero and no further, and tells of each what it
/// tells of it alone.

#include "VontalBase/parse/LexAnal.h"

#include "require.h"

#include <cstddef>
#include <cstdint>
#include <string>

using fuzzing::require;
using qvparse::LexAnal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::string text = std::string(data, data + size).c_str();
    LexAnal walk;
    walk.start(text.c_str());
    for (const char c : text)
    {
        const char alone[] = {c, '\0'};
        LexAnal other;
        require(walk.getChar() == c && walk.getCurrent() != LexAnal::End);
        require(walk.getCurrent() == other.start(alone));
        require(other.getNext() == LexAnal::End);
        walk.getNext();
    }
    require(walk.getCurrent() == LexAnal::End && walk.getNext() == LexAnal::End);
    require(walk.getChar() == '\0');
    return 0;
}
