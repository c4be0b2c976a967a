/// @file
/// What applications that call COM objects need: the rich error of a failed call, and what variants hold.
///
/// `VontalBase/platform/com.h` declares COM on every system. Nothing here throws but by `std::bad_alloc`.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/platform/com.h"
#include "VontalBase/text/integers.h"

#include <string>

class VontalException;

namespace Vontal
{
class U8StringBuilder;
class u8string;
} // namespace Vontal

namespace qvbase
{

/// Adds the rich error of a failed call to a failure record, as one entry. To be called on the thread of the
/// failed call, right after it: the thread's error is taken, and a second call finds nothing.
/// @param object the object that was called; not null, and not kept.
/// @param iid the interface that was called; not null, and not kept.
/// @param failure receives the entry, which says so where the error or its description cannot be had. It
///     stays as it was where the object supports no rich errors for that interface.
VONTALBASE_API void processComException(IUnknown * object, const GUID * iid, VontalException & failure);

/// Appends what a failed call tells: the result code with the system's text for it, and the rich error, as
/// above.
/// @param object the object that was called; not null, and not kept.
/// @param iid the interface that was called; not null, and not kept.
/// @param hr the result code; one that is not negative is not written.
/// @param out what is appended to. If it is not empty, a line end comes first, also where nothing follows.
VONTALBASE_API void processComException(
    IUnknown * object, const GUID * iid, Vontal::long32 hr, Vontal::U8StringBuilder & out);

/// Reads a text from a variant, also from one that is referred to, through any number of variants.
///
/// A null text is outside the contract, and so are a null reference and variants that refer to each other in
/// a ring.
/// @param value the variant, which stays as it is.
/// @param out receives the code units up to the first NUL; stays as it is on failure.
/// @return false if the variant holds no text.
VONTALBASE_API bool var2string(const VARIANT & value, std::wstring & out);
/// The same as UTF-8.
/// @param value the variant, which stays as it is.
/// @param out receives the text up to the first NUL; stays as it is on failure.
/// @return as above.
VONTALBASE_API bool var2string(const VARIANT & value, Vontal::u8string & out);

/// Reads a number from a variant: of 8, 16 or 32 bits, or a text, of which blanks of ASCII, then a sign and
/// then digits of ASCII count, in every locale.
///
/// Kept: of all references one to a variant alone is followed, through any number of variants; one to a
/// number or to a text gives 0. A null reference and a ring of variants are outside the contract.
/// @param value the variant, which stays as it is. Its text may be null, which gives 0.
/// @return the number, or the nearest one that fits; 0 where there is none.
VONTALBASE_API int var2int(const VARIANT & value);

/// Takes an object from a variant, also from one that is referred to, through any number of variants. A null
/// reference to a variant and a ring of variants are outside the contract.
/// @param value the variant, which stays as it is.
/// @param out receives the object with a reference that the caller owns; stays as it is on failure. Not null.
/// @return false if the variant holds no object, or null, or refers to null where it refers to an object.
VONTALBASE_API bool var2dispatch(const VARIANT & value, IDispatch ** out);

/// Owns what a call fills into a `STATSTG`: its name.
///
/// Kept: copies are bitwise, the pointer to the name included, so that only one of them may be destroyed.
class VONTALBASE_API StatSg
{
public:
    /// All zero.
    StatSg() noexcept;
    /// Copies bitwise.
    StatSg(const StatSg & other) noexcept;
    /// Copies bitwise. The name that this object had is not freed.
    StatSg & operator=(const StatSg & other) noexcept;
    /// Frees the name.
    virtual ~StatSg();

    /// Where a call puts the structure. A call does not free the name that is there already, so that the
    /// structure is filled once.
    /// @return an address that lives as long as the object; never null.
    operator STATSTG *() noexcept;
    /// What kind of element the structure tells of; 0 before a call has filled it.
    // NOLINTNEXTLINE(readability-identifier-naming)
    tagSTGTY GetType() const noexcept;

private:
    STATSTG m_status;
};

} // namespace qvbase
