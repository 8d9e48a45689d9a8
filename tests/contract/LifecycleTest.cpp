#include "BiosRedfishConfigProc.h"
#include "BiosRedfishProcCreator.h"
#include "BiosSettingAssistant.h"
#include "Contract.h"
#include "RedfishConfigAssistant.h"
#include "RedfishConfigSettingManager.h"
#include "ResourceNames.h"

using doubles::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using namespace Tavrine;

namespace
{

const LogLine CreatorGoes{4, "Entering  Tavrine::BiosRedfishProcCreator::~BiosRedfishProcCreator"};
const LogLine CreatorGone{4, "Exiting  Tavrine::BiosRedfishProcCreator::~BiosRedfishProcCreator"};

/// A pointer to what `held` holds that notes its name when the last owner lets go.
template <typename T>
std::shared_ptr<T> Watched(std::shared_ptr<T> held, std::string name, std::vector<std::string>& released)
{
    T* object = held.get();
    return {object, [held = std::move(held), name = std::move(name), &released](T*) mutable
            {
                released.push_back(name);
                held.reset();
            }};
}

class Lifecycle : public ContractTest
{
  protected:
    BiosRedfishConfigProc Make(int systemType, const Config_Options& options = {})
    {
        return {m_Connection, static_cast<ConfigurateSupportedSystemType>(systemType), options};
    }

    /// A BMC with the standard settings BootMode and Speed.
    void TellBmc()
    {
        world.Tell("GET", "/redfish/v1/Systems", R"({"Members":[{"@odata.id":"/redfish/v1/Systems/1"}]})");
        world.Tell("SCHEMA", "/redfish/v1/Systems/1/Bios", R"({"Id":"registry"})");
        world.Tell("GET", "/redfish/v1/Systems/1/Bios",
                   doubles::BiosResource(R"({"BootMode":"Uefi","Speed":"Fast"})", "/settings", "1"));
        for (const char* name : {"BootMode", "Speed"})
        {
            world.Settings[name].AttributeKey = name;
        }
    }

    /// Fills every pointer of a front object with a watched one.
    void Watch(BiosRedfishConfigProc& proc, std::vector<std::string>& released)
    {
        proc.m_Assistant = Watched(std::make_shared<RedfishConfigAssistant>(), "base assistant", released);
        proc.m_SettingAssistant = Watched(proc.m_SettingAssistant, "setting assistant", released);
        proc.m_ProcCreator = Watched(proc.m_ProcCreator, "creator", released);
        proc.m_SettingManager =
            Watched(std::make_shared<RedfishConfigSettingManager>("{}", false, Config_Options{}), "manager", released);
    }

    /// Gives every plain member a value of its own.
    static void Fill(BiosRedfishConfigProc& proc, const std::string& mark)
    {
        proc.m_Prefix = mark + "1";
        proc.m_SecondPrefix = mark + "2";
        proc.m_SystemKind = 7;
        proc.m_Options = {true, true, true, true, 1};
        proc.m_FlushTarget = mark + "target";
        proc.m_ErrorList = {{18, mark, "S"}};
        proc.m_DebugConfigFile = mark + "file";
        proc.m_Schema = mark + "schema";
        proc.m_PendingNames = {mark + "name"};
        proc.m_PendingDependencies = {mark + "dependency"};
    }

    static void ExpectFilled(BiosRedfishConfigProc& proc, const std::string& mark)
    {
        EXPECT_EQ(proc.m_Prefix, mark + "1");
        EXPECT_EQ(proc.m_SecondPrefix, mark + "2");
        EXPECT_EQ(proc.m_SystemKind, 7);
        EXPECT_TRUE(proc.m_Options.HexValueMode && proc.m_Options.allowProtectedSettings &&
                    proc.m_Options.ReservedOption && proc.m_Options.LegacyNameMode);
        EXPECT_EQ(proc.m_Options.OutputFormat, 1);
        EXPECT_EQ(proc.m_FlushTarget, mark + "target");
        EXPECT_THAT(proc.m_ErrorList, ElementsAre(IsResult(18, mark, "S")));
        EXPECT_EQ(proc.m_DebugConfigFile, mark + "file");
        EXPECT_EQ(proc.m_Schema, mark + "schema");
        EXPECT_THAT(proc.m_PendingNames, ElementsAre(mark + "name"));
        EXPECT_THAT(proc.m_PendingDependencies, ElementsAre(mark + "dependency"));
    }

    TavrineConnection::ConnectionInfo m_Connection{.Host = "bmc1", .User = "", .Password = ""};
};

TEST_F(Lifecycle, ConstructionLogsInOrderAndSendsNothing)
{
    const BiosRedfishConfigProc proc(m_Connection, SystemTypeBios, {});
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{4, "Entering  Tavrine::BiosRedfishConfigProc::BiosRedfishConfigProc"},
                                        LogLine{4, "The size of m_CreatorMap is 2"},
                                        LogLine{4, "Exiting  Tavrine::BiosRedfishConfigProc::BiosRedfishConfigProc"}));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_EQ(proc.m_SettingManager, nullptr);
}

TEST_F(Lifecycle, PrefixesFollowTheSystemType)
{
    const std::vector<std::pair<int, std::string>> table = {{0, "BIOS"}, {1, "BIOS"}, {2, "BIOS"}, {3, "BIOS"},
                                                            {4, "BIOS"}, {5, "UEFI"}, {6, "BIOS"}, {7, "BIOS"}};
    for (const auto& [systemType, prefix] : table)
    {
        SCOPED_TRACE(systemType);
        BiosRedfishConfigProc proc = Make(systemType);
        EXPECT_EQ(proc.m_Prefix, prefix);
        EXPECT_EQ(proc.GetSecondPrefix(), prefix);
        EXPECT_EQ(proc.m_ProcCreator->m_Prefix, prefix);
        EXPECT_EQ(proc.m_ProcCreator->m_SecondPrefix, prefix);
    }
}

TEST_F(Lifecycle, ConstructionHandsConnectionTypeAndOptionsOn)
{
    const BiosRedfishConfigProc proc = Make(4, {true, false, true, false, 2});
    EXPECT_EQ(proc.m_ProcCreator->m_ConnectionInfo.Host, "bmc1");
    EXPECT_EQ(proc.m_ProcCreator->m_SystemType, 4);
    EXPECT_EQ(proc.m_SettingAssistant->m_SupportedSystemType, 4);
    EXPECT_THAT(world.Clients, ElementsAre(Pair("bmc1", testing::_)));
    for (const Config_Options& options : {proc.m_Options, proc.m_ProcCreator->m_Options})
    {
        EXPECT_TRUE(options.HexValueMode);
        EXPECT_FALSE(options.allowProtectedSettings);
        EXPECT_TRUE(options.ReservedOption);
        EXPECT_FALSE(options.LegacyNameMode);
        EXPECT_EQ(options.OutputFormat, 2);
    }
}

TEST_F(Lifecycle, EverythingElseStartsEmptyWhateverTheSystemType)
{
    for (const int systemType : {1, 4, 5})
    {
        const BiosRedfishConfigProc proc = Make(systemType);
        EXPECT_EQ(proc.m_Assistant, nullptr);
        EXPECT_EQ(proc.m_SystemKind, 0);
        EXPECT_EQ(proc.m_FlushTarget, "");
        EXPECT_THAT(proc.m_ErrorList, IsEmpty());
        EXPECT_EQ(proc.m_DebugConfigFile, "");
        EXPECT_EQ(proc.m_Schema, "");
        EXPECT_THAT(proc.m_PendingNames, IsEmpty());
        EXPECT_THAT(proc.m_PendingDependencies, IsEmpty());
        EXPECT_EQ(proc.m_SettingManager, nullptr);
        EXPECT_THAT(proc.m_ProcCreator->m_ProcMap, IsEmpty());
    }
}

TEST_F(Lifecycle, MembersStandInTheirOrder)
{
    const BiosRedfishConfigProc proc = Make(0);
    const std::vector<const void*> members = {
        &proc.m_Prefix,      &proc.m_SecondPrefix,  &proc.m_Assistant,           &proc.m_SystemKind,
        &proc.m_Options,     &proc.m_FlushTarget,   &proc.m_ErrorList,           &proc.m_DebugConfigFile,
        &proc.m_Schema,      &proc.m_PendingNames,  &proc.m_PendingDependencies, &proc.m_SettingAssistant,
        &proc.m_ProcCreator, &proc.m_SettingManager};
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end(), std::less<>()));
}

TEST_F(Lifecycle, SetPrefixReachesTheCreatorToo)
{
    BiosRedfishConfigProc proc = Make(5);
    world.Logs.clear();
    proc.SetPrefix("First", "Second");
    EXPECT_EQ(proc.m_Prefix, "First");
    EXPECT_EQ(proc.GetSecondPrefix(), "Second");
    EXPECT_EQ(proc.m_ProcCreator->m_Prefix, "First");
    EXPECT_EQ(proc.m_ProcCreator->m_SecondPrefix, "Second");
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(Lifecycle, SetPrefixTakesTheObjectsOwnMembers)
{
    BiosRedfishConfigProc proc = Make(0);
    proc.SetPrefix("First", "Second");
    proc.SetPrefix(proc.m_Prefix, proc.m_SecondPrefix);
    EXPECT_EQ(proc.m_Prefix, "First");
    EXPECT_EQ(proc.m_SecondPrefix, "Second");
    proc.SetPrefix(proc.m_SecondPrefix, proc.m_SecondPrefix);
    EXPECT_EQ(proc.m_Prefix, "Second");
    EXPECT_EQ(proc.m_ProcCreator->m_Prefix, "Second");
    EXPECT_EQ(proc.m_ProcCreator->m_SecondPrefix, "Second");
}

TEST_F(Lifecycle, SetPrefixTakesTheCreatorsMembersCrosswise)
{
    BiosRedfishConfigProc proc = Make(0);
    proc.SetPrefix("First", "Second");
    proc.SetPrefix(proc.m_ProcCreator->m_SecondPrefix, proc.m_ProcCreator->m_Prefix);
    EXPECT_EQ(proc.m_Prefix, "Second");
    EXPECT_EQ(proc.m_SecondPrefix, "First");
    EXPECT_EQ(proc.m_ProcCreator->m_Prefix, "Second");
    EXPECT_EQ(proc.m_ProcCreator->m_SecondPrefix, "First");
}

TEST_F(Lifecycle, SetPrefixWithoutACreatorStoresOnly)
{
    BiosRedfishConfigProc proc = Make(0);
    const std::shared_ptr<BiosRedfishProcCreator> creator = proc.m_ProcCreator;
    proc.m_ProcCreator.reset();
    proc.SetPrefix("First", "Second");
    EXPECT_EQ(proc.m_Prefix, "First");
    EXPECT_EQ(proc.m_SecondPrefix, "Second");
    EXPECT_EQ(creator->m_Prefix, "BIOS");
}

TEST_F(Lifecycle, SetPrefixActsOnProcsThatAreMadeLater)
{
    TellBmc();
    BiosRedfishConfigProc proc = Make(0);
    proc.SetPrefix("First", "Second");
    SettingStringMap values;
    ASSERT_THAT(proc.QuerySettingValue("BootMode", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("First.BootMode", "Uefi")));

    proc.SetPrefix("Later", "Latest");
    values.clear();
    ASSERT_THAT(proc.QuerySettingValue("BootMode", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("First.BootMode", "Uefi")));
    values.clear();
    ASSERT_THAT(proc.QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Second.BootMode", "Uefi"), Pair("Second.Speed", "Fast")));
    EXPECT_EQ(proc.m_Prefix, "Later");
    EXPECT_EQ(proc.m_ProcCreator->m_Prefix, "Later");
    EXPECT_EQ(proc.m_ProcCreator->m_SecondPrefix, "Latest");
}

TEST_F(Lifecycle, EverySettingCouldBeSupported)
{
    BiosRedfishConfigProc proc = Make(5);
    world.Logs.clear();
    for (const char* name : {"", "BootMode", "Unknown"})
    {
        EXPECT_THAT(proc.CheckSettingCouldbeSupported(name), IsBare(0));
    }
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
}

TEST_F(Lifecycle, CopyTakesEveryMemberAndSharesWhatWasFetched)
{
    std::vector<std::string> released;
    BiosRedfishConfigProc proc = Make(0);
    Watch(proc, released);
    Fill(proc, "x");
    world = {};

    BiosRedfishConfigProc copy(proc);
    ExpectFilled(copy, "x");
    EXPECT_EQ(copy.m_Assistant, proc.m_Assistant);
    EXPECT_EQ(copy.m_SettingAssistant, proc.m_SettingAssistant);
    EXPECT_EQ(copy.m_ProcCreator, proc.m_ProcCreator);
    EXPECT_EQ(copy.m_SettingManager, proc.m_SettingManager);
    EXPECT_EQ(proc.m_Assistant.use_count(), 2);
    EXPECT_EQ(proc.m_SettingAssistant.use_count(), 2);
    EXPECT_EQ(proc.m_ProcCreator.use_count(), 2);
    EXPECT_EQ(proc.m_SettingManager.use_count(), 2);
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Clients, IsEmpty());
    EXPECT_THAT(released, IsEmpty());

    Fill(copy, "y");
    ExpectFilled(copy, "y");
    ExpectFilled(proc, "x");
}

TEST_F(Lifecycle, CopyReadsThroughTheSameCaches)
{
    TellBmc();
    BiosRedfishConfigProc proc = Make(0);
    SettingStringMap values;
    ASSERT_THAT(proc.QuerySettingValue("BootMode", values), IsBare(0));
    BiosRedfishConfigProc copy(proc);
    world.Calls.clear();

    values.clear();
    EXPECT_THAT(copy.QuerySettingValue("Speed", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("BIOS.Speed", "Fast")));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(proc.m_ProcCreator->m_ProcMap, ElementsAre(Pair(StandardSettings, testing::_)));
}

TEST_F(Lifecycle, AssignmentTakesEveryMemberAndReleasesTheOldOnes)
{
    std::vector<std::string> released;
    BiosRedfishConfigProc source = Make(0);
    Fill(source, "x");
    BiosRedfishConfigProc target = Make(5);
    Watch(target, released);
    world = {};

    EXPECT_EQ(&(target = source), &target);
    ExpectFilled(target, "x");
    EXPECT_EQ(target.m_ProcCreator, source.m_ProcCreator);
    EXPECT_EQ(source.m_ProcCreator.use_count(), 2);
    EXPECT_EQ(target.m_SettingAssistant, source.m_SettingAssistant);
    EXPECT_EQ(source.m_SettingAssistant.use_count(), 2);
    EXPECT_EQ(target.m_SettingManager, nullptr);
    EXPECT_EQ(target.m_Assistant, nullptr);
    EXPECT_THAT(released, ElementsAre("base assistant", "setting assistant", "creator", "manager"));
    EXPECT_THAT(world.Logs, ElementsAre(CreatorGoes, CreatorGone));
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(Lifecycle, AssignmentToItselfKeepsEverything)
{
    std::vector<std::string> released;
    BiosRedfishConfigProc proc = Make(0);
    Watch(proc, released);
    Fill(proc, "x");
    const BiosRedfishConfigProc& same = proc;
    proc = same;
    ExpectFilled(proc, "x");
    EXPECT_EQ(proc.m_Assistant.use_count(), 1);
    EXPECT_EQ(proc.m_SettingAssistant.use_count(), 1);
    EXPECT_EQ(proc.m_ProcCreator.use_count(), 1);
    EXPECT_EQ(proc.m_SettingManager.use_count(), 1);
    EXPECT_THAT(released, IsEmpty());
}

TEST_F(Lifecycle, DestructionReleasesManagerCreatorAndAssistantInThisOrder)
{
    std::vector<std::string> released;
    {
        BiosRedfishConfigProc proc = Make(0);
        Watch(proc, released);
        world.Logs.clear();
    }
    EXPECT_THAT(released, ElementsAre("manager", "creator", "setting assistant", "base assistant"));
    EXPECT_THAT(world.Logs, ElementsAre(CreatorGoes, CreatorGone));
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(Lifecycle, DestructionOfACopyLeavesWhatIsShared)
{
    BiosRedfishConfigProc proc = Make(0);
    {
        const BiosRedfishConfigProc copy(proc);
        world.Logs.clear();
    }
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_EQ(proc.m_ProcCreator.use_count(), 1);
}

TEST_F(Lifecycle, DestructionWithQueuedChangesSendsNothing)
{
    TellBmc();
    {
        BiosRedfishConfigProc proc = Make(0);
        SettingStringMap values;
        ASSERT_THAT(proc.QuerySettingValue("BootMode", values), IsBare(0));
        const std::shared_ptr<BiosBasicSettingProc>& standard = proc.m_ProcCreator->m_ProcMap[StandardSettings];
        ASSERT_THAT(standard->PatchSettingNewValueWithOutCheck("BootMode", "Legacy", true), IsBare(0));
        ASSERT_THAT(standard->m_Assistant->m_ChangedValues, SizeIs(1));
        world.Calls.clear();
        world.Logs.clear();
    }
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(CreatorGoes, CreatorGone));
}

} // namespace
