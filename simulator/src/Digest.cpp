#include "Digest.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <vector>

namespace bmcsim
{
namespace
{

std::string Hex(const unsigned char* data, std::size_t size)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * size);
    for (std::size_t i = 0; i < size; ++i)
    {
        text += digits[data[i] >> 4];
        text += digits[data[i] & 0xF];
    }
    return text;
}

} // namespace

std::string Sha256Hex(std::string_view data)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(data.data(), data.size(), digest, &length, EVP_sha256(), nullptr);
    return Hex(digest, length);
}

std::string RandomHex(std::size_t bytes)
{
    std::vector<unsigned char> data(bytes);
    return RAND_bytes(data.data(), static_cast<int>(bytes)) == 1 ? Hex(data.data(), bytes) : std::string();
}

std::optional<std::string> DecodeBase64(const std::string& text)
{
    constexpr std::size_t longest = 8192;
    if (text.empty() || text.size() % 4 != 0 || text.size() > longest)
    {
        return std::nullopt;
    }
    std::vector<unsigned char> data(text.size());
    const int length = EVP_DecodeBlock(data.data(), reinterpret_cast<const unsigned char*>(text.data()),
                                       static_cast<int>(text.size()));
    // EVP_DecodeBlock counts the padding as bytes of zero.
    const std::size_t padding = text.size() - 1 - text.find_last_not_of('=');
    if (length < 0 || padding > 2 || static_cast<std::size_t>(length) < padding)
    {
        return std::nullopt;
    }
    return std::string(reinterpret_cast<const char*>(data.data()), static_cast<std::size_t>(length) - padding);
}

bool SameSecret(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

} // namespace bmcsim
