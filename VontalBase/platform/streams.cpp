#include "VontalBase/platform/streams.h"

#include "VontalBase/platform/files.h"
#include "VontalBase/platform/gates.h"

namespace qvplatform
{

namespace
{

/// How much of `size` a call may do.
std::size_t allowed(GateAnswer answer, std::size_t size) noexcept
{
    if (answer == GateAnswer::Fail)
        return 0;
    return answer == GateAnswer::CutShort ? size / 2 : size;
}

} // namespace

std::size_t readStream(std::FILE * stream, void * buffer, std::size_t size)
{
    return std::fread(buffer, 1, allowed(passGate("read stream"), size), stream);
}

bool writeStream(std::FILE * stream, const void * data, std::size_t size)
{
    const std::size_t part = allowed(passGate("write stream"), size);
    return std::fwrite(data, 1, part, stream) == size;
}

bool writeThrough(std::FILE * stream, const void * data, std::size_t size)
{
    const std::size_t part = allowed(passGate("write stream"), size);
    return writeToSystem(stream, data, part) && part == size && !gateFails("flush stream");
}

bool closeStream(std::FILE * stream)
{
    const bool fails = gateFails("close stream");
    const bool isWritten = std::fflush(stream) == 0;
    giveLockBack(stream);
    return std::fclose(stream) == 0 && isWritten && !fails;
}

} // namespace qvplatform
