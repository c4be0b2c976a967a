/// @file
/// The MD5 digest.
#pragma once

#include "VontalBase/export.h"

#include <string>

namespace qvbase
{

struct Md5Context;

/// Takes bytes piece by piece and gives the MD5 digest of all of them. MD5 finds accidental changes and keeps
/// no secret.
///
/// Kept: copies share one context, which each of them frees, so copies must not be used.
///
/// An object belongs to one thread at a time.
class VONTALBASE_API Md5Sum
{
public:
    /// Has taken nothing yet. `std::bad_alloc` may leave it.
    Md5Sum();
    /// Shares the context: not to be used.
    Md5Sum(const Md5Sum &) noexcept = default;
    /// Shares the context, and loses the former one: not to be used.
    Md5Sum & operator=(const Md5Sum &) noexcept = default;
    /// Gives the context back.
    virtual ~Md5Sum();

    /// Takes the bytes of a text, zero bytes among them.
    ///
    /// Kept: the length counts modulo 2 to the 32nd, so that of 4 GiB and one byte the first byte is taken.
    void add(const std::string & data) noexcept;
    /// Takes @p size bytes. @p data may be null if there are none.
    void add(unsigned char * data, unsigned int size) noexcept;
    /// Completes the digest and appends it to @p out as 32 hexadecimal digits in lower case.
    ///
    /// Kept: an object is good for one digest. What is added afterwards goes on behind the padding. If
    /// `std::bad_alloc` leaves the call, the padding has been added and @p out is as it was.
    void finish(std::string & out);

private:
    Md5Context * m_context;
};

} // namespace qvbase
