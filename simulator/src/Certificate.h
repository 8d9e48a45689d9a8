#pragma once

#include <memory>
#include <string>

using SSL_CTX = struct ssl_ctx_st;

namespace bmcsim
{

/// What a TLS server speaks with: TLS 1.2 or later.
struct TlsIdentity
{
    /// Empty on failure.
    std::shared_ptr<SSL_CTX> Context;
    /// SHA-256 of the certificate in DER, 64 small hexadecimal digits.
    std::string Fingerprint;
    std::string CertificatePem;
};

/// A new key (EC P-256) and a certificate signed by it for 127.0.0.1, ::1,
/// localhost and the address, which may be a name.
TlsIdentity MakeSelfSigned(const std::string& address, std::string& error);

/// @param certificateFile  PEM, the server's certificate first, then its chain.
/// @param keyFile  PEM, without a passphrase.
TlsIdentity LoadIdentity(const std::string& certificateFile, const std::string& keyFile, std::string& error);

} // namespace bmcsim
