// Attributes and files behind the OEM actions.

#include "ChangeFixture.h"
#include "SharedData.h"

namespace
{

using namespace bmctest;
using testing::ElementsAre;

class ProtectedTest : public ChangeTest
{
};

TEST_F(ProtectedTest, ChangesWaitForTheNextStart)
{
    const json::value before = Protected(false);
    const auto answer = Post(WriteProtected, R"( {"Attributes":{ "TpmState" : "Hidden","TpmClear" : true }} )");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_THAT(
        Messages(answer),
        ElementsAre("Success", "ResetRequired|/redfish/v1/Systems/1/Actions/ComputerSystem.Reset|ForceRestart"));
    EXPECT_EQ(Protected(false), before);
    EXPECT_EQ(Protected(true), Parse(R"({"TpmState":"Hidden","TpmClear":true})"));
    EXPECT_EQ(Pending(), json::object());
    Restart();
    EXPECT_EQ(Protected(true), json::object());
    EXPECT_EQ(At(Protected(false), "/TpmState"), "Hidden");
    EXPECT_EQ(At(Protected(false), "/TpmClear"), true);
    EXPECT_THAT(DescribeMessages(At(GetJson(BiosPath), "/@Redfish.Settings/Messages")), ElementsAre("Success"));
}

TEST_F(ProtectedTest, BadChangesAreRefusedAsAWhole)
{
    struct Case
    {
        const char* Body;
        std::vector<std::string> Told;
    };
    for (const auto& [body, told] :
         {Case{R"({"Attributes":{"TpmState":"hidden","TpmClear":true,"AssetTag":"x"}})",
               {"PropertyValueNotInList|hidden|TpmState|/Attributes/TpmState",
                "PropertyUnknown|AssetTag|/Attributes/AssetTag"}},
          {R"({"Attributes":{"MemoryEncryption":"MultiKey","MemoryEncryptionKeys":-1}})",
           {"PropertyValueOutOfRange|-1|MemoryEncryptionKeys|/Attributes/MemoryEncryptionKeys"}},
          {R"({"Attributes":{"TpmClear":"true"}})", {"PropertyValueTypeError|true|TpmClear|/Attributes/TpmClear"}},
          {R"({})", {"ActionParameterMissing|ZorvanBios.SetProtectedAttributes|Attributes"}},
          {R"({"Attributes":[]})", {"ActionParameterValueTypeError|[]|Attributes|ZorvanBios.SetProtectedAttributes"}},
          {R"({"Attributes":{},"More":1})", {"ActionParameterUnknown|ZorvanBios.SetProtectedAttributes|More"}},
          {" {", {"MalformedJSON"}}})
    {
        const auto answer = Post(WriteProtected, body);
        ASSERT_TRUE(answer) << body;
        EXPECT_EQ(answer->status, 400) << body;
        EXPECT_EQ(Messages(answer), told) << body;
    }
    EXPECT_EQ(Protected(true), json::object());
}

TEST_F(ProtectedTest, ValueOfTheOtherPlaceLocks)
{
    constexpr const char* change = R"({"Attributes":{"SecureBootKeyPolicy":"Factory"}})";
    const auto open = Post(WriteProtected, change);
    ASSERT_TRUE(open);
    EXPECT_EQ(open->status, 200) << open->body;
    Accept(R"({"SecureBoot":"Disabled"})");
    const auto locked = Post(WriteProtected, change);
    ASSERT_TRUE(locked);
    EXPECT_THAT(Messages(locked),
                ElementsAre("PropertyNotWritable|SecureBootKeyPolicy|/Attributes/SecureBootKeyPolicy"));
}

TEST_F(ProtectedTest, BothPlacesMoveAtOneStart)
{
    Accept(R"({"AssetTag":"new"})");
    ASSERT_EQ(Post(WriteProtected, R"({"Attributes":{"TpmClear":true}})")->status, 200);
    Restart();
    EXPECT_EQ(At(Effective(), "/AssetTag"), "new");
    EXPECT_EQ(At(Protected(false), "/TpmClear"), true);
}

/// The OEM file actions.
class FilesTest : public ChangeTest
{
  protected:
    json::value Content(const std::string& body = R"({"FileName":"custom_default","Volatile":false})")
    {
        const auto answer = Post(ReadFilePath, body);
        EXPECT_TRUE(answer);
        return answer && answer->status == 200 ? Parse(answer->body) : json::value(nullptr);
    }
    int Write(const json::object& parameters)
    {
        const auto answer = Post(WriteFilePath, json::serialize(parameters));
        EXPECT_TRUE(answer);
        return answer ? answer->status : 0;
    }
    static json::object File(const std::string& content, bool clear = true, bool create = true)
    {
        return {{"FileName", "custom_default"},
                {"Volatile", false},
                {"ClearWrite", clear},
                {"Content", content},
                {"Create", create}};
    }
};

TEST_F(FilesTest, FileThatWasNeverWrittenIsNotFound)
{
    const auto answer = Post(ReadFilePath, R"({"FileName":"custom_default","Volatile":false})");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 404);
    EXPECT_THAT(Messages(answer), ElementsAre("ResourceNotFound|File|custom_default"));
}

TEST_F(FilesTest, FileIsKeptExactlyFromRunToRun)
{
    testdata::TemporaryFolder folder;
    auto options = PlainOptions();
    options.StateFile = (folder.Path() / "state.json").string();
    StartWith(options);
    for (const std::string& content : {std::string("{\"a\": \"\\u00e9 \\n\"}\r\n\t  \n"), std::string(),
                                       std::string("\0x", 2), std::string("𝄞 ü <&>"), std::string(300'000, 'x')})
    {
        ASSERT_EQ(Write(File(content)), 200);
        EXPECT_EQ(At(Content(), "/Content"), json::string(content));
        StartWith(options);
        EXPECT_EQ(At(Content(), "/Content"), json::string(content));
    }
}

TEST_F(FilesTest, ParametersSayHowItIsWritten)
{
    EXPECT_EQ(Write(File("one", true, false)), 404);
    EXPECT_EQ(Write(File("one", true, true)), 200);
    EXPECT_EQ(Write(File("two", false, false)), 200);
    EXPECT_EQ(At(Content(), "/Content"), "onetwo");
    EXPECT_EQ(Write(File("three", true, false)), 200);
    EXPECT_EQ(Content(), Parse(R"({"Content":"three"})"));
}

TEST_F(FilesTest, VolatileFileStandsApartAndEndsWithTheBmc)
{
    testdata::TemporaryFolder folder;
    auto options = PlainOptions();
    options.StateFile = (folder.Path() / "state.json").string();
    StartWith(options);
    json::object file = File("volatile");
    file["Volatile"] = true;
    ASSERT_EQ(Write(file), 200);
    EXPECT_TRUE(Content().is_null());
    constexpr const char* body = R"({"FileName":"custom_default","Volatile":true})";
    EXPECT_EQ(At(Content(body), "/Content"), "volatile");
    StartWith(options);
    EXPECT_TRUE(Content(body).is_null());
}

TEST_F(FilesTest, NumberAndSizeOfFilesEndSomewhere)
{
    json::object file = File(std::string(1000'000, 'x'), false);
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_EQ(Write(file), 200) << i;
    }
    EXPECT_EQ(Write(file), 413);
    EXPECT_EQ(At(Content(), "/Content").as_string().size(), 4'000'000U);
    for (int i = 1; i < 16; ++i)
    {
        file["FileName"] = std::string(62, 'a') + std::to_string(i + 10);
        file["Content"] = "x";
        ASSERT_EQ(Write(file), 200) << i;
    }
    file["FileName"] = "one too many";
    EXPECT_EQ(Write(file), 400);
    file["FileName"] = std::string(65, 'a');
    const auto longName = Post(WriteFilePath, json::serialize(file));
    ASSERT_TRUE(longName);
    EXPECT_THAT(Messages(longName), ElementsAre(testing::StartsWith("ActionParameterValueFormatError|")));
}

TEST_F(FilesTest, ParametersAreChecked)
{
    struct Case
    {
        const char* Path;
        const char* Body;
        std::vector<std::string> Told;
    };
    for (const auto& [path, body, told] :
         {Case{ReadFilePath, "{}", {"ActionParameterMissing|ZorvanComputerSystem.DSReadFile|FileName"}},
          {ReadFilePath,
           R"({"FileName":1,"Volatile":"false"})",
           {"ActionParameterValueTypeError|1|FileName|ZorvanComputerSystem.DSReadFile",
            "ActionParameterValueTypeError|false|Volatile|ZorvanComputerSystem.DSReadFile"}},
          {ReadFilePath,
           R"({"FileName":"a","Size":1})",
           {"ActionParameterUnknown|ZorvanComputerSystem.DSReadFile|Size"}},
          {WriteFilePath,
           R"({"Create":true})",
           {"ActionParameterMissing|ZorvanComputerSystem.DSWriteFile|FileName",
            "ActionParameterMissing|ZorvanComputerSystem.DSWriteFile|Content"}},
          {WriteFilePath,
           R"({"FileName":"","Content":"","Create":true})",
           {"ActionParameterValueFormatError||FileName|ZorvanComputerSystem.DSWriteFile"}},
          {WriteFilePath,
           R"({"FileName":"../a","Content":"","Create":true})",
           {"ActionParameterValueFormatError|../a|FileName|ZorvanComputerSystem.DSWriteFile"}},
          {WriteFilePath,
           R"({"FileName":"a","Content":{"b":1},"Create":true})",
           {"ActionParameterValueTypeError|{\"b\":1}|Content|ZorvanComputerSystem.DSWriteFile"}}})
    {
        const auto answer = Post(path, body);
        ASSERT_TRUE(answer) << body;
        EXPECT_EQ(answer->status, 400) << body;
        EXPECT_EQ(Messages(answer), told) << body;
    }
}

TEST_F(FilesTest, MachineWithoutOemActionsHasNoFiles)
{
    testdata::TemporaryFolder folder;
    folder.Write("bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios","Attributes":{}})");
    auto options = PlainOptions();
    options.MachineDir = folder.Path().string();
    StartWith(options);
    for (const char* path : {ReadFilePath, WriteFilePath, WriteProtected, ReadProtected})
    {
        const auto answer = Post(path, "{}");
        ASSERT_TRUE(answer) << path;
        EXPECT_EQ(answer->status, 404) << path;
    }
}

} // namespace
