/// @internal
/// @file
/// The classes of the XML service. Each function makes an object with one reference; null where memory is
/// short.
#pragma once

struct IUnknown;

namespace qvplatform
{

IUnknown * makeXmlDocument() noexcept;
IUnknown * makeXmlWriter() noexcept;
IUnknown * makeXmlReader() noexcept;

} // namespace qvplatform
