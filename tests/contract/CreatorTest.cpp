#include "BiosRedfishProcCreator.h"

#include <cstdio>
#include <fstream>
#include <optional>

#include "BiosProtectedSettingAssistant.h"
#include "BiosProtectedSettingProc.h"
#include "BiosRedfishConfigProc.h"
#include "BiosStandardSettingAssistant.h"
#include "BiosStandardSettingProc.h"
#include "Contract.h"
#include "ResourceNames.h"

using doubles::LogLine;
using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using namespace Tavrine;

namespace
{

constexpr int UefiType = 5;

class Creator : public ContractTest
{
  protected:
    BiosRedfishProcCreator& Make(int systemType, bool allowProtected = true)
    {
        Config_Options options{.HexValueMode = true, .ReservedOption = true, .LegacyNameMode = true, .OutputFormat = 1};
        options.allowProtectedSettings = allowProtected;
        m_Creator.emplace(m_Connection, static_cast<ConfigurateSupportedSystemType>(systemType), options);
        m_Creator->m_Prefix = "First";
        m_Creator->m_SecondPrefix = "Second";
        world.Logs.clear();
        return *m_Creator;
    }

    static RedfishConfigSettingInfoStru Setting(const std::string& name, bool isProtected)
    {
        RedfishConfigSettingInfoStru info;
        info.AttributeKey = name;
        info.IsProtected = isProtected;
        return info;
    }

    ~Creator() override { std::remove(DebugPath().c_str()); }

    /// A path of its own for each test, since tests may run side by side.
    static std::string DebugPath()
    {
        return testing::TempDir() + "creator_" + testing::UnitTest::GetInstance()->current_test_info()->name() +
               ".json";
    }

    /// Writes a debug file whose "resource" holds one attribute.
    static std::string DebugFile()
    {
        std::ofstream(DebugPath()) << R"({"resource":{"Attributes":{"BootMode":"FromFile"}}})";
        return DebugPath();
    }

    const TavrineConnection::ConnectionInfo m_Connection{.Host = "bmc1",
                                                         .User = "operator",
                                                         .Password = "word",
                                                         .Port = 8443,
                                                         .ConnectTimeout = 3,
                                                         .RequestTimeout = 4,
                                                         .MaxResponseBytes = 5,
                                                         .Retries = 6,
                                                         .RetryPause = 7,
                                                         .ProfileId = 8,
                                                         .Flags = 9};
    std::optional<BiosRedfishProcCreator> m_Creator;
    std::shared_ptr<BiosBasicSettingProc> m_Proc;
};

TEST_F(Creator, ConstructionKeepsItsArgumentsAndMakesNoProc)
{
    const BiosRedfishProcCreator creator(m_Connection, static_cast<ConfigurateSupportedSystemType>(4),
                                         {true, false, true, false, 2});
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{4, "The size of m_CreatorMap is 2"}));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Clients, IsEmpty());
    EXPECT_THAT(creator.m_CreatorMap, ElementsAre(Pair("ProtectedSettings", _), Pair("StandardSettings", _)));
    EXPECT_THAT(creator.m_ProcMap, IsEmpty());
    EXPECT_EQ(creator.m_SystemType, 4);
    EXPECT_TRUE(creator.m_Options.HexValueMode && creator.m_Options.ReservedOption);
    EXPECT_FALSE(creator.m_Options.allowProtectedSettings || creator.m_Options.LegacyNameMode);
    EXPECT_EQ(creator.m_Options.OutputFormat, 2);
    EXPECT_EQ(creator.m_Prefix + creator.m_SecondPrefix + creator.m_DebugConfigFile, "");
}

TEST_F(Creator, ConstructionCopiesTheWholeConnection)
{
    const TavrineConnection::ConnectionInfo& copy = Make(UefiType).m_ConnectionInfo;
    EXPECT_EQ(copy.Host, "bmc1");
    EXPECT_EQ(copy.User, "operator");
    EXPECT_EQ(copy.Password, "word");
    EXPECT_EQ(copy.Port, 8443);
    EXPECT_EQ(copy.ConnectTimeout, 3);
    EXPECT_EQ(copy.RequestTimeout, 4);
    EXPECT_EQ(copy.MaxResponseBytes, 5U);
    EXPECT_EQ(copy.Retries, 6U);
    EXPECT_EQ(copy.RetryPause, 7U);
    EXPECT_EQ(copy.ProfileId, 8U);
    EXPECT_EQ(copy.Flags, 9);
}

TEST_F(Creator, DestructionLogsThenLetsItsProcsGo)
{
    ProcMap procs;
    Make(UefiType).CreateAllProcs(procs);
    world.Logs.clear();
    m_Creator.reset();
    EXPECT_THAT(world.Logs,
                ElementsAre(LogLine{4, "Entering  Tavrine::BiosRedfishProcCreator::~BiosRedfishProcCreator"},
                            LogLine{4, "Exiting  Tavrine::BiosRedfishProcCreator::~BiosRedfishProcCreator"}));
    EXPECT_EQ(procs.at(StandardSettings).use_count(), 1);
    EXPECT_EQ(procs.at(ProtectedSettings).use_count(), 1);
}

TEST_F(Creator, IsNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<BiosRedfishProcCreator>);
    EXPECT_FALSE(std::is_copy_assignable_v<BiosRedfishProcCreator>);
    EXPECT_FALSE(std::is_polymorphic_v<BiosRedfishProcCreator>);
}

TEST_F(Creator, FactoriesMakeTheProcOfTheirResource)
{
    BiosRedfishProcCreator& creator = Make(UefiType);
    const auto standard = creator.m_CreatorMap.at(StandardSettings)();
    const auto secret = creator.m_CreatorMap.at(ProtectedSettings)();
    ASSERT_NE(dynamic_cast<BiosStandardSettingProc*>(standard.get()), nullptr);
    ASSERT_NE(dynamic_cast<BiosProtectedSettingProc*>(secret.get()), nullptr);
    EXPECT_NE(dynamic_cast<BiosStandardSettingAssistant*>(standard->m_Assistant.get()), nullptr);
    EXPECT_NE(dynamic_cast<BiosProtectedSettingAssistant*>(secret->m_Assistant.get()), nullptr);
    EXPECT_THAT(world.Clients, ElementsAre(Pair("bmc1", 6), Pair("bmc1", 6)));
    for (const auto& proc : {standard, secret})
    {
        EXPECT_TRUE(proc->m_Options.HexValueMode && proc->m_Options.allowProtectedSettings);
        EXPECT_EQ(proc->m_Options.OutputFormat, 1);
        // Preparing is not the factory's work.
        EXPECT_EQ(proc->m_Prefix + proc->m_SecondPrefix, "");
        EXPECT_EQ(proc->m_SystemType, 0);
    }
    EXPECT_THAT(creator.m_ProcMap, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(Creator, AllProcsOfAUefiSystemAreBothWhateverTheOption)
{
    for (const bool allowProtected : {true, false})
    {
        ProcMap procs = {{"old", nullptr}};
        Make(UefiType, allowProtected).CreateAllProcs(procs);
        ASSERT_THAT(procs, ElementsAre(Pair("ProtectedSettings", testing::NotNull()),
                                       Pair("StandardSettings", testing::NotNull())));
        EXPECT_NE(dynamic_cast<BiosProtectedSettingProc*>(procs.at(ProtectedSettings).get()), nullptr);
        EXPECT_NE(dynamic_cast<BiosStandardSettingProc*>(procs.at(StandardSettings).get()), nullptr);
        EXPECT_EQ(m_Creator->m_ProcMap, procs);
    }
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(Creator, AllProcsOfAnyOtherSystemAreTheStandardOne)
{
    for (const int systemType : {0, 1, 4, 6})
    {
        ProcMap procs = {{"old", nullptr}};
        Make(systemType).CreateAllProcs(procs);
        EXPECT_THAT(procs, ElementsAre(Pair("StandardSettings", testing::NotNull()))) << systemType;
    }
}

TEST_F(Creator, AllProcsArePrepared)
{
    ProcMap procs;
    Make(UefiType).CreateAllProcs(procs);
    for (const auto& [resource, proc] : procs)
    {
        EXPECT_EQ(proc->m_SystemType, UefiType) << resource;
        EXPECT_EQ(proc->m_Prefix, "First") << resource;
        EXPECT_EQ(proc->m_SecondPrefix, "Second") << resource;
    }
}

TEST_F(Creator, AllProcsAskedTwiceAreTheSameObjects)
{
    ProcMap first;
    ProcMap second;
    BiosRedfishProcCreator& creator = Make(UefiType);
    creator.CreateAllProcs(first);
    creator.CreateAllProcs(second);
    EXPECT_EQ(first, second);
    EXPECT_EQ(first.at(StandardSettings).use_count(), 3);
    EXPECT_EQ(first.at(ProtectedSettings).use_count(), 3);
    EXPECT_EQ(world.Clients.size(), 2U);
}

TEST_F(Creator, AllProcsAfterOneSettingAreThatProcAlone)
{
    for (const bool isProtected : {false, true})
    {
        BiosRedfishProcCreator& creator = Make(UefiType);
        ASSERT_THAT(creator.CreateProcForSetting(Setting("A", isProtected), m_Proc), IsBare(0));
        ProcMap procs;
        creator.CreateAllProcs(procs);
        EXPECT_THAT(procs, ElementsAre(Pair(isProtected ? "ProtectedSettings" : "StandardSettings", m_Proc)));

        ASSERT_THAT(creator.CreateProcForSetting(Setting("B", !isProtected), m_Proc), IsBare(0));
        creator.CreateAllProcs(procs);
        EXPECT_EQ(procs.size(), 2U);
    }
}

TEST_F(Creator, OneSettingAfterAllProcsTakesTheExistingProc)
{
    ProcMap procs;
    BiosRedfishProcCreator& creator = Make(UefiType);
    creator.CreateAllProcs(procs);
    ASSERT_THAT(creator.CreateProcForSetting(Setting("A", true), m_Proc), IsBare(0));
    EXPECT_EQ(m_Proc, procs.at(ProtectedSettings));
    ASSERT_THAT(creator.CreateProcForSetting(Setting("A", false), m_Proc), IsBare(0));
    EXPECT_EQ(m_Proc, procs.at(StandardSettings));
}

TEST_F(Creator, AllProcsAreTakenOverWhereTheOutputIsTheOwnMap)
{
    BiosRedfishProcCreator& creator = Make(UefiType);
    creator.CreateAllProcs(creator.m_ProcMap);
    EXPECT_THAT(creator.m_ProcMap, ElementsAre(Pair("ProtectedSettings", testing::NotNull()),
                                               Pair("StandardSettings", testing::NotNull())));
}

TEST_F(Creator, AllProcsComeFromTheFactories)
{
    BiosRedfishProcCreator& creator = Make(UefiType);
    const auto made = std::make_shared<BiosBasicSettingProc>();
    creator.m_CreatorMap.clear();
    ProcMap procs = {{"old", nullptr}};
    creator.CreateAllProcs(procs);
    EXPECT_THAT(procs, IsEmpty());

    creator.m_CreatorMap["Further"] = [made] { return made; };
    creator.CreateAllProcs(procs);
    EXPECT_THAT(procs, ElementsAre(Pair("Further", made)));
    EXPECT_EQ(made->m_Prefix, "First");
}

TEST_F(Creator, SettingIsStandardProtectedOrHidden)
{
    struct Case
    {
        int SystemType;
        bool IsProtected;
        bool AllowProtected;
        const char* Resource;
    };
    const std::vector<Case> table = {
        {0, false, false, "StandardSettings"},        {0, true, false, "StandardSettings"},
        {0, true, true, "StandardSettings"},          {1, true, false, "StandardSettings"},
        {4, true, false, "StandardSettings"},         {6, true, false, "StandardSettings"},
        {UefiType, false, false, "StandardSettings"}, {UefiType, false, true, "StandardSettings"},
        {UefiType, true, true, "ProtectedSettings"},
    };
    for (const Case& row : table)
    {
        SCOPED_TRACE(testing::Message() << row.SystemType << row.IsProtected << row.AllowProtected);
        BiosRedfishProcCreator& creator = Make(row.SystemType, row.AllowProtected);
        m_Proc.reset();
        EXPECT_THAT(creator.CreateProcForSetting(Setting("BootMode", row.IsProtected), m_Proc), IsBare(0));
        ASSERT_NE(m_Proc, nullptr);
        EXPECT_THAT(creator.m_ProcMap, ElementsAre(Pair(row.Resource, m_Proc)));
        EXPECT_EQ(m_Proc->m_SystemType, row.SystemType);
        EXPECT_EQ(m_Proc->m_Prefix, "First");
        EXPECT_EQ(m_Proc->m_SecondPrefix, "Second");
        EXPECT_THAT(world.Logs, IsEmpty());
    }
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(Creator, HiddenSettingIsRefusedAndLeavesEverythingAsItWas)
{
    BiosRedfishProcCreator& creator = Make(UefiType, false);
    const auto before = std::make_shared<BiosBasicSettingProc>();
    m_Proc = before;
    EXPECT_THAT(creator.CreateProcForSetting(Setting("AdminKey", true), m_Proc),
                IsResult(34, "The operation on setting AdminKey fails since it is hidden.", ""));
    EXPECT_EQ(m_Proc, before);
    EXPECT_THAT(creator.m_ProcMap, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "setting is protected."}));
}

TEST_F(Creator, HiddenSettingIsRefusedThoughItsProcExists)
{
    ProcMap procs;
    BiosRedfishProcCreator& creator = Make(UefiType, false);
    creator.CreateAllProcs(procs);
    EXPECT_THAT(creator.CreateProcForSetting(Setting("AdminKey", true), m_Proc),
                IsResult(34, "The operation on setting AdminKey fails since it is hidden.", ""));
    EXPECT_EQ(m_Proc, nullptr);
    EXPECT_EQ(creator.m_ProcMap, procs);
}

TEST_F(Creator, HiddenSettingWithoutAKeyThrows)
{
    BiosRedfishProcCreator& creator = Make(UefiType, false);
    RedfishConfigSettingInfoStru info;
    info.IsProtected = true;
    EXPECT_THROW(creator.CreateProcForSetting(info, m_Proc), std::bad_optional_access);
    EXPECT_EQ(m_Proc, nullptr);
    EXPECT_THAT(creator.m_ProcMap, IsEmpty());
}

TEST_F(Creator, SettingsOfOneResourceShareTheirProc)
{
    BiosRedfishProcCreator& creator = Make(UefiType);
    std::shared_ptr<BiosBasicSettingProc> second;
    ASSERT_THAT(creator.CreateProcForSetting(Setting("A", false), m_Proc), IsBare(0));
    ASSERT_THAT(creator.CreateProcForSetting(Setting("B", false), second), IsBare(0));
    EXPECT_EQ(m_Proc, second);
    EXPECT_EQ(m_Proc.use_count(), 3);
    EXPECT_EQ(world.Clients.size(), 1U);
}

TEST_F(Creator, SettingWithoutAFactoryAnswersThirteen)
{
    BiosRedfishProcCreator& creator = Make(UefiType);
    creator.m_CreatorMap.erase(ProtectedSettings);
    const auto before = std::make_shared<BiosBasicSettingProc>();
    m_Proc = before;
    EXPECT_THAT(creator.CreateProcForSetting(Setting("A", true), m_Proc), IsBare(13));
    EXPECT_EQ(m_Proc, before);
    EXPECT_THAT(creator.m_ProcMap, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(Creator, SettingWhoseFactoryGivesNothingAnswersThirteen)
{
    BiosRedfishProcCreator& creator = Make(0);
    creator.m_CreatorMap[StandardSettings] = [] { return nullptr; };
    m_Proc = std::make_shared<BiosBasicSettingProc>();
    EXPECT_THAT(creator.CreateProcForSetting(Setting("A", false), m_Proc), IsBare(13));
    EXPECT_EQ(m_Proc, nullptr);
    EXPECT_THAT(creator.m_ProcMap, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(Creator, EmptyFactoryThrows)
{
    BiosRedfishProcCreator& creator = Make(0);
    creator.m_CreatorMap[StandardSettings] = nullptr;
    ProcMap procs = {{"old", nullptr}};
    EXPECT_THROW(creator.CreateProcForSetting(Setting("A", false), m_Proc), std::bad_function_call);
    EXPECT_THROW(creator.CreateAllProcs(procs), std::bad_function_call);
    EXPECT_THAT(procs, IsEmpty());
    EXPECT_THAT(creator.m_ProcMap, IsEmpty());
}

TEST_F(Creator, PrefixesReachProcsThatAreMadeLaterOnly)
{
    BiosRedfishProcCreator& creator = Make(UefiType);
    ASSERT_THAT(creator.CreateProcForSetting(Setting("A", false), m_Proc), IsBare(0));
    creator.m_Prefix = "Third";
    creator.m_SecondPrefix = "Fourth";
    ASSERT_THAT(creator.CreateProcForSetting(Setting("B", false), m_Proc), IsBare(0));
    EXPECT_EQ(m_Proc->m_Prefix, "First");
    EXPECT_EQ(m_Proc->m_SecondPrefix, "Second");
    ASSERT_THAT(creator.CreateProcForSetting(Setting("C", true), m_Proc), IsBare(0));
    EXPECT_EQ(m_Proc->m_Prefix, "Third");
    EXPECT_EQ(m_Proc->m_SecondPrefix, "Fourth");
}

TEST_F(Creator, DebugFileReachesTheStandardProcAlone)
{
    ProcMap procs;
    BiosRedfishProcCreator& creator = Make(UefiType);
    creator.m_DebugConfigFile = DebugFile();
    creator.CreateAllProcs(procs);
    EXPECT_EQ(procs.at(StandardSettings)->m_DebugConfigFile, creator.m_DebugConfigFile);
    EXPECT_EQ(procs.at(ProtectedSettings)->m_DebugConfigFile, "");

    SettingStringMap values;
    EXPECT_THAT(procs.at(StandardSettings)->QuerySettingValue("BootMode", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Second", R"({"BootMode":"FromFile"})")));
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(Creator, DebugFileReachesAStandardProcMadeForOneSetting)
{
    BiosRedfishProcCreator& creator = Make(0);
    creator.m_DebugConfigFile = DebugFile();
    ASSERT_THAT(creator.CreateProcForSetting(Setting("BootMode", false), m_Proc), IsBare(0));
    EXPECT_EQ(m_Proc->m_DebugConfigFile, creator.m_DebugConfigFile);
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(Creator, DebugFileSetLaterDoesNotReachAProc)
{
    BiosRedfishProcCreator& creator = Make(0);
    ASSERT_THAT(creator.CreateProcForSetting(Setting("BootMode", false), m_Proc), IsBare(0));
    creator.m_DebugConfigFile = DebugFile();
    ASSERT_THAT(creator.CreateProcForSetting(Setting("BootMode", false), m_Proc), IsBare(0));
    EXPECT_EQ(m_Proc->m_DebugConfigFile, "");
}

TEST_F(Creator, DebugFileOfTheFrontObjectReachesTheStandardProcIfSetInTime)
{
    world.Settings["BootMode"].AttributeKey = "BootMode";
    const std::string path = DebugFile();
    BiosRedfishConfigProc front(m_Connection, SystemTypeBios, {});
    front.m_Schema = "{}";
    front.SetDebugConfigFile(path);
    SettingStringMap values;
    EXPECT_THAT(front.QuerySettingValue("BootMode", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("BIOS.BootMode", "FromFile")));
    EXPECT_THAT(world.Calls, IsEmpty());
}

} // namespace
