// A date in several forms, a digest of a stream, and a password that does not lie about in memory.

#include "VontalBase/VontalBase.h"

#include <array>
#include <iostream>
#include <string>

namespace
{

using qvbase::EarthTime;

bool digestOf(qvbase::InputStream & stream, std::string & digest)
{
    qvbase::Md5Sum sum;
    std::array<unsigned char, 4> buffer{};
    int count = 0;
    while ((count = stream.read(buffer.data(), static_cast<int>(buffer.size()))) > 0)
        sum.add(buffer.data(), static_cast<unsigned int>(count));
    if (count < 0)
        return false;
    sum.finish(digest);
    return true;
}

} // namespace

int main()
{
    EarthTime time;
    if (!time.parseDate("2024-12-31", 0) || !time.is_valid())
        return 1;
    time.setTime(23, 30, 0, 0);
    time.addHours(1);
    std::string date;
    std::string clock;
    time.printDate(date, 0, true, true);
    time.printTime(clock, 0);
    std::cout << date << ' ' << clock << '\n';

    using Bytes = qvbase::ReferencedImpl<qvbase::ByteArrayInputStream>;
    const qvbase::Reference<Bytes> stream = new Bytes;
    std::string digest;
    if (!stream->init("message digest", 14) || !digestOf(*stream, digest))
        return 1;
    std::cout << digest << '\n';

    qvbase::Secret password;
    if (!password.set("open sesame"))
        return 1;
    {
        const qvbase::Secret::Clear clear(password);
        std::cout << "in clear for this block: " << clear.get().size() << " bytes\n";
    }
    std::cout << "protected: " << password.getProtectedData().size() << " bytes\n";
    return 0;
}
