// A local file that stands in for the registry and the Bios resource.
#include <filesystem>

#include "JsonNodes.h"
#include "ReadingFixture.h"
#include "TemporaryFolder.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const LogLine NoFile{1, "The specified debug configfile doesn't exist."};
const LogLine NoSchema{1, "Failed to get the schema from debug config file"};

class DebugConfigFile : public FrontClassTest
{
  protected:
    testdata::TemporaryFolder m_Folder;
    std::unique_ptr<Front> m_Front = MakeBios();
};

TEST_F(DebugConfigFile, EmptyPathChangesThePathAlone)
{
    m_Front->m_DebugConfigFile = "before";
    m_Front->m_Schema = "kept";
    m_Front->m_ProcCreator->m_DebugConfigFile = "kept too";
    m_Front->SetDebugConfigFile("");
    EXPECT_EQ(m_Front->m_DebugConfigFile, "");
    EXPECT_EQ(m_Front->m_Schema, "kept");
    EXPECT_EQ(m_Front->m_ProcCreator->m_DebugConfigFile, "kept too");
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(DebugConfigFile, PathReachesFrontAndCreator)
{
    const std::string path = m_Folder.Write("debug.json", R"({"schema":{}})");
    m_Front->SetDebugConfigFile(path);
    EXPECT_EQ(m_Front->m_DebugConfigFile, path);
    EXPECT_EQ(m_Front->m_ProcCreator->m_DebugConfigFile, path);
    EXPECT_THAT(world.Calls, IsEmpty());
}

struct Content
{
    const char* Name;
    const char* File;
    const char* Schema;
};

class UsableFile : public DebugConfigFile, public testing::WithParamInterface<Content>
{
};

TEST_P(UsableFile, GivesItsSchemaSerialised)
{
    m_Front->m_Schema = "before";
    m_Front->SetDebugConfigFile(m_Folder.Write("debug.json", GetParam().File));
    EXPECT_EQ(m_Front->m_Schema, GetParam().Schema);
    EXPECT_THAT(world.Logs, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Files, UsableFile,
    testing::Values(Content{"SpacingIsLost", "{ \"schema\" : {\n  \"a\" : [ 1, 2 ]\n } }\n", R"({"a":[1,2]})"},
                    Content{"OtherKeysAreLeft", R"({"resource":{"x":1},"schema":{"b":true}})", R"({"b":true})"},
                    Content{"StringKeepsItsQuotes", R"({"schema":"text"})", R"("text")"},
                    Content{"EmptyString", R"({"schema":""})", R"("")"},
                    Content{"NullThatStandsThere", R"({"schema":null})", "null"},
                    Content{"EmptyObject", R"({"schema":{}})", "{}"}),
    [](const auto& test) { return test.param.Name; });

class UselessFile : public DebugConfigFile, public testing::WithParamInterface<Content>
{
};

TEST_P(UselessFile, LeavesTheTextOfANull)
{
    const std::string path = m_Folder.Write("debug.json", GetParam().File);
    m_Front->m_Schema = "before";
    m_Front->SetDebugConfigFile(path);
    EXPECT_EQ(m_Front->m_Schema, "null");
    EXPECT_EQ(m_Front->m_ProcCreator->m_DebugConfigFile, path);
    EXPECT_THAT(world.Logs, ElementsAre(NoSchema));
}

INSTANTIATE_TEST_SUITE_P(Files, UselessFile,
                         testing::Values(Content{"Empty", "", ""}, Content{"NoJson", "schema = {}", ""},
                                         Content{"CutShort", R"({"schema":{"a":1)", ""},
                                         Content{"TrailingGarbage", R"({"schema":{"a":1}} x)", ""},
                                         Content{"NoSuchKey", R"({"resource":{"schema":{}}})", ""},
                                         Content{"OtherCase", R"({"Schema":{}})", ""},
                                         Content{"NumberThatNoDoubleHolds", R"({"schema":{"a":1e400}})", ""},
                                         Content{"RootIsAnArray", R"([{"schema":{}}])", ""},
                                         Content{"RootIsAString", R"("schema")", ""}),
                         [](const auto& test) { return test.param.Name; });

TEST_F(DebugConfigFile, MissingFileLeavesTheTextOfANullAndAsksForNoSchema)
{
    const std::string path = (m_Folder.Path() / "none.json").string();
    m_Front->m_Schema = "before";
    m_Front->SetDebugConfigFile(path);
    EXPECT_EQ(m_Front->m_Schema, "null");
    EXPECT_EQ(m_Front->m_DebugConfigFile, path);
    EXPECT_EQ(m_Front->m_ProcCreator->m_DebugConfigFile, path);
    EXPECT_THAT(world.Logs, ElementsAre(NoFile, NoSchema));

    EXPECT_THAT(m_Front->QuerySettingManagerWithoutValue(), IsBare(0));
    EXPECT_EQ(m_Front->m_SettingManager->m_Schema, "null");
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(DebugConfigFile, IsTakenUpToTheLimit)
{
    const std::string path =
        m_Folder.Write("debug.json", R"({"schema":{"a":1}})" + std::string(MaxDebugConfigBytes - 18, ' '));
    ASSERT_EQ(std::filesystem::file_size(path), MaxDebugConfigBytes);
    m_Front->SetDebugConfigFile(path);
    EXPECT_EQ(m_Front->m_Schema, R"({"a":1})");
    EXPECT_THAT(world.Logs, IsEmpty());

    std::filesystem::resize_file(path, MaxDebugConfigBytes + 1);
    m_Front->SetDebugConfigFile(path);
    EXPECT_EQ(m_Front->m_Schema, "null");
    const LogLine tooLarge{1, "The debug configfile is larger than 67108864 bytes."};
    EXPECT_THAT(world.Logs, ElementsAre(tooLarge, NoSchema));
}

// A device that never ends must not be read for ever.
TEST_F(DebugConfigFile, AnEndlessFileIsLeft)
{
    m_Front->SetDebugConfigFile("/dev/zero");
    EXPECT_EQ(m_Front->m_Schema, "null");
    EXPECT_EQ(world.Logs.back(), NoSchema);
}

// A folder opens like a file, and only its reading fails.
TEST_F(DebugConfigFile, FolderInPlaceOfAFileLeavesTheTextOfANull)
{
    m_Front->m_Schema = "before";
    EXPECT_NO_THROW(m_Front->SetDebugConfigFile(m_Folder.Path().string()));
    EXPECT_EQ(m_Front->m_Schema, "null");
    EXPECT_EQ(m_Front->m_ProcCreator->m_DebugConfigFile, m_Folder.Path().string());
    EXPECT_THAT(world.Logs, ElementsAre(NoSchema));
}

TEST_F(DebugConfigFile, AManagerThatExistsKeepsItsSchemaUntilItIsRebuilt)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    ASSERT_THAT(m_Front->QuerySettingManager(false), IsBare(0));
    const auto before = m_Front->m_SettingManager;
    m_Front->SetDebugConfigFile(m_Folder.Write("debug.json", R"({"schema":{"from":"file"}})"));
    EXPECT_EQ(m_Front->m_SettingManager, before);
    EXPECT_EQ(before->m_Schema, Schema);
    EXPECT_EQ(m_Front->m_Schema, R"({"from":"file"})");

    world.Calls.clear();
    ASSERT_THAT(m_Front->QuerySettingManagerWithoutValue(), IsBare(0));
    EXPECT_EQ(m_Front->m_SettingManager, before);
    ASSERT_THAT(m_Front->QuerySettingManager(false), IsBare(0));
    EXPECT_NE(m_Front->m_SettingManager, before);
    EXPECT_EQ(m_Front->m_SettingManager->m_Schema, R"({"from":"file"})");
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(DebugConfigFile, AProcThatExistsIsNotReached)
{
    TellStandard(R"({"Boot":"UEFI"})");
    SettingStringMap values;
    ASSERT_THAT(m_Front->QueryGroupSettingValues(values), IsBare(0));
    m_Front->SetDebugConfigFile(
        m_Folder.Write("debug.json", R"({"schema":{},"resource":{"Attributes":{"Boot":"file"}}})"));
    EXPECT_EQ(m_Front->m_ProcCreator->m_ProcMap.at("StandardSettings")->m_DebugConfigFile, "");
    values.clear();
    ASSERT_THAT(m_Front->QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("BIOS.Boot", "UEFI")));
}

TEST_F(DebugConfigFile, AWholeFileServesAQueryWithoutARequest)
{
    Know("Boot");
    m_Front->SetDebugConfigFile(
        m_Folder.Write("debug.json", R"({"schema":{"a":1},"resource":{"Attributes":{"Boot":"file"}}})"));
    SettingStringMap values;
    EXPECT_THAT(m_Front->QuerySettingValue("Boot", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("BIOS.Boot", "file")));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_EQ(m_Front->m_SettingManager->m_Schema, R"({"a":1})");
}

TEST_F(DebugConfigFile, OperationIsThatOfTheInterface)
{
    RedfishConfigProc& interface = *m_Front;
    interface.SetDebugConfigFile(m_Folder.Write("debug.json", R"({"schema":{"a":1}})"));
    EXPECT_EQ(m_Front->m_Schema, R"({"a":1})");
}

} // namespace
