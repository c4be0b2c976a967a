/// @file
/// How the systems' paths and files differ, told in one place so that no test asks which system it runs on.
#pragma once

#include <string>

namespace testsupport
{

/// Whether the system has drives and shares, and takes a backslash for a separator by itself.
bool hasDrives();

/// Whether a program may make symbolic links here. Elsewhere tests of links are skipped.
bool canMakeLinks();

/// How many characters a path may have at least, where there is no limit to be known.
unsigned int possiblePathLength();

/// Whether the system's copying of a file is known to make the copy of a read-only file read-only.
bool copiesStayReadOnly();

/// A path that opens for writing but takes no byte; empty where the system has none.
std::string fullDevice();

/// What a line of a text file ends with.
std::string lineEnd();

/// The path of something that is neither a file nor a directory; empty where the system has none.
std::string deviceThatIsNoFile();

/// Makes a pipe with a name, whose opening for reading waits for a writer. False where files cannot be pipes.
bool makePipeFile(const std::string & path);

/// Makes a file in a directory (UTF-8, as the system writes it) whose name is these bytes. False where names
/// are not bytes.
bool makeFileOfBytes(const std::string & directory, const std::string & name);

/// Makes a symbolic link. @return whether it was made.
bool makeLink(const std::string & target, const std::string & link);

/// Whether nobody may write to the file or directory, by its own setting.
bool isReadOnly(const std::string & path);

/// Makes a file or directory read-only, or lets it be written to again.
void setReadOnly(const std::string & path, bool isReadOnly);

/// While the object lives, this is the system's directory for temporary files.
class TemporaryPlace
{
public:
    /// @param directory in UTF-8, as the system writes it.
    explicit TemporaryPlace(const std::string & directory);
    TemporaryPlace(const TemporaryPlace &) = delete;
    TemporaryPlace & operator=(const TemporaryPlace &) = delete;
    ~TemporaryPlace();

private:
    std::string m_before;
    bool m_wasSet;
};

/// While the object lives, an empty directory is a disk of its own with room for so many bytes, if the system
/// and the rights of the process allow it.
class SmallDisk
{
public:
    SmallDisk(const std::string & directory, unsigned int bytes);
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk & operator=(const SmallDisk &) = delete;
    ~SmallDisk();

    [[nodiscard]] bool isThere() const noexcept
    {
        return m_isThere;
    }

private:
    std::string m_directory;
    bool m_isThere;
};

/// Makes the process one without the rights of an administrator, for good. For children of tests.
/// @return false where that is not possible, so that nothing can be shown.
bool dropPrivileges();

/// Lets no file of the process grow beyond so many bytes, for good: a write is refused. For children of
/// tests.
/// @return false where the system knows no such limit.
bool limitFileSize(unsigned int bytes);

} // namespace testsupport
