/// @file
/// Text that stays protected in memory.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

#include <string>

namespace qvbase
{

/// A text that is held protected and comes out in clear only as long as a `Secret::Clear` lives.
///
/// The protected bytes have meaning only within the process that made them. They are not to be stored or
/// sent. They tell the length of the text, to the next multiple of 16, and whether two secrets are equal.
///
/// A secret belongs to one thread at a time.
class VONTALBASE_API Secret
{
public:
    class Clear;
    class WipeGuard;

    /// An empty secret.
    Secret() = default;
    /// Copies the protected bytes.
    Secret(const Secret & other) = default;
    /// Copies the protected bytes. Assignment to itself does nothing. If `std::bad_alloc` leaves the call,
    /// the secret is empty.
    Secret & operator=(const Secret & other);
    /// Wipes the protected bytes.
    ~Secret();

    /// Protects @p value, zero bytes among it, in place of what the secret held. An empty value empties it.
    /// @return false, with the secret empty, where the system refuses. `std::bad_alloc` leaves it empty too.
    bool set(const Vontal::u8string & value);
    /// Wipes the protected bytes; the secret is empty then.
    void clear() noexcept;
    /// Whether there is nothing held.
    bool empty() const noexcept
    {
        return m_protected.empty();
    }
    /// The protected bytes, a multiple of 16 of them. They live as long as the secret and until it changes.
    const std::string & getProtectedData() const noexcept
    {
        return m_protected;
    }

private:
    std::string m_protected;
};

/// The text of a secret in clear, as long as the object lives.
class VONTALBASE_API Secret::Clear
{
public:
    /// Recovers the text of @p secret, which may go away or change then.
    ///
    /// Kept: any failure gives an empty text, so that a caller cannot tell it from an empty secret.
    /// `std::bad_alloc` may leave the call, with nothing left in clear.
    Clear(const Secret & secret);
    Clear(const Clear &) = delete;
    Clear & operator=(const Clear &) = delete;
    /// Wipes the text.
    ~Clear();

    /// The text, which lives as long as this object. A copy of it is the caller's to wipe.
    const Vontal::u8string & get() const noexcept
    {
        return m_text;
    }

private:
    Vontal::u8string m_text;
};

/// Wipes a string when it goes out of scope.
class VONTALBASE_API Secret::WipeGuard
{
public:
    /// Remembers @p target, which must outlive the guard.
    WipeGuard(std::string & target) noexcept : m_target(target)
    {
    }
    WipeGuard(const WipeGuard &) = delete;
    WipeGuard & operator=(const WipeGuard &) = delete;
    /// Wipes the target.
    ~WipeGuard();

private:
    std::string & m_target;
};

} // namespace qvbase
