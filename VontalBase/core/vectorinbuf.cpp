#include "VontalBase/core/vectorinbuf.h"

namespace qvbase
{

vectorinbuf::vectorinbuf(std::vector<char> & data)
{
    setg(data.data(), data.data(), data.data() + data.size());
}

vectorinbuf & vectorinbuf::operator=(vectorinbuf && other)
{
    swap(other);
    return *this;
}

vectorinbuf::~vectorinbuf() = default;

} // namespace qvbase
