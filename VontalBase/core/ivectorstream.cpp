#include "VontalBase/core/ivectorstream.h"

#include <utility>

namespace qvbase
{

// The buffer is made after the stream, which takes it, and its good state, here.
ivectorstream::ivectorstream(std::vector<char> & data) : std::basic_istream<char>(nullptr), m_buffer(data)
{
    rdbuf(&m_buffer);
}

// NOLINTNEXTLINE(performance-noexcept-move-constructor): swapping locales may fail.
ivectorstream & ivectorstream::operator=(ivectorstream && other)
{
    std::basic_istream<char>::operator=(std::move(other));
    // NOLINTNEXTLINE(bugprone-use-after-move): the base has moved what is its own, and not the buffer.
    m_buffer = std::move(other.m_buffer);
    return *this;
}

ivectorstream::~ivectorstream() = default;

} // namespace qvbase
