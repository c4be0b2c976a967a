#include "VontalBase/core/vectorinbuf.h"

namespace qvbase
{

vectorinbuf::vectorinbuf(std::vector<char> & data)
{
    setg(data.data(), data.data(), data.data() + data.size());
}

// NOLINTNEXTLINE(performance-noexcept-move-constructor): swapping locales may fail.
vectorinbuf & vectorinbuf::operator=(vectorinbuf && other)
{
    swap(other);
    return *this;
}

vectorinbuf::~vectorinbuf() = default;

} // namespace qvbase
