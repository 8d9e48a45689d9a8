#include "State.h"

#include "Fixture.h"
#include "SharedData.h"

#include <chrono>
#include <filesystem>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

using namespace bmctest;
using bmcsim::State;
using bmcsim::Values;
using testing::HasSubstr;

class StateTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string error;
        auto machine = bmcsim::LoadMachine("", error);
        ASSERT_TRUE(machine) << error;
        m_Machine = std::move(*machine);
    }
    std::string File() const { return (m_Folder.Path() / "state.json").string(); }
    std::unique_ptr<State> Open(const std::string& file, std::string& error) const
    {
        return State::Open(m_Machine, file, error);
    }
    std::size_t FilesInFolder() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_Folder.Path()), {}));
    }

    testdata::TemporaryFolder m_Folder;
    bmcsim::Machine m_Machine;
};

TEST_F(StateTest, MissingFileIsMadeWithTheMachinesValues)
{
    std::string error;
    const auto state = Open(File(), error);
    ASSERT_TRUE(state) << error;
    const json::value file = ParseFile(File());
    EXPECT_EQ(At(file, "/Effective"), At(ParseFile(BMCSIM_MACHINE_DIR "/bios.json"), "/Attributes"));
    EXPECT_EQ(At(file, "/ProtectedEffective"), At(ParseFile(BMCSIM_MACHINE_DIR "/protected.json"), "/Attributes"));
    EXPECT_EQ(At(file, "/Pending"), json::object());
    EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(StateTest, FileIsOneSimulatorsAtATime)
{
    constexpr std::chrono::milliseconds none(0);
    const std::string taken = "state file '" + File() + "' is in use by another simulator";
    std::string error;
    auto first = Open(File(), error);
    ASSERT_TRUE(first) << error;
    EXPECT_FALSE(State::Open(m_Machine, File(), error, none));
    EXPECT_EQ(error, taken);

    const auto enter = [](Values& values)
    {
        values.Pending["BootFailLimit"] = 3;
        return true;
    };
    EXPECT_TRUE(first->Update(enter)); // another file has the name now
    EXPECT_FALSE(State::Open(m_Machine, File(), error, none));
    EXPECT_EQ(error, taken);

    // Another one waits for its end.
    std::thread ends([&] { first.reset(); });
    const auto second = Open(File(), error);
    ends.join();
    ASSERT_TRUE(second) << error;
    EXPECT_EQ(second->Current()->Pending.at("BootFailLimit"), 3);
    EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(StateTest, ManyThatMakeTheFileAtOnceTakeTurns)
{
    const auto takeTurns = [this](const std::string& setting)
    {
        std::string error;
        const auto state = Open(File(), error);
        ASSERT_TRUE(state) << error;
        EXPECT_TRUE(state->Update(
            [&](Values& values)
            {
                values.Pending[setting] = 1;
                return true;
            }))
            << state->Trouble();
    };
    std::vector<std::thread> threads;
    for (const char* setting : {"A", "B", "C", "D", "E", "F", "G", "H"})
    {
        threads.emplace_back(takeTurns, setting);
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(At(ParseFile(File()), "/Pending").as_object().size(), 8U);
    EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(StateTest, FileThatHasGoneIsNotMadeAnewOverAnothers)
{
    std::string error;
    const auto first = Open(File(), error);
    ASSERT_TRUE(first) << error;
    std::filesystem::remove(File());
    const auto second = Open(File(), error);
    ASSERT_TRUE(second) << error;
    EXPECT_FALSE(first->Update([](Values&) { return true; }));
    EXPECT_THAT(first->Trouble(), HasSubstr("cannot write state file '" + File() + "'"));
    EXPECT_TRUE(second->Update([](Values&) { return true; }));
}

TEST_F(StateTest, FileIsForItsOwnerAlone)
{
    std::string error;
    ASSERT_TRUE(Open(File(), error)) << error;
    struct stat status
    {
    };
    ASSERT_EQ(stat(File().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(StateTest, ReplacedValuesAreThereInTheNextRun)
{
    std::string error;
    {
        const auto state = Open(File(), error);
        ASSERT_TRUE(state) << error;
        EXPECT_TRUE(state->Update(
            [](Values& values)
            {
                values.Effective["AssetTag"] = "new – tag";
                values.Pending["BootPromptSeconds"] = 9;
                values.ProtectedPending["TpmState"] = "Hidden";
                values.Effective["DiagnosticSeed"] = std::uint64_t{18446744073709551615U};
                values.Files["custom_default"] = "a\nb";
                values.Outcome = {{"Time", "2024-01-02T03:04:05Z"}};
                values.DefaultsPending = true;
                values.PoweredOff = true;
                return true;
            }));
        EXPECT_EQ(state->Trouble(), "");
    }
    const auto state = Open(File(), error);
    ASSERT_TRUE(state) << error;
    const Values values = *state->Current();
    EXPECT_EQ(values.Effective.at("AssetTag"), "new – tag");
    EXPECT_EQ(values.Effective.at("DiagnosticSeed"), std::uint64_t{18446744073709551615U});
    EXPECT_EQ(values.Pending.at("BootPromptSeconds"), 9);
    EXPECT_EQ(values.ProtectedPending.at("TpmState"), "Hidden");
    EXPECT_EQ(values.Files.at("custom_default"), "a\nb");
    EXPECT_EQ(values.Outcome.at("Time"), "2024-01-02T03:04:05Z");
    EXPECT_TRUE(values.DefaultsPending);
    EXPECT_TRUE(values.PoweredOff);
    EXPECT_FALSE(values.Starting);
    EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(StateTest, FileOfTheFirstVersionIsStillRead)
{
    m_Folder.Write("state.json", R"({"Version":1,"Machine":"1/BiosAttributeRegistryZS22.v1_4_0",
        "Effective":{"AssetTag":"old"},"Pending":{"BootPromptSeconds":9},"ProtectedEffective":{"TpmState":"Hidden"},
        "ProtectedPending":{"TpmClear":true}})");
    std::string error;
    const auto state = Open(File(), error);
    ASSERT_TRUE(state) << error;
    const Values values = *state->Current();
    EXPECT_EQ(values.Effective, Parse(R"({"AssetTag":"old"})"));
    EXPECT_EQ(values.Pending, Parse(R"({"BootPromptSeconds":9})"));
    EXPECT_EQ(values.ProtectedEffective, Parse(R"({"TpmState":"Hidden"})"));
    EXPECT_EQ(values.ProtectedPending, Parse(R"({"TpmClear":true})"));
    EXPECT_TRUE(values.Files.empty());
    EXPECT_FALSE(values.DefaultsPending || values.PoweredOff || values.Starting);
}

TEST_F(StateTest, ChangeThatIsNotToBeLeavesValuesAndFileAlone)
{
    std::string error;
    const auto state = Open(File(), error);
    ASSERT_TRUE(state) << error;
    const std::string before = testdata::ReadFile(File());
    const auto standing = state->Current();
    EXPECT_TRUE(state->Update(
        [](Values& values)
        {
            values.Effective.clear();
            return false;
        }));
    EXPECT_EQ(state->Current(), standing);
    EXPECT_EQ(testdata::ReadFile(File()), before);
}

TEST_F(StateTest, ServiceShowsTheValuesOfTheFile)
{
    std::string error;
    {
        const auto state = Open(File(), error);
        ASSERT_TRUE(state) << error;
        ASSERT_TRUE(state->Update(
            [](Values& values)
            {
                values.Effective["AssetTag"] = "changed";
                values.Pending["BootPromptSeconds"] = 9;
                values.ProtectedEffective["TpmState"] = "Hidden";
                values.ProtectedPending["TpmClear"] = true;
                return true;
            }));
    }
    auto options = PlainOptions();
    const auto fresh = Start(options);
    options.StateFile = File();
    const auto simulator = Start(options);
    ASSERT_TRUE(fresh && simulator);
    const auto client = Connect(*simulator);
    const auto bios = client->Get("/redfish/v1/Systems/1/Bios");
    ASSERT_TRUE(bios);
    EXPECT_EQ(At(Parse(bios->body), "/Attributes/AssetTag"), "changed");
    EXPECT_NE(bios->get_header_value("ETag"),
              Connect(*fresh)->Get("/redfish/v1/Systems/1/Bios")->get_header_value("ETag"));
    EXPECT_EQ(At(Parse(client->Get("/redfish/v1/Systems/1/Bios/Settings")->body), "/Attributes"),
              Parse(R"({"BootPromptSeconds":9})"));
    const std::string action = "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.GetProtectedAttributes";
    EXPECT_EQ(At(Parse(client->Post(action, "{}", "application/json")->body), "/Attributes/TpmState"), "Hidden");
    EXPECT_EQ(Parse(client->Post(action, R"({"Pending":true})", "application/json")->body),
              Parse(R"({"Attributes":{"TpmClear":true}})"));
}

TEST_F(StateTest, FileOfNoUseIsNamedAndLeftAlone)
{
    struct Case
    {
        const char* Content;
        const char* Reason;
    };
    for (const auto& [content, reason] :
         {Case{"", "no JSON"},
          {"{", "line 1"},
          {"{\n\"Version\": 1,\n}", "line 3"},
          {"[]", "no JSON object"},
          {"{}", "\"Version\" 1 to 2"},
          {R"({"Version":0})", "\"Version\" 1 to 2"},
          {R"({"Version":3})", "\"Version\" 1 to 2"},
          {R"({"Version":"1"})", "\"Version\" 1 to 2"},
          {R"({"Version":1})", "belongs to machine ''"},
          {R"({"Version":1,"Machine":"7/Other"})", "7/Other"},
          {R"({"Version":1,"Machine":"1/BiosAttributeRegistryZS22.v1_4_0"})", "\"Effective\""},
          {R"({"Version":1,"Machine":"1/BiosAttributeRegistryZS22.v1_4_0","Effective":[],"Pending":{}})",
           "\"Effective\""},
          {R"({"Version":1,"Machine":"1/BiosAttributeRegistryZS22.v1_4_0","Effective":{},"Pending":{}})",
           "\"ProtectedEffective\""},
          {R"({"Version":2,"Machine":"1/BiosAttributeRegistryZS22.v1_4_0","Effective":{},"Pending":{},
               "ProtectedEffective":{},"ProtectedPending":{},"Outcome":{}})",
           "\"Files\""},
          {R"({"Version":2,"Machine":"1/BiosAttributeRegistryZS22.v1_4_0","Effective":{},"Pending":{},
               "ProtectedEffective":{},"ProtectedPending":{},"Files":{},"Outcome":{},"System":{},"DefaultsPending":1})",
           "\"DefaultsPending\""}})
    {
        m_Folder.Write("state.json", content);
        auto options = PlainOptions();
        options.StateFile = File();
        const std::string error = StartError(options);
        EXPECT_THAT(error, HasSubstr(File())) << content;
        EXPECT_THAT(error, HasSubstr(reason)) << content;
        EXPECT_EQ(testdata::ReadFile(File()), content);
    }
}

TEST_F(StateTest, PipeIsRefusedAtOnce)
{
    auto options = PlainOptions();
    options.StateFile = File();
    ASSERT_EQ(mkfifo(options.StateFile.c_str(), 0600), 0);
    EXPECT_EQ(StartError(options), "state file cannot read '" + File() + "': it is no plain file");
}

TEST_F(StateTest, FileThatCannotBeMadeIsNamed)
{
    auto options = PlainOptions();
    options.StateFile = (m_Folder.Path() / "missing" / "state.json").string();
    EXPECT_THAT(StartError(options), HasSubstr(options.StateFile));
    options.StateFile = m_Folder.Path().string();
    EXPECT_THAT(StartError(options), HasSubstr(options.StateFile));
}

TEST_F(StateTest, ChangeThatCannotBeSavedIsToldAndUndone)
{
    std::string error;
    const std::filesystem::path folder = m_Folder.Path() / "gone";
    std::filesystem::create_directory(folder);
    const auto state = Open((folder / "state.json").string(), error);
    ASSERT_TRUE(state) << error;
    std::filesystem::remove_all(folder);
    const auto standing = state->Current();
    EXPECT_FALSE(state->Update(
        [](Values& values)
        {
            values.Effective["AssetTag"] = "lost";
            return true;
        }));
    EXPECT_THAT(state->Trouble(), HasSubstr((folder / "state.json").string()));
    EXPECT_EQ(state->Current(), standing);
}

TEST_F(StateTest, WithoutAFileNothingIsKept)
{
    std::string error;
    const auto state = Open("", error);
    ASSERT_TRUE(state) << error;
    EXPECT_TRUE(state->Update(
        [](Values& values)
        {
            values.Effective["AssetTag"] = "kept in memory";
            return true;
        }));
    EXPECT_EQ(state->Current()->Effective.at("AssetTag"), "kept in memory");
    EXPECT_EQ(state->Trouble(), "");
}

} // namespace
