#include "Fixture.h"
#include "JsonFile.h"
#include "Machine.h"
#include "SharedData.h"

#include <filesystem>

namespace
{

using namespace bmctest;
using testing::HasSubstr;
namespace fs = std::filesystem;

std::string Text(const json::value& value) { return value.is_string() ? value.get_string().c_str() : ""; }

class MachinesTest : public SimulatorTest
{
  protected:
    void SetUp() override {}
    void StartMachine(const fs::path& folder)
    {
        auto options = PlainOptions();
        options.MachineDir = folder.string();
        StartWith(options);
    }
    std::string BiosPath() { return Text(At(GetJson("/redfish/v1/Systems"), "/Members/0/@odata.id")) + "/Bios"; }

    testdata::TemporaryFolder m_Folder;
};

/// Like a file's document, save for a tag that the service adds.
void ExpectSameDocument(const json::value& served, const json::value& file)
{
    ASSERT_TRUE(file.is_object());
    const bool tagged = file.get_object().contains("@odata.etag");
    EXPECT_EQ(tagged ? served : Without(served, "@odata.etag"), file);
}

TEST_F(MachinesTest, RealMachinesAreServedAsTheyAre)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "answers of real machines are not here: " << testdata::SharedData();
    }
    for (const fs::path& folder : testdata::Machines())
    {
        SCOPED_TRACE(folder);
        StartMachine(folder);
        const json::value bios = GetJson(BiosPath());
        ExpectSameDocument(bios, ParseFile(folder / "bios.json"));

        const std::string settings = Text(At(bios, "/@Redfish.Settings/SettingsObject/@odata.id"));
        if (fs::exists(folder / "settings.json"))
        {
            ExpectSameDocument(GetJson(settings), ParseFile(folder / "settings.json"));
        }
        else if (!settings.empty())
        {
            EXPECT_EQ(At(GetJson(settings), "/Attributes"), json::object());
        }

        const json::value registries = GetJson("/redfish/v1/Registries");
        const json::value file = GetJson(Text(At(registries, "/Members/0/@odata.id")));
        EXPECT_EQ(At(file, "/Registry"), At(bios, "/AttributeRegistry"));
        if (fs::exists(folder / "registryfile.json"))
        {
            ExpectSameDocument(file, ParseFile(folder / "registryfile.json"));
        }
        const json::value locations = At(file, "/Location");
        ASSERT_TRUE(locations.is_array());
        ASSERT_FALSE(locations.get_array().empty());
        for (const json::value& location : locations.get_array())
        {
            const std::string language = Text(At(location, "/Language")).substr(0, 2);
            const fs::path registry = folder / ("registry." + language + ".json");
            const auto answer = m_Client->Get(Text(At(location, "/Uri")));
            ASSERT_TRUE(answer);
            EXPECT_EQ(answer->status, fs::exists(registry) ? 200 : 404) << language;
            if (answer->status == 200)
            {
                EXPECT_EQ(Parse(answer->body), ParseFile(registry));
            }
        }
    }
}

TEST_F(MachinesTest, SystemIsNamedAsTheBiosResourceNamesIt)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "answers of real machines are not here: " << testdata::SharedData();
    }
    const std::map<std::string, std::string> expected{{"hpe-DL360", "1"},
                                                      {"hpe-DL325_Gen10Plus_FC", "1"},
                                                      {"dmtf-example", "437XR1138R2"},
                                                      {"openstack-sushy", "437XR1138R2"},
                                                      {"ami-zt", "Self"}};
    for (const fs::path& folder : testdata::Machines())
    {
        StartMachine(folder);
        EXPECT_EQ(BiosPath(), "/redfish/v1/Systems/" + expected.at(folder.filename()) + "/Bios");
    }
}

TEST_F(MachinesTest, RealMachinesHaveNoProtectedAttributes)
{
    for (const fs::path& folder : testdata::Machines())
    {
        StartMachine(folder);
        const auto answer =
            m_Client->Post(BiosPath() + "/Actions/Oem/ZorvanBios.GetProtectedAttributes", "{}", "application/json");
        ASSERT_TRUE(answer) << folder;
        EXPECT_EQ(answer->status, 404) << folder;
        EXPECT_TRUE(At(GetJson(BiosPath()), "/Actions/Oem").is_null()) << folder;
    }
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "answers of real machines are not here: " << testdata::SharedData();
    }
}

TEST_F(MachinesTest, TreeIsServedAtItsPaths)
{
    const fs::path tree = testdata::SharedData() / "dmtf-rackmount1";
    if (!fs::exists(tree / "index.json"))
    {
        GTEST_SKIP() << "answers of real machines are not here: " << tree;
    }
    StartMachine(tree);
    int count = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(tree))
    {
        if (entry.path().filename() == "index.json")
        {
            const std::string path = "/redfish/v1/" + fs::relative(entry.path().parent_path(), tree).generic_string();
            ExpectSameDocument(GetJson(path == "/redfish/v1/." ? "/redfish/v1/" : path), ParseFile(entry.path()));
            ++count;
        }
    }
    EXPECT_GT(count, 200);
    EXPECT_EQ(At(GetJson("/redfish/v1/Registries/Base.1.5.0.json"), "/Id"), "Base.1.5.0");
    const auto removed = m_Client->Delete("/redfish/v1/Chassis");
    ASSERT_TRUE(removed);
    EXPECT_EQ(removed->status, 405);
    const auto session = m_Client->Post("/redfish/v1/SessionService/Sessions",
                                        R"({"UserName":"admin","Password":"password"})", "application/json");
    ASSERT_TRUE(session);
    EXPECT_EQ(session->status, 201);
}

TEST_F(MachinesTest, FolderOfTheBuiltInMachineIsThatMachine)
{
    StartWith(PlainOptions());
    const json::value bios = GetJson("/redfish/v1/Systems/1/Bios");
    const json::value system = GetJson("/redfish/v1/Systems/1");
    StartMachine(BMCSIM_MACHINE_DIR);
    EXPECT_EQ(GetJson("/redfish/v1/Systems/1/Bios"), bios);
    EXPECT_EQ(GetJson("/redfish/v1/Systems/1"), system);
}

TEST_F(MachinesTest, LeastMachineIsABiosResourceAlone)
{
    m_Folder.Write("bios.json", R"({"Attributes":{"A":"b"}})");
    StartMachine(m_Folder.Path());
    EXPECT_EQ(At(GetJson("/redfish/v1/Systems/1/Bios"), "/Attributes"), Parse(R"({"A":"b"})"));
    EXPECT_EQ(At(GetJson("/redfish/v1/Registries"), "/Members"), json::array());
    EXPECT_EQ(m_Client->Get("/redfish/v1/Systems/1/Bios/Settings")->status, 404);
}

TEST_F(MachinesTest, MissingSettingsObjectStaysMissing)
{
    m_Folder.Write("bios.json", R"({"@odata.id":"/redfish/v1/Systems/x/Bios","Attributes":{},"@Redfish.Settings":{}})");
    m_Folder.Write("settings.json", R"({"Attributes":{"A":1}})");
    StartMachine(m_Folder.Path());
    ExpectSameDocument(GetJson("/redfish/v1/Systems/x/Bios"), ParseFile(m_Folder.Path() / "bios.json"));
    EXPECT_EQ(m_Client->Get("/redfish/v1/Systems/x/Bios/Settings")->status, 404);
}

TEST_F(MachinesTest, ValuesOfOddKindsAndNestingAreServedUntouched)
{
    const std::string odd =
        R"({"Attributes":{"A":[1,{"b":null}],"B":1.5,"C":18446744073709551615,"D":-9223372036854775808}})";
    m_Folder.Write("bios.json", odd);
    StartMachine(m_Folder.Path());
    EXPECT_EQ(Without(GetJson("/redfish/v1/Systems/1/Bios"), "@odata.etag"), Parse(odd));
}

TEST_F(MachinesTest, TagOfTheFileIsKept)
{
    m_Folder.Write("bios.json", R"({"@odata.etag":"W/\"abc\"","Attributes":{}})");
    StartMachine(m_Folder.Path());
    EXPECT_EQ(m_Client->Get("/redfish/v1/Systems/1/Bios")->get_header_value("ETag"), "W/\"abc\"");
}

TEST_F(MachinesTest, UnusableFoldersAreNamed)
{
    struct Case
    {
        const char* File;
        std::string Content;
        const char* Reason;
    };
    const std::string deep = "{\"Attributes\":" + std::string(10000, '[') + std::string(10000, ']') + "}";
    for (const auto& [file, content, reason] : {Case{"bios.json", "{\n \"Attributes\": {\n  oops\n }\n}", "line 3"},
                                                {"bios.json", "[]", "no JSON object"},
                                                {"bios.json", "", "no JSON"},
                                                {"bios.json", R"({"Attributes":7})", "\"Attributes\""},
                                                {"bios.json", deep, "too deep"},
                                                {"settings.json", "{", "no JSON"},
                                                {"registry.en.json", "{]", "no JSON"},
                                                {"registryfile.json", "1", "no JSON object"},
                                                {"protected.json", "{}", "\"Attributes\""}})
    {
        const testdata::TemporaryFolder folder;
        folder.Write("bios.json", "{}");
        const std::string path = folder.Write(file, content);
        auto options = PlainOptions();
        options.MachineDir = folder.Path().string();
        const std::string error = StartError(options);
        EXPECT_THAT(error, HasSubstr(path));
        EXPECT_THAT(error, HasSubstr(reason)) << path;
    }
}

TEST_F(MachinesTest, FilesAndFoldersAreReadUpToTheLimits)
{
    const auto errorOf = [](const testdata::TemporaryFolder& folder)
    {
        std::string error;
        bmcsim::LoadMachine(folder.Path().string(), error);
        return error;
    };
    const std::string bios = m_Folder.Write("bios.json", "{}");
    fs::resize_file(bios, bmcsim::MaxJsonFile);
    EXPECT_THAT(errorOf(m_Folder), HasSubstr("is no JSON"));
    fs::resize_file(bios, bmcsim::MaxJsonFile + 1);
    EXPECT_THAT(errorOf(m_Folder), HasSubstr("is larger than 67108864 bytes"));

    const testdata::TemporaryFolder tree;
    const fs::path file = tree.Write("index.json", "{}");
    fs::path deepest;
    for (int depth = 0; depth < 32; ++depth)
    {
        deepest /= "a";
    }
    tree.Write(deepest / "index.json", "{}");
    EXPECT_EQ(errorOf(tree), "");
    tree.Write(deepest / "a/index.json", "{}");
    EXPECT_THAT(errorOf(tree), HasSubstr("too deep"));

    fs::remove_all(tree.Path() / "a");
    fs::create_directory(tree.Path() / "Registries");
    const auto add = [&](int number)
    { fs::create_hard_link(file, tree.Path() / "Registries" / (std::to_string(number) + ".json")); };
    for (int number = 1; number < 20000; ++number)
    {
        add(number);
    }
    EXPECT_EQ(errorOf(tree), "");
    add(20000);
    EXPECT_THAT(errorOf(tree), HasSubstr("too many files"));
}

TEST_F(MachinesTest, PlacesThatAreNoMachineAreNamed)
{
    const std::string file = m_Folder.Write("sub/file", "x");
    for (const std::string& place : {std::string("/no/such/folder"), file, (m_Folder.Path() / "sub").string()})
    {
        auto options = PlainOptions();
        options.MachineDir = place;
        EXPECT_THAT(StartError(options), HasSubstr(place));
    }
}

TEST(NormalPath, HasOneFormForEachPath)
{
    struct Case
    {
        const char* Path;
        const char* Normal;
    };
    for (const auto& [path, normal] : {Case{"", ""},
                                       {"/", "/"},
                                       {"//", "/"},
                                       {"/A", "/a"},
                                       {"/a/", "/a"},
                                       {"//A///b//", "/a/b"},
                                       {"a/B", "a/b"},
                                       {"/\xC3\x84", "/\xC3\x84"}})
    {
        EXPECT_EQ(bmcsim::NormalPath(path), normal) << path;
    }
}

} // namespace
