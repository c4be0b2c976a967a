#include "VontalBase/platform/protect.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/randombytes.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <new>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sys/mman.h>

namespace qvplatform
{

namespace
{

/// What must not leave the process.
struct Key
{
    std::array<unsigned char, 32> key;
    /// What the first block is mixed with.
    std::array<unsigned char, protectedBlock> start;
};

struct UnmapKey
{
    void operator()(Key * key) const noexcept
    {
        munmap(key, sizeof(Key));
    }
};

struct FreeLibrary
{
    void operator()(OSSL_LIB_CTX * library) const noexcept
    {
        OSSL_LIB_CTX_free(library);
    }
};

struct FreeCipher
{
    void operator()(EVP_CIPHER * cipher) const noexcept
    {
        EVP_CIPHER_free(cipher);
    }
};

struct FreeOperation
{
    void operator()(EVP_CIPHER_CTX * operation) const noexcept
    {
        EVP_CIPHER_CTX_free(operation);
    }
};

using KeyOwner = std::unique_ptr<Key, UnmapKey>;

/// Pages of its own, which stay out of core dumps and of the swap space where the kernel allows it.
KeyOwner makeKey() noexcept
{
    if (gateFails("make protection key"))
        return nullptr;
    void * const pages =
        mmap(nullptr, sizeof(Key), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        return nullptr;
    KeyOwner key(new (pages) Key);
    madvise(pages, sizeof(Key), MADV_DONTDUMP);
    mlock(pages, sizeof(Key));
    if (!fillRandom(key->key.data(), key->key.size()) || !fillRandom(key->start.data(), key->start.size()))
        return nullptr;
    mprotect(pages, sizeof(Key), PROT_READ);
    return key;
}

/// The process's key and the cipher, which has settings of its own so that it neither heeds nor changes those
/// that the application has made for itself.
struct Protection
{
    KeyOwner key;
    std::unique_ptr<OSSL_LIB_CTX, FreeLibrary> library;
    std::unique_ptr<EVP_CIPHER, FreeCipher> cipher;
};

/// Made on first use and never destroyed, since threads may use it while the process ends.
std::atomic<const Protection *> processProtection{nullptr};

const Protection * protection() noexcept
{
    if (const Protection * const known = processProtection.load(std::memory_order_acquire))
        return known;
    // For the same reason libcrypto must not clean up at the end of the process.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    std::unique_ptr<Protection> made(new (std::nothrow) Protection);
    if (made == nullptr)
        return nullptr;
    made->key = makeKey();
    made->library.reset(OSSL_LIB_CTX_new());
    made->cipher.reset(EVP_CIPHER_fetch(made->library.get(), "AES-256-CBC", nullptr));
    if (made->key == nullptr || made->library == nullptr || made->cipher == nullptr)
        return nullptr;
    const Protection * known = nullptr;
    if (processProtection.compare_exchange_strong(known, made.get(), std::memory_order_acq_rel))
        return made.release();
    return known;
}

enum class Direction
{
    Decrypt = 0,
    Encrypt = 1
};

bool convert(void * bytes, std::size_t size, Direction direction) noexcept
{
    const Protection * const with = protection();
    const std::unique_ptr<EVP_CIPHER_CTX, FreeOperation> operation(EVP_CIPHER_CTX_new());
    if (with == nullptr || operation == nullptr)
        return false;
    if (EVP_CipherInit_ex2(operation.get(), with->cipher.get(), with->key->key.data(),
            with->key->start.data(), static_cast<int>(direction), nullptr) != 1)
        return false;
    EVP_CIPHER_CTX_set_padding(operation.get(), 0);
    // libcrypto counts in int.
    constexpr std::size_t greatestPiece = std::size_t{1} << 30;
    unsigned char * next = static_cast<unsigned char *>(bytes);
    while (size != 0)
    {
        const int piece = static_cast<int>(std::min(size, greatestPiece));
        int done = 0;
        if (EVP_CipherUpdate(operation.get(), next, &done, next, piece) != 1 || done != piece)
            return false;
        next += piece;
        size -= static_cast<std::size_t>(piece);
    }
    return true;
}

} // namespace

bool protectMemory(void * bytes, std::size_t size) noexcept
{
    return !gateFails("protect memory") && size % protectedBlock == 0 &&
           convert(bytes, size, Direction::Encrypt);
}

bool unprotectMemory(void * bytes, std::size_t size) noexcept
{
    return !gateFails("unprotect memory") && size % protectedBlock == 0 &&
           convert(bytes, size, Direction::Decrypt);
}

} // namespace qvplatform
