#include "RegistryLookup.h"

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "SharedData.h"
#include "TestServer.h"

using namespace Tavrine;
using resttest::Fails;
using resttest::HasCode;

namespace
{

const std::string Base = "/redfish/v1/Registries";

/// Resources by path; what was read is kept in order.
struct Service
{
    std::map<std::string, std::string> Texts;
    std::map<std::string, int> Failures;
    std::vector<std::string> Reads;

    RedfishConfigResult Find(const std::string& identifier, std::string& url, const std::string& language = "en")
    {
        const ResourceReader read = [this](const std::string& path, std::string& text)
        {
            Reads.push_back(path);
            if (Failures.contains(path))
            {
                return RedfishConfigResult(Failures[path], "failed", "");
            }
            if (!Texts.contains(path))
            {
                return RedfishConfigResult(26, "not found", "");
            }
            text = Texts[path];
            return RedfishConfigResult(0, "", "");
        };
        return FindRegistry(read, identifier, language, url);
    }
};

std::string Collection(const std::vector<std::string>& members, const std::string& next = "")
{
    std::string text = R"({"Members":[)";
    for (std::size_t i = 0; i < members.size(); ++i)
    {
        text += (i == 0 ? "" : ",") + std::string(R"({"@odata.id":")") + members[i] + "\"}";
    }
    return text + "]" + (next.empty() ? "" : R"(,"Members@odata.nextLink":")" + next + "\"") + "}";
}

std::string File(const std::string& id, const std::string& uri, const std::string& language = "en")
{
    return R"({"Id":")" + id + R"(","Registry":")" + id + R"(","Location":[{"Language":")" + language + R"(","Uri":")" +
           uri + R"("}]})";
}

} // namespace

TEST(RegistryLookup, MemberWithTheIdentifierAsLastSegment)
{
    Service service;
    service.Texts = {{Base, Collection({Base + "/Base.1.0.0", Base + "/Reg.v1_2"})},
                     {Base + "/Reg.v1_2", File("anything", "/store/reg")}};
    std::string url;
    EXPECT_THAT(service.Find("Reg.v1_2", url), HasCode(0));
    EXPECT_EQ(url, "/store/reg");
    EXPECT_EQ(service.Reads, (std::vector<std::string>{Base, Base + "/Reg.v1_2"}));
}

TEST(RegistryLookup, SpellingsOfAMember)
{
    for (const char* member : {"/Reg.v1", "/Reg.v1/", "/Reg.v1.json", "/Reg.v1.json/"})
    {
        Service service;
        service.Texts = {{Base, Collection({Base + member})}, {Base + member, File("x", "/store/reg")}};
        std::string url;
        EXPECT_THAT(service.Find("Reg.v1", url), HasCode(0)) << member;
        EXPECT_EQ(url, "/store/reg") << member;
    }
}

TEST(RegistryLookup, OtherVersionsAreOtherRegistries)
{
    for (const char* other : {"Reg.v1_2_34", "Reg.1.2.35", "reg.1.2.34", "Reg.1.2.34.1", "XReg.1.2.34", "Reg.1.2"})
    {
        Service service;
        service.Texts = {{Base, Collection({Base + "/" + other})}, {Base + "/" + other, File(other, "/store/other")}};
        std::string url = "untouched";
        EXPECT_THAT(service.Find("Reg.1.2.34", url),
                    Fails(26, "The attribute registry Reg.1.2.34 is not among the registries of the BMC."))
            << other;
        EXPECT_EQ(url, "untouched");
    }
}

TEST(RegistryLookup, PagesAreFollowedUntilTheMemberIsFound)
{
    Service service;
    service.Texts = {{Base, Collection({Base + "/A"}, Base + "?$skip=1")},
                     {Base + "?$skip=1", Collection({Base + "/B"}, Base + "?$skip=2")},
                     {Base + "?$skip=2", Collection({Base + "/C"})},
                     {Base + "/B", File("B", "/store/b")},
                     {Base + "/C", File("C", "/store/c")}};
    std::string url;
    EXPECT_THAT(service.Find("C", url), HasCode(0));
    EXPECT_EQ(url, "/store/c");
    EXPECT_EQ(service.Reads.size(), 4U);
    service.Reads.clear();
    EXPECT_THAT(service.Find("B", url), HasCode(0));
    EXPECT_EQ(service.Reads, (std::vector<std::string>{Base, Base + "?$skip=1", Base + "/B"}));
}

TEST(RegistryLookup, PagesInACircleEnd)
{
    Service service;
    service.Texts = {{Base, Collection({Base + "/A"}, Base + "?p=2")},
                     {Base + "?p=2", Collection({Base + "/B"}, Base)},
                     {Base + "/A", File("A", "/a")},
                     {Base + "/B", File("B", "/b")}};
    std::string url;
    EXPECT_THAT(service.Find("Missing", url),
                Fails(26, "Missing is not among the registries of the BMC, whose list leads in a circle."));
    EXPECT_EQ(service.Reads.size(), 4U);
}

TEST(RegistryLookup, EndlessPagesEnd)
{
    std::size_t reads = 0;
    const ResourceReader read = [&reads](const std::string&, std::string& text)
    {
        text = Collection({}, Base + "?p=" + std::to_string(++reads));
        return RedfishConfigResult(0, "", "");
    };
    std::string url;
    EXPECT_THAT(FindRegistry(read, "Missing", "en", url), Fails(26, "longer than is read"));
    EXPECT_EQ(reads, 50U);
}

TEST(RegistryLookup, MembersAreTakenUpToTheLimit)
{
    constexpr std::size_t limit = 5000;
    for (const std::size_t count : {limit - 1, limit})
    {
        std::vector<std::string> members(count, "/other");
        Service service;
        service.Texts = {{Base, Collection(members, Base + "?p=2")},
                         {Base + "?p=2", Collection({Base + "/Reg"})},
                         {Base + "/Reg", File("Reg", "/store/reg")},
                         {"/other", File("other", "/store/other")}};
        std::string url;
        RedfishConfigResult result = service.Find("Reg", url);
        if (count < limit)
        {
            EXPECT_THAT(result, HasCode(0));
            continue;
        }
        EXPECT_THAT(result, HasCode(26));
        EXPECT_EQ(std::count(service.Reads.begin(), service.Reads.end(), Base + "?p=2"), 0);
    }
}

TEST(RegistryLookup, HostileNextPagesAreRefused)
{
    for (const char* next : {"http://evil.example/x", "//", "relative", "/a b", "/a\\r\\nX-Evil: 1"})
    {
        Service service;
        service.Texts = {{Base, Collection({Base + "/A"}, next)}, {"//", "{}"}};
        std::string url = "untouched";
        EXPECT_THAT(service.Find("Missing", url), HasCode(26)) << next;
        EXPECT_EQ(url, "untouched");
        for (const std::string& path : service.Reads)
        {
            EXPECT_EQ(path.front(), '/') << path;
        }
    }
}

TEST(RegistryLookup, HostileMembersArePassedOver)
{
    Service service;
    service.Texts = {{Base,
                      R"({"Members":[7,null,{},{"@odata.id":7},{"@odata.id":"http://evil/Reg"},{"@odata.id":"Reg"},)"
                      R"({"@odata.id":"/a b/Reg"},{"@odata.id":"/good/Reg"}]})"},
                     {"/good/Reg", File("Reg", "/store/reg")}};
    std::string url;
    EXPECT_THAT(service.Find("Reg", url), HasCode(0));
    EXPECT_EQ(service.Reads, (std::vector<std::string>{Base, "/good/Reg"}));
}

TEST(RegistryLookup, FilesAreReadWhereNoMemberBearsTheName)
{
    Service service;
    service.Texts = {{Base, Collection({Base + "/1", Base + "/2", Base + "/BiosStuff", Base + "/3"})},
                     {Base + "/BiosStuff", File("other", "/store/other")},
                     {Base + "/1", File("Base", "/store/base")},
                     {Base + "/3", R"({"Registry":"Reg.v1","Location":[{"Language":"en","Uri":"/store/reg"}]})"}};
    std::string url;
    EXPECT_THAT(service.Find("Reg.v1", url), HasCode(0));
    EXPECT_EQ(url, "/store/reg");
    // The likely one first, and one that cannot be read is no end.
    EXPECT_EQ(service.Reads,
              (std::vector<std::string>{Base, Base + "/BiosStuff", Base + "/1", Base + "/2", Base + "/3"}));
}

TEST(RegistryLookup, AFailedConnectionEndsTheSearch)
{
    for (const int code : {24, 33})
    {
        Service service;
        service.Texts = {{Base, Collection({Base + "/1", Base + "/2"})}};
        service.Failures = {{Base + "/1", code}};
        std::string url;
        EXPECT_THAT(service.Find("Reg", url), HasCode(code));
        EXPECT_EQ(service.Reads.size(), 2U);
    }
}

TEST(RegistryLookup, NotMoreThanAHundredFilesAreRead)
{
    Service service;
    std::vector<std::string> members;
    for (int i = 0; i < 150; ++i)
    {
        members.push_back(Base + "/" + std::to_string(i));
        service.Texts[members.back()] = File("no", "/no");
    }
    service.Texts[Base] = Collection(members);
    std::string url;
    EXPECT_THAT(service.Find("Reg", url), Fails(26, "not all were read"));
    EXPECT_EQ(service.Reads.size(), 101U);
}

TEST(RegistryLookup, CollectionsOfWrongShape)
{
    for (const char* text : {"", "{}", "[]", R"({"Members":{}})", R"({"Members":7})"})
    {
        Service service;
        service.Texts = {{Base, text}};
        std::string url;
        EXPECT_THAT(service.Find("Reg.v1", url), Fails(26, "Reg.v1")) << text;
    }
    Service unreachable;
    unreachable.Failures = {{Base, 24}};
    std::string url;
    EXPECT_THAT(unreachable.Find("Reg", url), HasCode(24));
}

TEST(RegistryLookup, FilesOfWrongShape)
{
    for (const char* text :
         {"", "{}", "[]", R"({"Location":{}})", R"({"Location":[]})", R"({"Location":[7,{"Uri":7}]})",
          R"({"Location":[{"Language":"en","PublicationUri":"https://elsewhere.example/x"}]})",
          R"({"Location":[{"Language":"en","Uri":"https://evil.example/x"}]})",
          R"({"Location":[{"Language":"en","Uri":"/a\r\nX-Evil: 1"}]})"})
    {
        Service service;
        service.Texts = {{Base, Collection({Base + "/Reg.v1"})}, {Base + "/Reg.v1", text}};
        std::string url = "untouched";
        EXPECT_THAT(service.Find("Reg.v1", url), Fails(26, "The attribute registry Reg.v1 cannot be read")) << text;
        EXPECT_EQ(url, "untouched");
    }
}

TEST(RegistryLookup, ARegistryInThePlaceOfItsFileIsTaken)
{
    Service service;
    service.Texts = {{Base, Collection({Base + "/Reg.v1.json"})}, {Base + "/Reg.v1.json", R"({"RegistryEntries":{}})"}};
    std::string url;
    EXPECT_THAT(service.Find("Reg.v1", url), HasCode(0));
    EXPECT_EQ(url, Base + "/Reg.v1.json");
}

TEST(RegistryLookup, ChoiceOfLanguage)
{
    struct Row
    {
        const char* Wanted;
        std::vector<const char*> Offered;
        const char* Chosen;
    };
    const Row rows[] = {
        {"en", {"ja", "en", "zh"}, "en"},
        {"ja", {"en", "ja"}, "ja"},
        {"JA", {"en", "ja"}, "ja"},
        {"en", {"ja", "en-US"}, "en-US"},
        {"en-US", {"en-GB", "en-us"}, "en-us"},
        {"en-US", {"ja", "en"}, "en"},
        {"zh-TW", {"en", "zh-CN"}, "zh-CN"},
        {"zh_TW", {"en", "zh"}, "zh"},
        {"de", {"ja", "en"}, "en"},
        {"de", {"ja", "en-GB", "en"}, "en-GB"},
        {"de", {"ja", "zh"}, "ja"},
        {"", {"ja", "en"}, "en"},
        {"e", {"ja", "eng"}, "ja"},
        {"en", {"", "ja"}, ""},
    };
    for (const Row& row : rows)
    {
        std::string text;
        for (const char* language : row.Offered)
        {
            text += (text.empty() ? "" : ",") + std::string(R"({"Language":")") + language + R"(","Uri":"/)" +
                    language + "\"}";
        }
        EXPECT_EQ(ChooseLocation(boost::json::parse(R"({"Location":[)" + text + "]}"), row.Wanted),
                  "/" + std::string(row.Chosen))
            << row.Wanted << " of " << text;
    }
    EXPECT_EQ(ChooseLocation(boost::json::parse(R"({"Location":[{"Language":"en"},{"Uri":"/x"}]})"), "en"), "/x");
}

TEST(RegistryLookup, RegistryFilesOfRealMachines)
{
    bool any = false;
    for (const auto& machine : testdata::Machines())
    {
        if (!std::filesystem::exists(machine / "registryfile.json"))
        {
            continue;
        }
        any = true;
        const std::string identifier = RegistryIdentifier(testdata::ReadFile(machine / "bios.json"));
        Service service;
        service.Texts = {{Base, Collection({Base + "/Base.1.5.0", Base + "/" + identifier})},
                         {Base + "/" + identifier, testdata::ReadFile(machine / "registryfile.json")}};
        std::string url;
        EXPECT_THAT(service.Find(identifier, url), HasCode(0)) << machine;
        EXPECT_EQ(url.rfind("/redfish/v1/", 0), 0U) << url;
    }
    if (!any)
    {
        GTEST_SKIP() << "no answers of real machines beside this checkout";
    }
}
