#include "RegistryCache.h"

#include <filesystem>
#include <fstream>
#include <mutex>

#include <gtest/gtest.h>

#include "BmcConnection.h"
#include "Certificates.h"
#include "RedfishClient.h"
#include "RedfishRegistryAssistant.h"
#include "SharedData.h"
#include "TemporaryFolder.h"
#include "TestServer.h"

using namespace Tavrine;
using namespace resttest;

namespace fs = std::filesystem;

namespace
{

constexpr const char* BiosPath = "/redfish/v1/Systems/1/Bios";

/// What a service does with the registry.
struct Behaviour
{
    std::string Text = R"({"RegistryEntries":{"Attributes":[]},"Language":"en"})";
    std::string Tag = "\"one\"";
    /// Status of an answer to a read with a condition; 0: as RFC 9110 has it.
    int ConditionalStatus = 0;
    std::string Path = "/store/en";
    /// What lies at other paths; empty for nothing.
    std::string Elsewhere = {};
};

std::map<std::string, std::string> Service(const std::string& identifier, const std::string& path)
{
    return {{BiosPath, R"({"AttributeRegistry":")" + identifier + R"(","Attributes":{}})"},
            {"/redfish/v1/Registries", R"({"Members":[{"@odata.id":"/redfish/v1/Registries/Reg"}]})"},
            {"/redfish/v1/Registries/Reg", R"({"Id":")" + identifier + R"(","Location":[{"Language":"en","Uri":")" +
                                               path + R"("},{"Language":"ja","Uri":"/store/ja"}]})"}};
}

/// A BMC whose registry has an ETag, and the tool's way to it.
class Bmc
{
  public:
    explicit Bmc(Behaviour behaviour = {}, const Certificate* certificate = nullptr,
                 const std::string& identifier = "Reg.v1")
        : m_Now(std::move(behaviour)), m_Identifier(identifier),
          m_Server([this](const httplib::Request& request, httplib::Response& response) { Serve(request, response); },
                   certificate)
    {
    }

    /// One run: @return the registry, or "(code)" of a failure.
    std::string Run(const std::string& folder, const std::string& language = "en", const std::string& pin = {}) const
    {
        TavrineConnection::ConnectionProfile profile;
        profile.Language = language;
        profile.RegistryFolder = folder;
        profile.PinnedSha256 = pin;
        const TavrineConnection::BmcConnection connection(m_Server.Info(), profile);
        struct Assistant : RedfishRegistryAssistant
        {
            explicit Assistant(const TavrineConnection::ConnectionInfo& info) : RedfishRegistryAssistant(info)
            {
                m_ValueURL = BiosPath;
            }
        } assistant(connection.Info());
        std::string text = "old";
        RedfishConfigResult result = assistant.GetSchema(text);
        return result == 0 ? text : "(" + std::to_string(result.ErrorCode()) + ")";
    }

    /// The conditions of the reads of the registry, "(none)" for a plain read.
    std::vector<std::string> Conditions() const
    {
        std::vector<std::string> conditions;
        for (const SeenRequest& request : m_Server.Requests())
        {
            if (request.Target.starts_with("/store/"))
            {
                conditions.push_back(request.Header("If-None-Match"));
            }
        }
        return conditions;
    }
    std::vector<std::string> Calls() const { return m_Server.Calls(); }

    Behaviour Now() const
    {
        const std::lock_guard lock(m_Mutex);
        return m_Now;
    }
    void Become(Behaviour behaviour)
    {
        const std::lock_guard lock(m_Mutex);
        m_Now = std::move(behaviour);
    }

  private:
    void Serve(const httplib::Request& request, httplib::Response& response) const
    {
        const Behaviour now = Now();
        if (!request.target.starts_with("/store/"))
        {
            Resources(Service(m_Identifier, now.Path))(request, response);
            return;
        }
        if (request.target != now.Path && request.target != "/store/ja")
        {
            response.set_header("ETag", "\"elsewhere\"");
            AnswerJson(response, now.Elsewhere.empty() ? "{}" : now.Elsewhere, now.Elsewhere.empty() ? 404 : 200);
            return;
        }
        const std::string condition = request.get_header_value("If-None-Match");
        if (!condition.empty() && now.ConditionalStatus != 0)
        {
            response.status = now.ConditionalStatus;
            return;
        }
        if (!now.Tag.empty())
        {
            response.set_header("ETag", now.Tag);
        }
        if (!condition.empty() && condition == now.Tag)
        {
            response.status = 304;
            return;
        }
        AnswerJson(response, now.Text);
    }

    mutable std::mutex m_Mutex;
    Behaviour m_Now;
    std::string m_Identifier;
    TestServer m_Server;
};

/// Names of the files in a folder that end so.
std::size_t Count(const fs::path& folder, const std::string& extension)
{
    std::size_t count = 0;
    std::error_code missing;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, missing))
    {
        count += entry.path().extension() == extension ? 1U : 0U;
    }
    return count;
}

using Conditions = std::vector<std::string>;

} // namespace

TEST(RegistryCache, TheSecondRunGetsNoBody)
{
    const testdata::TemporaryFolder folder;
    const Bmc bmc;
    EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
    EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
    EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "\"one\""}));
    // The lists of registries are not read again either.
    EXPECT_EQ(bmc.Calls(), (Conditions{"GET " + std::string(BiosPath), "GET /redfish/v1/Registries",
                                       "GET /redfish/v1/Registries/Reg", "GET /store/en",
                                       "GET " + std::string(BiosPath), "GET /store/en"}));
}

TEST(RegistryCache, ARegistryThatMovedIsFound)
{
    // What is left behind, an older registry for example, is not taken for it.
    for (const char* elsewhere : {"", R"({"RegistryEntries":{},"Left":"behind"})"})
    {
        const testdata::TemporaryFolder folder;
        Bmc bmc;
        bmc.Run(folder.Path().string());
        bmc.Become({R"({"RegistryEntries":{},"Moved":true})", "\"two\"", 0, "/store/new", elsewhere});
        EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
        EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
        EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "\"one\"", "(none)", "\"two\""}));
    }
}

TEST(RegistryCache, AKeptPathIsCheckedBeforeItIsAskedFor)
{
    const testdata::TemporaryFolder folder;
    const Bmc bmc;
    bmc.Run(folder.Path().string());
    for (const fs::directory_entry& entry : fs::directory_iterator(folder.Path()))
    {
        if (entry.path().extension() == ".entry")
        {
            std::string text = testdata::ReadFile(entry.path());
            ASSERT_NE(text.find("/store/en"), std::string::npos);
            text.replace(text.find("/store/en"), 9, "/x y\\r\\nX-Bad:1");
            std::ofstream(entry.path(), std::ios::binary | std::ios::trunc) << text;
        }
    }
    EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
    EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "(none)"}));
}

TEST(RegistryCache, WithoutAFolderNothingIsKept)
{
    const Bmc bmc;
    EXPECT_EQ(bmc.Run(""), bmc.Now().Text);
    EXPECT_EQ(bmc.Run(""), bmc.Now().Text);
    EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "(none)"}));
}

TEST(RegistryCache, AChangedRegistryIsReadAnew)
{
    const testdata::TemporaryFolder folder;
    Bmc bmc;
    bmc.Run(folder.Path().string());
    bmc.Become({R"({"RegistryEntries":{},"New":true})", "\"two\"", 0});
    EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
    EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
    EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "\"one\"", "\"two\""}));
}

TEST(RegistryCache, WithoutAnETagNothingIsTrusted)
{
    for (const char* tag : {"", "*", "\"\"", "W/\"\"", "a, b", "\"a\", \"b\"", "\"a b\"", "W/"})
    {
        const testdata::TemporaryFolder folder;
        const Bmc bmc({Behaviour().Text, tag, 0});
        bmc.Run(folder.Path().string());
        EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text) << tag;
        EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "(none)"})) << tag;
    }
}

TEST(RegistryCache, AnETagThatIsLostTakesTheCopyWithIt)
{
    const testdata::TemporaryFolder folder;
    Bmc bmc;
    bmc.Run(folder.Path().string());
    EXPECT_EQ(Count(folder.Path(), ".entry"), 1U);
    bmc.Become({Behaviour().Text, "", 0});
    bmc.Run(folder.Path().string());
    EXPECT_EQ(Count(folder.Path(), ".entry"), 0U);
    bmc.Run(folder.Path().string());
    EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "\"one\"", "(none)"}));
}

TEST(RegistryCache, TagsOfOddFormAreSentAsTheyCame)
{
    for (const char* tag : {"W/\"1\"", "\"a,b\"", "5f3c-12", "\"*\""})
    {
        const testdata::TemporaryFolder folder;
        const Bmc bmc({Behaviour().Text, tag, 0});
        bmc.Run(folder.Path().string());
        EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
        EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", tag}));
    }
    EXPECT_TRUE(IsUsableTag("\"" + std::string(254, 'a') + "\""));
    EXPECT_FALSE(IsUsableTag("\"" + std::string(255, 'a') + "\""));
}

TEST(RegistryCache, BmcsDoNotShareTheirCopies)
{
    const testdata::TemporaryFolder folder;
    const Bmc one({R"({"From":"one"})", "\"same\"", 0});
    const Bmc other({R"({"From":"other"})", "\"same\"", 0});
    EXPECT_EQ(one.Run(folder.Path().string()), one.Now().Text);
    EXPECT_EQ(other.Run(folder.Path().string()), other.Now().Text);
    EXPECT_EQ(other.Conditions(), Conditions{"(none)"});
    EXPECT_EQ(one.Run(folder.Path().string()), one.Now().Text);
    EXPECT_EQ(other.Run(folder.Path().string()), other.Now().Text);
}

TEST(RegistryCache, WhatCameUnverifiedIsNotOfferedToAVerifiedConnection)
{
    const testdata::TemporaryFolder folder;
    const Certificate certificate = MakeCertificate();
    const Bmc bmc({}, &certificate);
    EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
    EXPECT_EQ(bmc.Run(folder.Path().string(), "en", certificate.Fingerprint), bmc.Now().Text);
    EXPECT_EQ(bmc.Run(folder.Path().string(), "en", certificate.Fingerprint), bmc.Now().Text);
    EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "(none)", "\"one\""}));
}

TEST(RegistryCache, LanguagesHaveCopiesOfTheirOwn)
{
    const testdata::TemporaryFolder folder;
    const Bmc bmc;
    bmc.Run(folder.Path().string(), "en");
    bmc.Run(folder.Path().string(), "ja");
    bmc.Run(folder.Path().string(), "ja");
    EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "(none)", "\"one\""}));
}

TEST(RegistryCache, IdentifiersAreNoPaths)
{
    const testdata::TemporaryFolder above;
    const std::string folder = (above.Path() / "a" / "b").string();
    fs::create_directories(folder);
    const Bmc bmc({}, nullptr, "../../x");
    EXPECT_EQ(bmc.Run(folder), bmc.Now().Text);
    EXPECT_EQ(bmc.Run(folder), bmc.Now().Text);
    EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "\"one\""}));
    EXPECT_EQ(Count(folder, ".entry") + Count(folder, ".text"), 2U);
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(above.Path()), fs::recursive_directory_iterator()), 4);
}

TEST(RegistryCache, ADamagedCopyIsReadAnew)
{
    for (const char* extension : {".entry", ".text"})
    {
        const testdata::TemporaryFolder folder;
        const Bmc bmc;
        bmc.Run(folder.Path().string());
        for (const fs::directory_entry& entry : fs::directory_iterator(folder.Path()))
        {
            if (entry.path().extension() == extension)
            {
                fs::resize_file(entry.path(), fs::file_size(entry.path()) - 1);
            }
        }
        EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
        EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text);
        EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "(none)", "\"one\""})) << extension;
    }
}

TEST(RegistryCache, AServiceThatRefusesConditionsIsAskedWithout)
{
    for (const int status : {400, 412, 404})
    {
        const testdata::TemporaryFolder folder;
        Bmc bmc;
        bmc.Run(folder.Path().string());
        bmc.Become({Behaviour().Text, "\"one\"", status});
        EXPECT_EQ(bmc.Run(folder.Path().string()), bmc.Now().Text) << status;
        EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "\"one\"", "(none)"})) << status;
    }
}

TEST(RegistryCache, ACopyDoesNotHideAFailure)
{
    for (const auto& [status, code] : {std::pair{503, 33}, std::pair{500, 32}, std::pair{403, 24}})
    {
        const testdata::TemporaryFolder folder;
        Bmc bmc;
        bmc.Run(folder.Path().string());
        bmc.Become({Behaviour().Text, "\"one\"", status});
        EXPECT_EQ(bmc.Run(folder.Path().string()), "(" + std::to_string(code) + ")");
        EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "\"one\""}));
    }
}

TEST(RegistryCache, WhatIsNoRegistryIsNotKept)
{
    for (const char* text : {"", "nonsense", R"({"error":{"code":"Base.1.8.GeneralError","message":"no"}})"})
    {
        const testdata::TemporaryFolder folder;
        const Bmc bmc({text, "\"one\"", 0});
        bmc.Run(folder.Path().string());
        EXPECT_EQ(Count(folder.Path(), ".entry"), 0U) << text;
    }
}

TEST(RegistryCache, A304ThatNobodyAskedForIsAFailure)
{
    const TestServer server([](const httplib::Request&, httplib::Response& response) { response.status = 304; });
    TavrineConnection::BmcConnection connection(server.Info(), {});
    std::string text = "old";
    EXPECT_THAT(connection.Get("/x", text), HasCode(26));
    EXPECT_EQ(text, "old");
    // A read that would keep what it gets has asked for nothing yet either.
    Revalidation nothingKept;
    EXPECT_THAT(RedfishClient(server.Info(), {}).Get("/x", text, &nothingKept), Fails(26, "304 Not Modified"));
    EXPECT_FALSE(nothingKept.Unchanged);
    EXPECT_EQ(text, "old");
}

TEST(RegistryCache, AFolderThatCannotBeIsNoFailure)
{
    const testdata::TemporaryFolder above;
    const std::string file = above.Write("file", "mine");
    const Bmc bmc;
    EXPECT_EQ(bmc.Run(file), bmc.Now().Text);
    EXPECT_EQ(bmc.Run(file + "/below"), bmc.Now().Text);
    EXPECT_EQ(bmc.Conditions(), (Conditions{"(none)", "(none)"}));
}
