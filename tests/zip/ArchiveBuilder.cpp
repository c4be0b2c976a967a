#include "zip/ArchiveBuilder.h"

#include <algorithm>

namespace ziptest
{

namespace
{

/// Writes bits from the lowest of a byte to the highest.
class BitWriter
{
public:
    void put(std::uint32_t value, int count)
    {
        for (int i = 0; i < count; ++i)
            putBit((value >> i & 1U) != 0);
    }

    /// Codes stand with their highest bit first.
    void putCode(std::uint32_t code, int count)
    {
        for (int i = count - 1; i >= 0; --i)
            putBit((code >> i & 1U) != 0);
    }

    [[nodiscard]] const std::string & bytes() const
    {
        return m_bytes;
    }

private:
    void putBit(bool bit)
    {
        if (m_used == 0)
            m_bytes += '\0';
        if (bit)
            m_bytes.back() = static_cast<char>(static_cast<unsigned char>(m_bytes.back()) | 1U << m_used);
        m_used = (m_used + 1) % 8;
    }

    std::string m_bytes;
    int m_used = 0;
};

void putLiteral(BitWriter & bits, unsigned char literal)
{
    if (literal < 144)
        bits.putCode(0x30U + literal, 8);
    else
        bits.putCode(0x190U + (literal - 144U), 9);
}

/// Repeats the last byte: 3 to 10 times, or 258 times.
void putRepetition(BitWriter & bits, std::size_t count)
{
    if (count == 258)
        bits.putCode(0xC0U + (285 - 280), 8);
    else
        bits.putCode(static_cast<std::uint32_t>(257 + (count - 3) - 256), 7);
    bits.putCode(0, 5); // a distance of 1
}

std::string fieldsOf(const Item & item, const Lies & lies, const std::string & data)
{
    const auto usualMethod = static_cast<std::uint16_t>(item.isDeflated ? 8 : 0);
    return number(lies.flags.value_or(item.flags), 2) + number(lies.method.value_or(usualMethod), 2) +
           number(lies.date.value_or(item.date), 4) + number(lies.crc.value_or(crcOf(item.content)), 4) +
           number(lies.compressedSize.value_or(static_cast<std::uint32_t>(data.size())), 4) +
           number(lies.uncompressedSize.value_or(static_cast<std::uint32_t>(item.content.size())), 4) +
           number(lies.nameLength.value_or(static_cast<std::uint16_t>(item.name.size())), 2);
}

std::string localHeader(const Item & item, const std::string & data)
{
    const auto extraLength = static_cast<std::uint16_t>(item.localExtra.size());
    return number(item.local.signature.value_or(0x04034B50), 4) + number(20, 2) +
           fieldsOf(item, item.local, data) + number(item.local.extraLength.value_or(extraLength), 2) +
           item.name + item.localExtra;
}

std::string centralRecord(const Item & item, const std::string & data, std::size_t offset)
{
    const auto extraLength = static_cast<std::uint16_t>(item.centralExtra.size());
    const auto commentLength = static_cast<std::uint16_t>(item.comment.size());
    return number(item.central.signature.value_or(0x02014B50), 4) + number(0x0314, 2) + number(20, 2) +
           fieldsOf(item, item.central, data) + number(item.central.extraLength.value_or(extraLength), 2) +
           number(item.central.commentLength.value_or(commentLength), 2) + number(0, 2) + number(0, 2) +
           number(item.attributes, 4) +
           number(item.central.headerOffset.value_or(static_cast<std::uint32_t>(offset)), 4) + item.name +
           item.centralExtra + item.comment;
}

std::string dataOf(const Item & item)
{
    if (item.data)
        return *item.data;
    return item.isDeflated ? deflated(item.content) : item.content;
}

} // namespace

std::uint32_t crcOf(const std::string & bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes)
    {
        crc ^= static_cast<unsigned char>(byte);
        for (int i = 0; i < 8; ++i)
            crc = (crc & 1U) != 0 ? crc >> 1 ^ 0xEDB88320U : crc >> 1;
    }
    return crc ^ 0xFFFFFFFFU;
}

std::string deflated(const std::string & bytes)
{
    BitWriter bits;
    bits.put(1, 1); // the last block
    bits.put(1, 2); // with the fixed codes
    std::size_t at = 0;
    while (at < bytes.size())
    {
        putLiteral(bits, static_cast<unsigned char>(bytes[at]));
        const std::size_t same = bytes.find_first_not_of(bytes[at], at);
        std::size_t rest = (same == std::string::npos ? bytes.size() : same) - at - 1;
        ++at;
        while (rest >= 3)
        {
            const std::size_t count = rest >= 258 ? 258 : std::min<std::size_t>(rest, 10);
            putRepetition(bits, count);
            at += count;
            rest -= count;
        }
    }
    bits.putCode(0, 7); // the end of the block
    return bits.bytes();
}

std::string deflatedStored(const std::string & bytes)
{
    constexpr std::size_t largest = 65535;
    std::string stream;
    std::size_t at = 0;
    do
    {
        const std::size_t size = std::min(largest, bytes.size() - at);
        const bool isLast = at + size == bytes.size();
        stream += isLast ? '\1' : '\0';
        stream += number(size, 2) + number(~size & 0xFFFFU, 2) + bytes.substr(at, size);
        at += size;
    } while (at < bytes.size());
    return stream;
}

std::string number(std::uint64_t value, int bytes)
{
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> (8 * i) & 0xFFU);
    return text;
}

std::uint32_t dosDate(int year, int month, int day, int hour, int minute, int second)
{
    return static_cast<std::uint32_t>((year - 1980) << 9 | month << 5 | day) << 16 |
           static_cast<std::uint32_t>(hour << 11 | minute << 5 | second / 2);
}

std::string Archive::build(Places * places) const
{
    Places found;
    std::string bytes = before;
    for (const Item & item : items)
    {
        const std::string data = dataOf(item);
        found.headers.push_back(bytes.size());
        bytes += localHeader(item, data);
        found.data.push_back(bytes.size());
        bytes += data + item.behindData;
    }
    bytes += beforeDirectory;
    const std::size_t begin = bytes.size();
    for (std::size_t i = 0; i < items.size(); ++i)
    {
        found.records.push_back(bytes.size());
        bytes += centralRecord(items[i], dataOf(items[i]), found.headers[i] - before.size());
    }
    const auto size = static_cast<std::uint32_t>(bytes.size() - begin);
    bytes += behindDirectory;
    found.end = bytes.size();
    const auto itemCount = static_cast<std::uint16_t>(items.size());
    bytes += number(signature.value_or(0x06054B50), 4) + number(thisDisk.value_or(0), 2) +
             number(directoryDisk.value_or(0), 2) + number(countOnThisDisk.value_or(itemCount), 2) +
             number(count.value_or(itemCount), 2) + number(directorySize.value_or(size), 4) +
             number(directoryOffset.value_or(static_cast<std::uint32_t>(begin - before.size())), 4) +
             number(commentLength.value_or(static_cast<std::uint16_t>(comment.size())), 2) + comment;
    if (places != nullptr)
        *places = found;
    return bytes;
}

Item stored(const std::string & name, const std::string & content)
{
    Item item;
    item.name = name;
    item.content = content;
    return item;
}

Item packed(const std::string & name, const std::string & content)
{
    Item item = stored(name, content);
    item.isDeflated = true;
    return item;
}

Item directory(const std::string & name)
{
    Item item = stored(name, "");
    item.attributes = 0x41C00010;
    return item;
}

std::string noise(std::size_t size)
{
    std::string bytes(size, '\0');
    std::uint32_t state = 2463534242U;
    for (char & byte : bytes)
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        byte = static_cast<char>(state >> 8);
    }
    return bytes;
}

std::string prose(std::size_t size)
{
    const std::string line = "All work and no play.........................................\n";
    std::string text;
    while (text.size() < size)
        text += line;
    text.resize(size);
    return text;
}

} // namespace ziptest
