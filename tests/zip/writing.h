/// @file
/// Writing archives in tests.
#pragma once

#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/zip/zipwriter.h"

#include "support/NativeHandles.h"
#include "support/TempDirectory.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace ziptesting
{

/// A path or name in 16-bit units. @param text UTF-8.
inline std::wstring wide(const std::string & text)
{
    return Vontal::pstring(Vontal::u8string(text));
}

/// Begins an archive in a file of this name.
inline HZIP createFile(const std::string & path)
{
    std::wstring name = wide(path);
    return CreateZipZ(name.data(), 0, ZipKindFile);
}

/// Begins an archive in memory of the writer's own.
inline HZIP createMemory(unsigned int size = 1U << 20U)
{
    return CreateZipZ(nullptr, size, ZipKindMemory);
}

inline HZIP createHandle(testsupport::NativeHandle handle)
{
    return CreateZipZ(handle, 0, ZipKindHandle);
}

inline Vontal::ulong32 addMemory(HZIP archive, const std::wstring & name, std::string content)
{
    return ZipAdd(
        archive, name.c_str(), content.data(), static_cast<unsigned int>(content.size()), ZipKindMemory);
}

inline Vontal::ulong32 addFile(HZIP archive, const std::wstring & name, const std::string & path)
{
    std::wstring file = wide(path);
    return ZipAdd(archive, name.c_str(), file.data(), 0, ZipKindFile);
}

inline Vontal::ulong32 addHandle(
    HZIP archive, const std::wstring & name, testsupport::NativeHandle handle, unsigned int size = 0)
{
    return ZipAdd(archive, name.c_str(), handle, size, ZipKindHandle);
}

inline Vontal::ulong32 addFolder(HZIP archive, const std::wstring & name)
{
    return ZipAdd(archive, name.c_str(), nullptr, 0, ZipKindFolder);
}

/// Ends an archive in memory, and gives its bytes.
inline std::string closeMemory(HZIP archive)
{
    void * block = nullptr;
    Vontal::ulong32 length = 0;
    EXPECT_EQ(ZipGetMemory(archive, &block, &length), 0U);
    std::string bytes;
    if (block != nullptr)
        bytes.assign(static_cast<const char *>(block), length);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    return bytes;
}

/// The text that stands for the writer's last result.
inline std::string lastMessage()
{
    char buffer[128] = {};
    FormatZipMessageZ(1, buffer, sizeof(buffer));
    return buffer;
}

/// The read end of a pipe through which bytes come from another thread.
class FilledPipe
{
public:
    explicit FilledPipe(std::string bytes)
        : m_filler(
              [this, held = std::move(bytes)]
              {
                  testsupport::writeToHandle(m_pipe.writeEnd.get(), held);
                  m_pipe.writeEnd.close();
              })
    {
    }
    FilledPipe(const FilledPipe &) = delete;
    FilledPipe & operator=(const FilledPipe &) = delete;
    ~FilledPipe()
    {
        testsupport::readToEnd(get());
        m_filler.join();
    }

    [[nodiscard]] testsupport::NativeHandle get() const
    {
        return m_pipe.readEnd.get();
    }

private:
    testsupport::HandlePipe m_pipe;
    std::thread m_filler;
};

/// The write end of a pipe whose bytes another thread collects.
class CollectingPipe
{
public:
    CollectingPipe() : m_collector([this] { m_bytes = testsupport::readToEnd(m_pipe.readEnd.get()); })
    {
    }
    CollectingPipe(const CollectingPipe &) = delete;
    CollectingPipe & operator=(const CollectingPipe &) = delete;
    ~CollectingPipe()
    {
        bytes();
    }

    [[nodiscard]] testsupport::NativeHandle get() const
    {
        return m_pipe.writeEnd.get();
    }

    /// All that has come; nothing can be written any more.
    const std::string & bytes()
    {
        m_pipe.writeEnd.close();
        if (m_collector.joinable())
            m_collector.join();
        return m_bytes;
    }

private:
    testsupport::HandlePipe m_pipe;
    std::string m_bytes;
    std::thread m_collector;
};

} // namespace ziptesting
