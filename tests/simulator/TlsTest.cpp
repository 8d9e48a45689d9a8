#include "Fixture.h"

#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

namespace
{

using namespace bmctest;
using testing::HasSubstr;

using CertificateOwner = std::unique_ptr<X509, decltype(&X509_free)>;

CertificateOwner ReadPem(const std::string& text)
{
    const std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())),
                                                        BIO_free);
    return {PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr), X509_free};
}

std::string FingerprintOf(const X509* certificate)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    X509_digest(certificate, EVP_sha256(), digest, &length);
    std::string text;
    for (unsigned int i = 0; i < length; ++i)
    {
        char pair[3];
        std::snprintf(pair, sizeof(pair), "%02x", digest[i]);
        text += pair;
    }
    return text;
}

/// A certificate and key that another run of the simulator would not have made.
struct PemFiles
{
    testdata::TemporaryFolder Folder;
    std::string Certificate;
    std::string Key;
    std::string Fingerprint;

    PemFiles()
    {
        const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_EC_gen("P-256"), EVP_PKEY_free);
        const CertificateOwner certificate(X509_new(), X509_free);
        X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -60);
        X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
        X509_set_pubkey(certificate.get(), key.get());
        X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_ASC,
                                   reinterpret_cast<const unsigned char*>("given"), -1, -1, 0);
        X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
        X509_sign(certificate.get(), key.get(), EVP_sha256());
        const std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), BIO_free);
        PEM_write_bio_X509(bio.get(), certificate.get());
        Certificate = Folder.Write("cert.pem", Drain(bio.get()));
        PEM_write_bio_PrivateKey(bio.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
        Key = Folder.Write("key.pem", Drain(bio.get()));
        Fingerprint = FingerprintOf(certificate.get());
    }

    static std::string Drain(BIO* bio)
    {
        std::string text(static_cast<std::size_t>(BIO_pending(bio)), '\0');
        BIO_read(bio, text.data(), static_cast<int>(text.size()));
        return text;
    }
};

TEST(Tls, ServesHttpsByDefault)
{
    const auto simulator = Start({});
    ASSERT_TRUE(simulator);
    EXPECT_THAT(simulator->Url(), testing::StartsWith("https://127.0.0.1:"));
    httplib::SSLClient client("127.0.0.1", simulator->Port());
    client.enable_server_certificate_verification(false);
    client.set_basic_auth("admin", "password");
    client.set_keep_alive(true);
    for (int i = 0; i < 20; ++i)
    {
        const auto answer = client.Get("/redfish/v1/Systems/1/Bios");
        ASSERT_TRUE(answer) << httplib::to_string(answer.error());
        EXPECT_EQ(answer->status, 200);
    }
    EXPECT_EQ(simulator->AccessLog().back().Connection, 1U);
    EXPECT_EQ(client.Get("/redfish/v1/Systems/2")->status, 404);
    client.set_basic_auth("admin", "wrong");
    EXPECT_EQ(client.Get("/redfish/v1/Systems")->status, 401);
}

TEST(Tls, MadeCertificateIsVerifiedForEachOfItsNames)
{
    const auto simulator = Start({});
    ASSERT_TRUE(simulator);
    const testdata::TemporaryFolder folder;
    const std::string authority = folder.Write("ca.pem", simulator->CertificatePem());
    const auto certificate = ReadPem(simulator->CertificatePem());
    ASSERT_TRUE(certificate);
    for (const char* name : {"127.0.0.1", "localhost"})
    {
        httplib::SSLClient client(name, simulator->Port());
        client.set_address_family(AF_INET);
        client.set_ca_cert_path(authority.c_str());
        client.enable_server_certificate_verification(true);
        const auto answer = client.Get("/redfish/v1/");
        ASSERT_TRUE(answer) << name << ": " << httplib::to_string(answer.error());
        EXPECT_EQ(answer->status, 200) << name;
    }
    EXPECT_EQ(X509_check_ip_asc(certificate.get(), "::1", 0), 1);
    EXPECT_EQ(X509_check_ip_asc(certificate.get(), "127.0.0.2", 0), 0);
    EXPECT_EQ(X509_check_host(certificate.get(), "example.org", 0, 0, nullptr), 0);
}

TEST(Tls, MadeCertificateNamesTheAddressListenedOnAsWell)
{
    bmcsim::SimulatorOptions options;
    options.BindAddress = "127.0.0.2";
    const auto simulator = Start(options);
    ASSERT_TRUE(simulator);
    const auto certificate = ReadPem(simulator->CertificatePem());
    ASSERT_TRUE(certificate);
    for (const char* address : {"127.0.0.1", "127.0.0.2", "::1"})
    {
        EXPECT_EQ(X509_check_ip_asc(certificate.get(), address, 0), 1) << address;
    }
    EXPECT_EQ(X509_check_host(certificate.get(), "localhost", 0, 0, nullptr), 1);
}

TEST(Tls, UntrustedCertificateIsNotTaken)
{
    const auto simulator = Start({});
    const auto other = Start({});
    ASSERT_TRUE(simulator && other);
    EXPECT_NE(simulator->Fingerprint(), other->Fingerprint());
    const testdata::TemporaryFolder folder;
    const std::string authority = folder.Write("ca.pem", other->CertificatePem());
    httplib::SSLClient client("127.0.0.1", simulator->Port());
    client.set_ca_cert_path(authority.c_str());
    client.enable_server_certificate_verification(true);
    EXPECT_FALSE(client.Get("/redfish/v1/"));
    // The failed handshake has done the server no harm.
    client.enable_server_certificate_verification(false);
    EXPECT_TRUE(client.Get("/redfish/v1/"));
}

TEST(Tls, FingerprintIsThatOfTheCertificate)
{
    const auto simulator = Start({});
    ASSERT_TRUE(simulator);
    const auto certificate = ReadPem(simulator->CertificatePem());
    ASSERT_TRUE(certificate);
    EXPECT_EQ(simulator->Fingerprint(), FingerprintOf(certificate.get()));
    const auto plain = Start(PlainOptions());
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->Fingerprint(), "");
    EXPECT_EQ(plain->CertificatePem(), "");
    EXPECT_THAT(plain->Url(), testing::StartsWith("http://127.0.0.1:"));
}

TEST(Tls, GivenCertificateIsUsed)
{
    const PemFiles files;
    bmcsim::SimulatorOptions options;
    options.TlsCertFile = files.Certificate;
    options.TlsKeyFile = files.Key;
    const auto simulator = Start(options);
    ASSERT_TRUE(simulator);
    EXPECT_EQ(simulator->Fingerprint(), files.Fingerprint);
    const auto answer = Connect(*simulator)->Get("/redfish/v1/Systems");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
}

TEST(Tls, UnusableCertificateAndKeyFilesAreNamed)
{
    const PemFiles files;
    const PemFiles others;
    const std::string junk = files.Folder.Write("junk.pem", "no certificate");
    struct Case
    {
        std::string Certificate;
        std::string Key;
        std::string Named;
    };
    for (const auto& [certificate, key, named] : {Case{"/no/such/cert.pem", files.Key, "/no/such/cert.pem"},
                                                  {junk, files.Key, junk},
                                                  {files.Certificate, "/no/such/key.pem", "/no/such/key.pem"},
                                                  {files.Certificate, junk, junk},
                                                  {files.Certificate, others.Key, others.Key},
                                                  {files.Certificate, "", "key file"},
                                                  {"", files.Key, "certificate file"}})
    {
        bmcsim::SimulatorOptions options;
        options.TlsCertFile = certificate;
        options.TlsKeyFile = key;
        EXPECT_THAT(StartError(options), HasSubstr(named));
    }
}

TEST(Tls, OldProtocolIsRefused)
{
    const auto simulator = Start({});
    ASSERT_TRUE(simulator);
    const auto tries = [&](int version)
    {
        const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
        // The system's own policy must not be what refuses.
        SSL_CTX_set_security_level(context.get(), 0);
        SSL_CTX_set_min_proto_version(context.get(), version);
        SSL_CTX_set_max_proto_version(context.get(), version);
        const std::unique_ptr<BIO, decltype(&BIO_free_all)> bio(BIO_new_ssl_connect(context.get()), BIO_free_all);
        BIO_set_conn_hostname(bio.get(), ("127.0.0.1:" + std::to_string(simulator->Port())).c_str());
        return BIO_do_connect(bio.get()) == 1 && BIO_do_handshake(bio.get()) == 1;
    };
    EXPECT_FALSE(tries(TLS1_1_VERSION));
    EXPECT_TRUE(tries(TLS1_2_VERSION));
    EXPECT_TRUE(tries(TLS1_3_VERSION));
}

} // namespace
