#include "VontalBase/xml/Node.h"

namespace qvxml
{

Node::~Node() = default;

} // namespace qvxml
