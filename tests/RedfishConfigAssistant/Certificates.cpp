#include "Certificates.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

namespace resttest
{

namespace
{

std::string PemOf(X509* leaf)
{
    BIO* const memory = BIO_new(BIO_s_mem());
    PEM_write_bio_X509(memory, leaf);
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    std::string pem(data, static_cast<std::size_t>(size));
    BIO_free(memory);
    return pem;
}

std::string FingerprintOf(X509* leaf)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    X509_digest(leaf, EVP_sha256(), digest, &size);
    std::string text;
    for (unsigned int i = 0; i < size; ++i)
    {
        text += "0123456789abcdef"[digest[i] >> 4U];
        text += "0123456789abcdef"[digest[i] & 15U];
    }
    return text;
}

} // namespace

Certificate MakeCertificate(const std::string& names, int validDays, const std::string& subject)
{
    Certificate made;
    made.Key.reset(EVP_EC_gen("P-256"), &EVP_PKEY_free);
    made.Leaf.reset(X509_new(), &X509_free);
    X509* const leaf = made.Leaf.get();
    constexpr long day = 24L * 60L * 60L;
    X509_set_version(leaf, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(leaf), 1);
    X509_gmtime_adj(X509_getm_notBefore(leaf), -2 * day + (validDays < 0 ? validDays * day : 0));
    X509_gmtime_adj(X509_getm_notAfter(leaf), validDays * day);
    X509_NAME* const name = X509_get_subject_name(leaf);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(subject.c_str()), -1,
                               -1, 0);
    X509_set_issuer_name(leaf, name);
    X509_set_pubkey(leaf, made.Key.get());
    X509_EXTENSION* const extension = X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, names.c_str());
    X509_add_ext(leaf, extension, -1);
    X509_EXTENSION_free(extension);
    X509_sign(leaf, made.Key.get(), EVP_sha256());
    made.Pem = PemOf(leaf);
    made.Fingerprint = FingerprintOf(leaf);
    return made;
}

} // namespace resttest
