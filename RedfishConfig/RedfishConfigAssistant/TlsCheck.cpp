#include "TlsCheck.h"

#include <new>
#include <utility>

#include <unistd.h>

#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

#include "CurlOption.h"

namespace Tavrine
{

namespace
{

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
    {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<Sha256Digest> DigestOf(X509* certificate)
{
    Sha256Digest digest{};
    unsigned int size = 0;
    if (certificate == nullptr || X509_digest(certificate, EVP_sha256(), digest.data(), &size) != 1 ||
        size != digest.size())
    {
        return std::nullopt;
    }
    return digest;
}

/// On a machine without the system's file of authorities nothing is trusted, and the
/// certificate should be shown as such; curl would not even connect.
void AllowMissingStore(CURL* handle)
{
    const curl_version_info_data* const built = curl_version_info(CURLVERSION_NOW);
    if (built->age >= CURLVERSION_SEVENTH && built->cainfo != nullptr && access(built->cainfo, R_OK) != 0)
    {
        SetOption(handle, CURLOPT_CAINFO, nullptr);
    }
}

} // namespace

std::optional<Sha256Digest> ParseSha256(std::string_view hex)
{
    Sha256Digest digest{};
    if (hex.size() != 2 * digest.size())
    {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < digest.size(); ++i)
    {
        const int high = HexDigit(hex[2 * i]);
        const int low = HexDigit(hex[2 * i + 1]);
        if (high < 0 || low < 0)
        {
            return std::nullopt;
        }
        digest[i] = static_cast<unsigned char>(high * 16 + low);
    }
    return digest;
}

std::string Sha256Text(const Sha256Digest& digest)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : digest)
    {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

Sha256Digest Sha256Of(std::string_view bytes)
{
    Sha256Digest digest{};
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1)
    {
        throw std::bad_alloc(); // memory alone is missing then, and no two things may have one digest
    }
    return digest;
}

std::string TlsLibraryFault(const char* name)
{
    // Those in brackets are not in use. What curl hands over to the check is an object of its own library.
    const std::string used = name == nullptr ? "no library" : name;
    return used.starts_with("OpenSSL/") ? "" : "curl speaks TLS by " + used + ", certificates are checked by OpenSSL";
}

TlsCheck::TlsCheck(TlsRules rules) : m_Rules(std::move(rules)) {}

void TlsCheck::Apply(CURL* handle)
{
    static const std::string fault = TlsLibraryFault(curl_version_info(CURLVERSION_NOW)->ssl_version);
    if (!fault.empty())
    {
        throw UnusableCurl(fault);
    }
    const bool byChain = m_Rules.Verify && !m_Rules.Pin;
    SetOption(handle, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    SetOption(handle, CURLOPT_SSL_VERIFYPEER, byChain ? 1L : 0L);
    SetOption(handle, CURLOPT_SSL_VERIFYHOST, byChain ? 2L : 0L);
    if (byChain && m_Rules.CaFile.empty())
    {
        AllowMissingStore(handle);
    }
    if (byChain && !m_Rules.CaFile.empty())
    {
        SetOption(handle, CURLOPT_CAINFO, m_Rules.CaFile.c_str());
        // The built-in folder would go on being trusted beside the file.
        SetOption(handle, CURLOPT_CAPATH, nullptr);
    }
    SetOption(handle, CURLOPT_SSL_CTX_FUNCTION, &TlsCheck::OnContext);
    SetOption(handle, CURLOPT_SSL_CTX_DATA, this);
}

std::string TlsCheck::ShownFingerprint() const { return m_Shown ? Sha256Text(*m_Shown) : std::string(); }

CURLcode TlsCheck::OnContext(CURL* /*handle*/, void* context, void* self)
{
    auto* const check = static_cast<TlsCheck*>(self);
    auto* const tls = static_cast<SSL_CTX*>(context);
    if (check->m_Rules.Pin)
    {
        // curl is told not to verify; without this its verdict would not be asked.
        SSL_CTX_set_verify(tls, SSL_VERIFY_PEER, nullptr);
    }
    SSL_CTX_set_cert_verify_callback(tls, &TlsCheck::OnCertificate, self);
    return CURLE_OK;
}

int TlsCheck::OnCertificate(X509_STORE_CTX* store, void* self)
{
    return static_cast<TlsCheck*>(self)->Judge(store) ? 1 : 0;
}

bool TlsCheck::Judge(X509_STORE_CTX* store)
{
    m_Shown = DigestOf(X509_STORE_CTX_get0_cert(store));
    m_Refusal = "";
    bool taken = false;
    if (m_Rules.Pin)
    {
        taken = m_Shown == m_Rules.Pin;
        X509_STORE_CTX_set_error(store, taken ? X509_V_OK : X509_V_ERR_CERT_REJECTED);
    }
    else if (!m_Rules.Verify)
    {
        taken = true;
        X509_STORE_CTX_set_error(store, X509_V_OK);
    }
    else
    {
        taken = X509_verify_cert(store) == 1;
    }
    if (!taken)
    {
        m_Refusal = X509_verify_cert_error_string(X509_STORE_CTX_get_error(store));
    }
    return taken;
}

} // namespace Tavrine
