#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileEnumerator.h"
#include "VontalBase/disk/directories.h"

#include "disk/disksupport.h"
#include "support/FailingAllocator.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace
{

using testsupport::TempDirectory;

/// Looks at how many blocks the process holds at each entry.
class Watch : public qvdisk::FileEnumerator
{
public:
    bool onEntry(qvdisk::File &) override
    {
        most = std::max(most, testsupport::liveAllocations() - atStart);
        ++count;
        return true;
    }

    std::int64_t atStart = testsupport::liveAllocations();
    std::int64_t most = 0;
    int count = 0;
};

std::int64_t blocksHeldAmong(int names)
{
    const TempDirectory directory;
    for (int i = 0; i < names; ++i)
        directory.write("a name with some length " + std::to_string(100'000 + i), "");
    Watch watch;
    EXPECT_TRUE(qvdisk::File(pathOf(directory)).getEntries(&watch));
    EXPECT_EQ(watch.count, names);
    EXPECT_TRUE(qvdisk::deleteDirContent(pathOf(directory)));
    return watch.most;
}

TEST(GetEntries, HoldsNoMoreForManyEntriesThanForFew)
{
    EXPECT_EQ(blocksHeldAmong(3000), blocksHeldAmong(3));
}

} // namespace
