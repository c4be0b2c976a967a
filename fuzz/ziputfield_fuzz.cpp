/// Any bytes as the extra field of an item: the search for its times, held against the plain one.

#include "VontalBase/zip/ziputfield.h"

#include "require.h"
#include "zip/utfield_oracle.h"

#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::vector<unsigned char> extra(data, data + size);
    fuzzing::require(
        ziptest::describe(zip::findUtTimes(extra)) == ziptest::describe(ziptest::utTimesPlainly(extra)),
        "the times are not the same");
    return 0;
}
