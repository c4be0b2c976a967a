#include "VontalBase/concurrency/LongRunCommandListener.h"

namespace qvbase
{

void LongRunCommandListener::setProgress(LongRunCommand *, unsigned int, unsigned int)
{
}

void LongRunCommandListener::setText(LongRunCommand *, const Vontal::u8string &)
{
}

} // namespace qvbase
