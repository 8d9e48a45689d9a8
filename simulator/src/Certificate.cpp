#include "Certificate.h"

#include "Digest.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace bmcsim
{
namespace
{

using CertificateOwner = std::unique_ptr<X509, decltype(&X509_free)>;
using KeyOwner = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using BioOwner = std::unique_ptr<BIO, decltype(&BIO_free)>;

constexpr long TenYears = 3650L * 24 * 60 * 60;
constexpr long OneDay = 24L * 60 * 60;

std::string LibraryMessage()
{
    const unsigned long code = ERR_get_error();
    const char* reason = ERR_reason_error_string(code);
    ERR_clear_error();
    return reason != nullptr ? reason : "unknown reason";
}

std::shared_ptr<SSL_CTX> NewContext()
{
    std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    if (context)
    {
        SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
        SSL_CTX_set_mode(context.get(), SSL_MODE_AUTO_RETRY);
    }
    return context;
}

/// Fills in what is read off the certificate in use.
void Describe(TlsIdentity& identity)
{
    X509* certificate = SSL_CTX_get0_certificate(identity.Context.get());
    unsigned char* der = nullptr;
    const int length = i2d_X509(certificate, &der);
    if (length > 0)
    {
        identity.Fingerprint = Sha256Hex({reinterpret_cast<const char*>(der), static_cast<std::size_t>(length)});
    }
    OPENSSL_free(der);
    const BioOwner text(BIO_new(BIO_s_mem()), BIO_free);
    char* data = nullptr;
    if (PEM_write_bio_X509(text.get(), certificate) == 1)
    {
        const long size = BIO_get_mem_data(text.get(), &data);
        identity.CertificatePem.assign(data, static_cast<std::size_t>(size));
    }
}

bool AddExtension(X509* certificate, int nid, const std::string& value)
{
    X509V3_CTX context{};
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
        X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()), X509_EXTENSION_free);
    return extension && X509_add_ext(certificate, extension.get(), -1) == 1;
}

std::string AlternativeNames(const std::string& address)
{
    std::string names = "IP:127.0.0.1,IP:::1,DNS:localhost";
    in6_addr scratch{};
    const bool isIp =
        inet_pton(AF_INET, address.c_str(), &scratch) == 1 || inet_pton(AF_INET6, address.c_str(), &scratch) == 1;
    if (address == "127.0.0.1" || address == "::1" || address == "localhost")
    {
        return names;
    }
    if (isIp)
    {
        names += ",IP:" + address;
    }
    else if (address.find_first_of(",:;= ") == std::string::npos && !address.empty())
    {
        names += ",DNS:" + address;
    }
    return names;
}

bool SetRandomSerial(X509* certificate)
{
    unsigned char bytes[16];
    if (RAND_bytes(bytes, sizeof(bytes)) != 1)
    {
        return false;
    }
    bytes[0] &= 0x7F;
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> number(BN_bin2bn(bytes, sizeof(bytes), nullptr), BN_free);
    return number && BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate)) != nullptr;
}

bool Sign(X509* certificate, EVP_PKEY* key, const std::string& address)
{
    X509_NAME* name = X509_get_subject_name(certificate);
    const auto* common = reinterpret_cast<const unsigned char*>("Simulated BMC");
    return X509_set_version(certificate, 2) == 1 && SetRandomSerial(certificate) &&
           // A clock that is a little behind must not refuse the certificate.
           X509_gmtime_adj(X509_getm_notBefore(certificate), -OneDay) != nullptr &&
           X509_gmtime_adj(X509_getm_notAfter(certificate), TenYears) != nullptr &&
           X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, common, -1, -1, 0) == 1 &&
           X509_set_issuer_name(certificate, name) == 1 && X509_set_pubkey(certificate, key) == 1 &&
           AddExtension(certificate, NID_basic_constraints, "critical,CA:TRUE") &&
           AddExtension(certificate, NID_key_usage, "critical,digitalSignature,keyCertSign") &&
           AddExtension(certificate, NID_ext_key_usage, "serverAuth") &&
           AddExtension(certificate, NID_subject_key_identifier, "hash") &&
           AddExtension(certificate, NID_authority_key_identifier, "keyid") &&
           AddExtension(certificate, NID_subject_alt_name, AlternativeNames(address)) &&
           X509_sign(certificate, key, EVP_sha256()) > 0;
}

} // namespace

TlsIdentity MakeSelfSigned(const std::string& address, std::string& error)
{
    const KeyOwner key(EVP_EC_gen("P-256"), EVP_PKEY_free);
    const CertificateOwner certificate(X509_new(), X509_free);
    TlsIdentity identity;
    identity.Context = NewContext();
    if (!key || !certificate || !identity.Context || !Sign(certificate.get(), key.get(), address) ||
        SSL_CTX_use_certificate(identity.Context.get(), certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(identity.Context.get(), key.get()) != 1)
    {
        error = "cannot make a certificate: " + LibraryMessage();
        return {};
    }
    Describe(identity);
    return identity;
}

TlsIdentity LoadIdentity(const std::string& certificateFile, const std::string& keyFile, std::string& error)
{
    TlsIdentity identity;
    identity.Context = NewContext();
    if (!identity.Context)
    {
        error = "cannot set up TLS: " + LibraryMessage();
        return {};
    }
    if (SSL_CTX_use_certificate_chain_file(identity.Context.get(), certificateFile.c_str()) != 1)
    {
        error = fmt::format("cannot use certificate file '{}': {}", certificateFile, LibraryMessage());
        return {};
    }
    if (SSL_CTX_use_PrivateKey_file(identity.Context.get(), keyFile.c_str(), SSL_FILETYPE_PEM) != 1)
    {
        error = fmt::format("cannot use key file '{}': {}", keyFile, LibraryMessage());
        return {};
    }
    Describe(identity);
    return identity;
}

} // namespace bmcsim
