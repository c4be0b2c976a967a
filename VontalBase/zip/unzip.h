/// @file
/// Unpacking whole archives.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

#include <cstdint>
#include <functional>
#include <limits>

class VontalException;

namespace qvbase
{
class InterruptAskable;
}

namespace qvzip
{

/// Unpacks all items of an archive into a directory, whose missing parts are made. Any thread may call it.
///
/// For archives that one has made oneself. Kept: item names are taken as they are, so that one with `..` in
/// it or with an absolute form leaves the directory, and a wrong checksum is no failure. `unzipChecked` is
/// the form for archives from others.
///
/// Files that exist are replaced. Files get the times of their items, but not the attributes. Kept: of an
/// item that is a directory only the last level is made, since `/` does not separate there; a directory that
/// is none by its attributes cannot be created as the file that it is then taken for.
///
/// @param zipPath the archive's file. One without any item is refused unless other bytes stand in front of
/// it.
/// @param targetDir the directory, with or without a `\` at its end; a `/` there is refused. An empty one
///     means the root.
/// @param error receives one entry where it fails, which tells the step.
/// @return false at the first failure, want of memory among them. What was unpacked before it stays, and so
///     does what there is of the item concerned.
VONTALBASE_API bool unzip(
    const Vontal::u8string & zipPath, const Vontal::u8string & targetDir, VontalException & error);

/// What `unzipChecked` lets pass, and what it does beside unpacking.
struct UnzipOptions
{
    /// How many items an archive may have. The format itself allows 65,535.
    unsigned int maxItems = 65535;
    /// How many bytes all items may give together.
    std::uint64_t maxTotalBytes = std::uint64_t{16} << 30;
    /// How many bytes one item may give.
    std::uint64_t maxItemBytes = std::numeric_limits<std::uint32_t>::max();
    /// How many directories an item may lie in.
    unsigned int maxDepth = 255;
    /// Whether files get the times of their items.
    bool applyTimes = true;
};

/// Told of the progress: how many bytes have been written, and how many there will be in all.
using UnzipProgress = std::function<void(std::uint64_t written, std::uint64_t total)>;

/// Unpacks all items of an archive from a stranger into a directory, whose missing parts are made. Any thread
/// may call it, as long as nobody else changes what is below the target meanwhile.
///
/// Before anything is written, the whole directory of the archive is looked through. It is refused for:
/// - more items, bytes or levels than the options allow;
/// - names that are empty, that hold a NUL, that are absolute, begin with a drive letter, or leave the
///   target; `/` and `\` both separate in names, and a component `.` or `..` counts as the way it goes. On
///   Windows a colon anywhere is refused too, for what stands behind it is no name there;
/// - components that are Windows device names such as `NUL` or `com1.txt`, or that end in a dot or a blank,
///   on every system;
/// - items whose data overlap each other or the archive's directory, or lie outside the archive;
/// - items that are encrypted or packed in another way than stored or deflated, and those whose header in
///   front of the data tells another name, method or size than the directory does.
///
/// Before anything of an item is written, all of it is unpacked once. It is refused for data that are not as
/// long as told, for a wrong checksum, for a symbolic link at the place of its file or of a directory above
/// it, below the target, and for anything at the place of its file that is no file or that somebody has open.
/// A file comes to its place when it is complete; one that stands there stays as it is until then.
///
/// A symbolic link in the archive becomes a plain file. Files get usual attributes. Names are UTF-8; what is
/// not well-formed in them becomes U+FFFD. A name that the disk does not take ends the unpacking where it
/// comes.
///
/// @param zipPath the archive's file. One without any item gives true where other bytes stand in front of it.
/// @param targetDir the directory, with or without separators at its end; an empty one is the working
///     directory. It may itself be reached through links.
/// @param error receives one entry where it fails, which names the step and the item.
/// @param options what passes.
/// @param interrupt asked between pieces of 64 KiB or less, while items are checked and while they are
///     written; null for nobody. The caller keeps it.
/// @param progress told on the calling thread, after each piece that is written, with counts in bytes. What
///     it throws leaves the call.
/// @return false at the first failure or interruption. What was unpacked before it stays; of the item
///     concerned nothing does but directories, and a file that it was to replace is still there.
///     `std::bad_alloc` may leave the call, which then leaves behind the same.
VONTALBASE_API bool unzipChecked(const Vontal::u8string & zipPath, const Vontal::u8string & targetDir,
    VontalException & error, const UnzipOptions & options = {},
    qvbase::InterruptAskable * interrupt = nullptr, const UnzipProgress & progress = {});

} // namespace qvzip
