#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include <curl/curl.h>

struct x509_store_ctx_st;

namespace Tavrine
{

using Sha256Digest = std::array<unsigned char, 32>;

/// 64 hexadecimal digits of either case; nothing for any other text.
std::optional<Sha256Digest> ParseSha256(std::string_view hex);
/// 64 small hexadecimal digits.
std::string Sha256Text(const Sha256Digest& digest);
Sha256Digest Sha256Of(std::string_view bytes);

/// Which certificates a client takes.
struct TlsRules
{
    /// False: any certificate.
    bool Verify = true;
    /// PEM file that stands in for the system's store; empty for that store.
    std::string CaFile;
    /// SHA-256 of the one certificate that is taken. Goes before everything else.
    std::optional<Sha256Digest> Pin;
};

/// Why certificates cannot be checked with a curl that speaks TLS by this library, as
/// curl_version_info_data::ssl_version names it (null for none); empty when they can.
std::string TlsLibraryFault(const char* name);

/// Applies the rules to a curl handle and remembers what the server showed in the
/// last handshake. Must outlive the handle's transfers and stay where it is.
class TlsCheck
{
  public:
    explicit TlsCheck(TlsRules rules);
    TlsCheck(const TlsCheck&) = delete;
    TlsCheck& operator=(const TlsCheck&) = delete;

    /// @throws std::bad_alloc, UnusableCurl where the rules cannot be applied
    void Apply(CURL* handle);
    const TlsRules& Rules() const { return m_Rules; }

    /// The certificate last shown, by its SHA-256; empty when none was seen.
    std::string ShownFingerprint() const;
    /// Why that certificate was refused, in OpenSSL's words; empty when it was not.
    std::string Refusal() const { return m_Refusal; }

  private:
    static CURLcode OnContext(CURL* handle, void* context, void* self);
    static int OnCertificate(x509_store_ctx_st* store, void* self);
    bool Judge(x509_store_ctx_st* store);

    TlsRules m_Rules;
    std::optional<Sha256Digest> m_Shown;
    /// One of OpenSSL's own texts: it is set where nothing may throw.
    const char* m_Refusal = "";
};

} // namespace Tavrine
