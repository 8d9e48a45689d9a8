#pragma once

#include <memory>
#include <string>

#include <openssl/evp.h>
#include <openssl/x509.h>

namespace resttest
{

/// A self-signed certificate made for one test run.
struct Certificate
{
    std::shared_ptr<X509> Leaf;
    std::shared_ptr<EVP_PKEY> Key;
    std::string Pem;
    /// SHA-256 of the DER form, 64 small hexadecimal digits.
    std::string Fingerprint;
};

/// @param names      subjectAltName as OpenSSL writes it, "DNS:localhost,IP:127.0.0.1".
/// @param validDays  may be negative: then it has expired.
/// @param subject    the common name; a store of trusted certificates looks them up by it.
Certificate MakeCertificate(const std::string& names = "DNS:localhost,IP:127.0.0.1", int validDays = 1,
                            const std::string& subject = "test bmc");

} // namespace resttest
