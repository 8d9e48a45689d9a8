#include "BMCBaseAssistant.h"

#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <utility>

#include <dlfcn.h>
#include <unistd.h>

#include <curl/curl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "BmcConnection.h"
#include "Certificates.h"
#include "TemporaryFolder.h"
#include "TestServer.h"
#include "TlsCheck.h"

using namespace Tavrine;
using namespace resttest;
using TavrineConnection::ConnectionProfile;

namespace
{

void Answers(const httplib::Request&, httplib::Response& response) { AnswerJson(response, "{}"); }

/// The certificate of most tests, made once.
const Certificate& Good()
{
    static const Certificate certificate = MakeCertificate();
    return certificate;
}

TavrineConnection::ConnectionInfo Verified(const TestServer& server)
{
    auto info = server.Info();
    info.Flags = 0;
    return info;
}

RedfishConfigResult Get(const TavrineConnection::ConnectionInfo& info, const ConnectionProfile& profile)
{
    const TavrineConnection::BmcConnection connection(info, profile);
    std::string response;
    return BMCBaseAssistant(connection.Info(), SystemTypeBios).GetData("/x", response);
}

/// A PEM file that is gone after the test.
class PemFile
{
  public:
    explicit PemFile(const std::string& text)
    {
        const int file = mkstemp(m_Path.data());
        close(file);
        std::ofstream(m_Path) << text;
    }
    PemFile(const PemFile&) = delete;
    PemFile& operator=(const PemFile&) = delete;
    ~PemFile() { std::remove(m_Path.c_str()); }
    const std::string& Path() const { return m_Path; }

  private:
    std::string m_Path = testing::TempDir() + "tls-test-XXXXXX";
};

/// What stands in this thread's transfers before they are told anything, as long as it lives: the folder whose
/// certificates curl trusts of its own accord, and the ciphers and the lowest version of its TLS library.
struct Machine
{
    explicit Machine(std::string folder, std::string ciphers = "", long version = CURL_SSLVERSION_DEFAULT);
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;
    ~Machine();

    /// What is empty, or the default, stays that of the real machine.
    void Prepare(CURL* handle) const;

    const std::string Folder;
    const std::string Ciphers;
    const long Version;
};

thread_local const Machine* machine = nullptr;

Machine::Machine(std::string folder, std::string ciphers, long version)
    : Folder(std::move(folder)), Ciphers(std::move(ciphers)), Version(version)
{
    machine = this;
}

Machine::~Machine() { machine = nullptr; }

void Machine::Prepare(CURL* handle) const
{
    for (const auto& [option, value] : {std::pair(CURLOPT_CAPATH, &Folder), {CURLOPT_SSL_CIPHER_LIST, &Ciphers}})
    {
        if (!value->empty())
        {
            EXPECT_EQ(curl_easy_setopt(handle, option, value->c_str()), CURLE_OK);
        }
    }
    EXPECT_EQ(curl_easy_setopt(handle, CURLOPT_SSLVERSION, Version), CURLE_OK);
}

/// Reads from a server with no more said to curl than not to look at certificates, and to have an end.
CURLcode ReadByCurlAlone(std::uint16_t port)
{
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
    const std::string url = "https://127.0.0.1:" + std::to_string(port) + "/x";
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, 20L);
    curl_easy_setopt(
        curl.get(), CURLOPT_WRITEFUNCTION, +[](char*, std::size_t, std::size_t count, void*) { return count; });
    return curl_easy_perform(curl.get());
}

/// A server of one version of TLS; null where this machine's OpenSSL has no such version.
std::unique_ptr<TestServer> ServerOfOnly(int version)
{
    try
    {
        return std::make_unique<TestServer>(Answers, &Good(), version);
    }
    catch (const std::runtime_error&)
    {
        return nullptr;
    }
}

} // namespace

/// Stands before curl's, and leads on to it.
extern "C" CURL* curl_easy_init()
{
    static const auto original = reinterpret_cast<CURL* (*)()>(dlsym(RTLD_NEXT, "curl_easy_init"));
    CURL* const made = original();
    if (made != nullptr && machine != nullptr)
    {
        machine->Prepare(made);
    }
    return made;
}

TEST(Tls, UnknownCertificateIsRefusedAndItsFingerprintShown)
{
    const TestServer server(Answers, &Good());
    RedfishConfigResult result = Get(Verified(server), {});
    EXPECT_THAT(result, Fails(24, "127.0.0.1:" + std::to_string(server.Port()) + ": its certificate is not trusted"));
    EXPECT_THAT(result, Fails(24, Good().Fingerprint));
    EXPECT_TRUE(server.Calls().empty()); // nothing was told to a stranger
}

TEST(Tls, CertificateOfTheCaFileIsTrusted)
{
    const TestServer server(Answers, &Good());
    const PemFile file(Good().Pem);
    EXPECT_THAT(Get(Verified(server), {.CaFile = file.Path(), .PinnedSha256 = ""}), HasCode(0));
}

TEST(Tls, CertificateOfAnotherAuthorityIsRefused)
{
    const TestServer server(Answers, &Good());
    const PemFile file(MakeCertificate().Pem);
    EXPECT_THAT(Get(Verified(server), {.CaFile = file.Path(), .PinnedSha256 = ""}), Fails(24, "is not trusted"));
}

TEST(Tls, BesideACaFileTheFolderOfTheMachineIsNotTrusted)
{
    const TestServer server(Answers, &Good());
    const PemFile file(MakeCertificate("IP:127.0.0.1", 1, "another authority").Pem);
    const testdata::TemporaryFolder folder;
    folder.Write(fmt::format("{:08x}.0", X509_subject_name_hash(Good().Leaf.get())), Good().Pem);
    const Machine trusting(folder.Path().string());
    EXPECT_THAT(Get(Verified(server), {}), HasCode(0));
    EXPECT_THAT(Get(Verified(server), {.CaFile = file.Path(), .PinnedSha256 = ""}), Fails(24, "is not trusted"));
}

TEST(Tls, CaFilesThatCannotBeUsed)
{
    const TestServer server(Answers, &Good());
    const PemFile empty("");
    EXPECT_THAT(Get(Verified(server), {.CaFile = "/nonexistent/ca.pem", .PinnedSha256 = ""}),
                Fails(24, "/nonexistent/ca.pem"));
    EXPECT_THAT(Get(Verified(server), {.CaFile = empty.Path(), .PinnedSha256 = ""}), HasCode(24));
}

TEST(Tls, AnOptionThatCurlRefusesStopsTheRequest)
{
    const std::string tooLong(8'000'001, 'x');
    const TestServer server(Answers, &Good());
    EXPECT_THAT(Get(Verified(server), {.CaFile = tooLong, .PinnedSha256 = ""}), Fails(24, ": curl refuses "));
    auto info = server.Info();
    info.User = tooLong;
    EXPECT_THAT(Get(info, {}), Fails(24, ": curl refuses "));
    EXPECT_TRUE(server.Calls().empty());
}

TEST(Tls, CertificatesAreCheckedWithOpenSslAlone)
{
    EXPECT_EQ(TlsLibraryFault("OpenSSL/3.0.2"), "");
    EXPECT_EQ(TlsLibraryFault("OpenSSL/3.0.2 (GnuTLS/3.7.3)"), "");
    for (const char* name : {"GnuTLS/3.7.3", "(OpenSSL/3.0.2) GnuTLS/3.7.3", "NSS/3.68", "mbedTLS/2.28.0", ""})
    {
        EXPECT_NE(TlsLibraryFault(name).find(name), std::string::npos) << name;
        EXPECT_NE(TlsLibraryFault(name), "") << name;
    }
    EXPECT_NE(TlsLibraryFault(nullptr), "");
}

TEST(Tls, CertificateForAnotherNameIsRefused)
{
    const Certificate other = MakeCertificate("DNS:other.example");
    const TestServer server(Answers, &other);
    const PemFile file(other.Pem);
    RedfishConfigResult result = Get(Verified(server), {.CaFile = file.Path(), .PinnedSha256 = ""});
    EXPECT_THAT(result, Fails(24, "its certificate is made out for another name"));
    EXPECT_THAT(result, Fails(24, other.Fingerprint));
}

TEST(Tls, ExpiredCertificateIsRefused)
{
    const Certificate expired = MakeCertificate("IP:127.0.0.1", -1);
    const TestServer server(Answers, &expired);
    const PemFile file(expired.Pem);
    EXPECT_THAT(Get(Verified(server), {.CaFile = file.Path(), .PinnedSha256 = ""}), Fails(24, "expired"));
}

TEST(Tls, PinStandsInForEveryOtherCheck)
{
    const Certificate certificate = MakeCertificate("DNS:other.example", -1);
    const TestServer server(Answers, &certificate);
    std::string pin = certificate.Fingerprint;
    EXPECT_THAT(Get(Verified(server), {.CaFile = "", .PinnedSha256 = pin}), HasCode(0));
    for (char& c : pin)
    {
        c = static_cast<char>(std::toupper(c));
    }
    EXPECT_THAT(Get(Verified(server), {.CaFile = "", .PinnedSha256 = pin}), HasCode(0));
}

TEST(Tls, WrongPinIsRefused)
{
    const TestServer server(Answers, &Good());
    const PemFile file(Good().Pem);
    std::string pin = Good().Fingerprint;
    pin.back() = pin.back() == '0' ? '1' : '0';
    auto info = Verified(server);
    for (const std::uint8_t flags : {std::uint8_t{0}, TavrineConnection::FlagNoTlsVerify})
    {
        info.Flags = flags;
        RedfishConfigResult result = Get(info, {.CaFile = file.Path(), .PinnedSha256 = pin});
        EXPECT_THAT(result, Fails(24, "its certificate is not the pinned one"));
        EXPECT_THAT(result, Fails(24, Good().Fingerprint));
    }
    EXPECT_TRUE(server.Calls().empty());
}

TEST(Tls, MalformedPinsAreRefusedBeforeConnecting)
{
    const TestServer server(Answers, &Good());
    for (const std::string& pin :
         {std::string("ab"), Good().Fingerprint + "0", "sha256:" + Good().Fingerprint, std::string(64, 'g')})
    {
        EXPECT_THAT(Get(Verified(server), {.CaFile = "", .PinnedSha256 = pin}), Fails(24, "pinned SHA-256")) << pin;
    }
    auto plain = Verified(server);
    plain.Flags = TavrineConnection::FlagPlainHttp;
    EXPECT_THAT(Get(plain, {.CaFile = "", .PinnedSha256 = Good().Fingerprint}), Fails(24, "pinned"));
    EXPECT_TRUE(server.Calls().empty());
}

TEST(Tls, VerificationCanBeTurnedOff)
{
    const Certificate certificate = MakeCertificate("DNS:other.example", -1);
    const TestServer server(Answers, &certificate);
    EXPECT_THAT(Get(server.Info(), {}), HasCode(0));
}

namespace
{

class TlsVersions : public testing::TestWithParam<int>
{
};

} // namespace

TEST_P(TlsVersions, BeforeTls12NoneIsSpokenEvenWhereTheMachineWouldSpeakIt)
{
    const bool old = GetParam() < TLS1_2_VERSION;
    const Machine lenient("", AllCiphers, CURL_SSLVERSION_TLSv1_0);
    const std::unique_ptr<TestServer> server = ServerOfOnly(GetParam());
    const bool spoken = server != nullptr && ReadByCurlAlone(server->Port()) == CURLE_OK;
    if (old && !spoken)
    {
        GTEST_SKIP() << "this machine's curl or OpenSSL cannot speak it at all";
    }
    ASSERT_TRUE(spoken);
    EXPECT_THAT(Get(server->Info(), {}), HasCode(old ? 24 : 0));
    EXPECT_EQ(server->Calls().size(), old ? 1U : 2U);
}

INSTANTIATE_TEST_SUITE_P(Tls, TlsVersions, testing::Values(TLS1_VERSION, TLS1_1_VERSION, TLS1_2_VERSION));

TEST(Tls, HttpSpokenToAnHttpsPort)
{
    const TestServer server(Answers, &Good());
    auto info = server.Info();
    info.Flags = TavrineConnection::FlagPlainHttp;
    EXPECT_THAT(Get(info, {}), Fails(24, "the port may want https"));
}

TEST(Tls, HttpsSpokenToAnHttpPort)
{
    const TestServer server(Answers);
    auto info = server.Info();
    info.Flags = 0;
    EXPECT_THAT(Get(info, {}), Fails(24, "it does not speak TLS, this may be an http port"));
}

TEST(Tls, DigestsAsText)
{
    const auto digest = Sha256Of("abc");
    EXPECT_EQ(Sha256Text(digest), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"); // FIPS 180-2
    EXPECT_EQ(ParseSha256(Sha256Text(digest)), digest);
    EXPECT_FALSE(ParseSha256(""));
    EXPECT_FALSE(ParseSha256(std::string(63, 'a')));
    EXPECT_FALSE(ParseSha256(std::string(63, 'a') + "`"));
}
