#include "support/MemorySearch.h"

#include <algorithm>
#include <cstring>

#ifndef _WIN32
#include <array>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <unistd.h>
#include <unordered_map>
#endif

namespace testsupport
{

namespace
{

/// volatile: no compiler may reckon with the bytes themselves.
volatile unsigned char turningMask = 0xA5;

} // namespace

HiddenBytes::HiddenBytes(std::size_t size, std::uint32_t seed)
{
    std::uint32_t number = seed;
    for (std::size_t i = 0; i < size; ++i)
    {
        number = number * 1664525 + 1013904223;
        m_turned.push_back(static_cast<unsigned char>((number >> 24) ^ turningMask));
    }
}

HiddenBytes::HiddenBytes(const void * bytes, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        m_turned.push_back(static_cast<const unsigned char *>(bytes)[i] ^ turningMask);
}

unsigned char HiddenBytes::at(std::size_t index) const noexcept
{
    return m_turned[index] ^ turningMask;
}

bool HiddenBytes::areAt(const void * address) const noexcept
{
    const unsigned char * const bytes = static_cast<const unsigned char *>(address);
    for (std::size_t i = 0; i < m_turned.size(); ++i)
    {
        if ((bytes[i] ^ turningMask) != m_turned[i])
            return false;
    }
    return true;
}

#ifdef _WIN32

bool memoryCanBeSearched()
{
    return false;
}

std::size_t piecesInMemory(const HiddenBytes &)
{
    return 0;
}

std::vector<std::uintptr_t> mappingsOutOfCoreDumps()
{
    return {};
}

#else

namespace
{

struct Mapping
{
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    bool isReadable = false;
    bool isOutOfCoreDumps = false;
};

std::uint64_t wordAt(const unsigned char * bytes)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// What is behind that in a piece.
std::uint32_t tailAt(const unsigned char * bytes)
{
    std::uint32_t tail = 0;
    static_assert(HiddenBytes::pieceSize == sizeof(std::uint64_t) + sizeof tail);
    std::memcpy(&tail, bytes + sizeof(std::uint64_t), sizeof tail);
    return tail;
}

/// Memory of this size is passed over if it is blank.
constexpr std::size_t blankSize = 4096;

bool isBlank(const unsigned char * bytes)
{
    return bytes[0] == 0 && std::memcmp(bytes, bytes + 1, blankSize - 1) == 0;
}

std::vector<Mapping> mappings()
{
    std::vector<Mapping> all;
    std::ifstream file("/proc/self/smaps");
    std::string line;
    while (std::getline(file, line))
    {
        Mapping mapping;
        std::array<char, 5> access{};
        unsigned long begin = 0;
        unsigned long end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx %4s", &begin, &end, access.data()) == 3)
        {
            mapping.begin = begin;
            mapping.end = end;
            mapping.isReadable = access[0] == 'r' && line.find("[v") == std::string::npos;
            all.push_back(mapping);
        }
        else if (line.rfind("VmFlags:", 0) == 0 && !all.empty())
        {
            all.back().isOutOfCoreDumps = line.find(" dd") != std::string::npos;
        }
    }
    return all;
}

class SearchedFile
{
public:
    SearchedFile() : m_descriptor(open("/proc/self/mem", O_RDONLY | O_CLOEXEC))
    {
    }
    SearchedFile(const SearchedFile &) = delete;
    SearchedFile & operator=(const SearchedFile &) = delete;
    ~SearchedFile()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }

    std::size_t read(std::uintptr_t address, unsigned char * buffer, std::size_t size) const
    {
        const ssize_t count = pread(m_descriptor, buffer, size, static_cast<off_t>(address));
        return count > 0 ? static_cast<std::size_t>(count) : 0;
    }

private:
    int m_descriptor;
};

} // namespace

bool memoryCanBeSearched()
{
#ifdef __SANITIZE_THREAD__
    // Its notes about memory are much larger than that, and as slow to read.
    return false;
#else
    return access("/proc/self/mem", R_OK) == 0;
#endif
}

std::size_t piecesInMemory(const HiddenBytes & bytes)
{
    // The pieces are held turned as well, with a filter in front that knows their first three bytes.
    const std::uint64_t mask = 0x0101010101010101U * turningMask;
    std::unordered_map<std::uint64_t, std::uint32_t> turnedPieces;
    constexpr std::size_t filterSize = std::size_t{1} << 24;
    std::vector<bool> beginsPiece(filterSize, false);
    for (std::size_t i = 0; i < bytes.pieces(); ++i)
    {
        const std::uint64_t piece = wordAt(bytes.m_turned.data() + i);
        turnedPieces[piece] = tailAt(bytes.m_turned.data() + i);
        beginsPiece[piece % filterSize] = true;
    }
    // The buffer itself is passed over, since it holds what was read last.
    constexpr std::size_t bufferSize = std::size_t{1} << 20;
    static unsigned char buffer[bufferSize];
    const auto bufferBegin = reinterpret_cast<std::uintptr_t>(buffer);
    // What is larger than any memory of ours belongs to a sanitizer, for its notes about each address.
    constexpr std::uintptr_t greatestMapping = std::uintptr_t{1} << 27;
    const std::vector<Mapping> all = mappings();
    const SearchedFile memory;
    std::size_t count = 0;
    for (const Mapping & mapping : all)
    {
        if (!mapping.isReadable || mapping.end - mapping.begin > greatestMapping)
            continue;
        for (std::uintptr_t address = mapping.begin; address < mapping.end;)
        {
            const std::size_t wanted = std::min<std::size_t>(bufferSize, mapping.end - address);
            const std::size_t size = memory.read(address, buffer, wanted);
            if (size < HiddenBytes::pieceSize)
                break;
            for (std::size_t i = 0; i + HiddenBytes::pieceSize <= size; ++i)
            {
                // Most of what a sanitizer keeps for itself has never been written to.
                if (i % blankSize == 0 && i + blankSize <= size && isBlank(buffer + i))
                    i += blankSize - HiddenBytes::pieceSize;
                const std::uint64_t turned = wordAt(buffer + i) ^ mask;
                const bool isOurs = address + i >= bufferBegin && address + i < bufferBegin + bufferSize;
                if (!beginsPiece[turned % filterSize] || isOurs)
                    continue;
                const auto piece = turnedPieces.find(turned);
                const std::uint32_t tail = tailAt(buffer + i) ^ static_cast<std::uint32_t>(mask);
                if (piece != turnedPieces.end() && piece->second == tail)
                    ++count;
            }
            if (address + size >= mapping.end)
                break;
            // A place where two readings meet is looked at as well, and none twice.
            address += size - (HiddenBytes::pieceSize - 1);
        }
    }
    std::memset(buffer, 0, bufferSize);
    return count;
}

std::vector<std::uintptr_t> mappingsOutOfCoreDumps()
{
    std::vector<std::uintptr_t> addresses;
    for (const Mapping & mapping : mappings())
    {
        if (mapping.isOutOfCoreDumps && mapping.isReadable)
            addresses.push_back(mapping.begin);
    }
    return addresses;
}

#endif

} // namespace testsupport
