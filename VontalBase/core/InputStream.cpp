#include "VontalBase/core/InputStream.h"

namespace qvbase
{

InputStream::~InputStream() = default;

} // namespace qvbase
