// The setting manager's constructors, and what the front class builds a manager from.
#include <limits>

#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;

namespace
{

using Manager = RedfishConfigSettingManager;

const Config_Options SomeOptions{.HexValueMode = true,
                                 .allowProtectedSettings = true,
                                 .ReservedOption = true,
                                 .LegacyNameMode = true,
                                 .OutputFormat = 2};

void ExpectSomeOptions(const Config_Options& options)
{
    EXPECT_TRUE(options.HexValueMode);
    EXPECT_TRUE(options.allowProtectedSettings);
    EXPECT_TRUE(options.ReservedOption);
    EXPECT_TRUE(options.LegacyNameMode);
    EXPECT_EQ(options.OutputFormat, 2);
}

void ExpectTypeTable(const Manager& manager)
{
    EXPECT_THAT(manager.m_SettingTypeCreators, ElementsAre(Pair("Boolean", &Manager::createBooleanSetting),
                                                           Pair("Enumeration", &Manager::createEnumerateSetting),
                                                           Pair("Integer", &Manager::createNumericSetting),
                                                           Pair("Password", &Manager::createPasswordSetting),
                                                           Pair("String", &Manager::createTextSetting)));
}

void ExpectNothingDerived(const Manager& manager)
{
    EXPECT_THAT(manager.m_ErrorList, IsEmpty());
    EXPECT_THAT(manager.m_ForcedProperties, IsEmpty());
    EXPECT_THAT(manager.m_Settings, IsEmpty());
    EXPECT_THAT(manager.m_Groups, IsEmpty());
    EXPECT_THAT(manager.m_NotTold, IsEmpty());
}

class SettingModel : public FrontClassTest
{
  protected:
    static SettingValueMap Values(const Front& front) { return front.m_SettingManager->m_Values; }
};

// --- the manager's constructors -----------------------------------------------------------

TEST_F(SettingModel, ManagerWithValuesKeepsItsArguments)
{
    const SettingValueMap values = {{"Boot", std::string("UEFI")}, {"Cores", std::int64_t{4}}, {"Empty", std::nullopt}};
    const Manager manager(Schema, values, true, SomeOptions);
    EXPECT_EQ(manager.m_Schema, Schema);
    EXPECT_EQ(manager.m_Values, values);
    EXPECT_TRUE(manager.m_Flag);
    ExpectSomeOptions(manager.m_Options);
    ExpectTypeTable(manager);
    ExpectNothingDerived(manager);
}

TEST_F(SettingModel, ManagerWithoutValuesStartsWithNone)
{
    const Manager manager(Schema, true, SomeOptions);
    EXPECT_EQ(manager.m_Schema, Schema);
    EXPECT_THAT(manager.m_Values, IsEmpty());
    EXPECT_TRUE(manager.m_Flag);
    ExpectSomeOptions(manager.m_Options);
    ExpectTypeTable(manager);
    ExpectNothingDerived(manager);
}

TEST_F(SettingModel, ManagerKeepsAClearFlag)
{
    EXPECT_FALSE(Manager(Schema, {}, false, {}).m_Flag);
    EXPECT_FALSE(Manager(Schema, false, {}).m_Flag);
}

TEST_F(SettingModel, ManagerTakesATextThatIsNoRegistry)
{
    const Manager with("no json {", {}, false, {});
    EXPECT_EQ(with.m_Schema, "no json {");
    ExpectTypeTable(with);
    const Manager without("", false, {});
    EXPECT_EQ(without.m_Schema, "");
    ExpectTypeTable(without);
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

// --- the flag -----------------------------------------------------------------------------

struct KindAndFlag
{
    std::int32_t Kind;
    bool Flag;
};

class ManagerFlag : public FrontClassTest, public testing::WithParamInterface<KindAndFlag>
{
};

TEST_P(ManagerFlag, FollowsTheSystemKindInBothOperations)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    const auto without = MakeBios();
    without->m_SystemKind = GetParam().Kind;
    ASSERT_THAT(without->QuerySettingManagerWithoutValue(), IsBare(0));
    EXPECT_EQ(without->m_SettingManager->m_Flag, GetParam().Flag);

    const auto with = MakeBios();
    with->m_SystemKind = GetParam().Kind;
    ASSERT_THAT(with->QuerySettingManager(false), IsBare(0));
    EXPECT_EQ(with->m_SettingManager->m_Flag, GetParam().Flag);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ManagerFlag,
                         testing::Values(KindAndFlag{0, false}, KindAndFlag{1, true}, KindAndFlag{2, true},
                                         KindAndFlag{3, false}, KindAndFlag{4, false}, KindAndFlag{-1, false},
                                         KindAndFlag{std::numeric_limits<std::int32_t>::min(), false}));

TEST_F(SettingModel, SystemTypeDoesNotReachTheFlag)
{
    TellSystem();
    TellSchema();
    const auto front = Make(SystemTypeResetTypeFirst, {});
    ASSERT_THAT(front->QuerySettingManagerWithoutValue(), IsBare(0));
    EXPECT_EQ(front->m_SystemKind, 0);
    EXPECT_FALSE(front->m_SettingManager->m_Flag);
}

// --- the model with values ----------------------------------------------------------------

TEST_F(SettingModel, ModelWithValuesReadsValuesFirstAndTheSchemaAfterThem)
{
    TellStandard(R"({"Boot":"UEFI","Cores":4})", R"({"Cores":8})");
    TellSchema();
    const auto front = MakeBios(SomeOptions);
    EXPECT_THAT(front->QuerySettingManager(false), IsBare(0));
    EXPECT_THAT(world.Calls,
                ElementsAre(Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl), Get(SystemsUrl), ReadSchema(BiosUrl)));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({BiosReadLogs,
                                                   {{3, "Enter BiosBasicSettingAssistant::QueryPatchURL()"},
                                                    {3, "Exit BiosBasicSettingAssistant::QueryPatchURL()"}},
                                                   DiscoveryLogs})));
    EXPECT_EQ(front->m_Schema, Schema);
    ASSERT_NE(front->m_SettingManager, nullptr);
    EXPECT_EQ(front->m_SettingManager->m_Schema, Schema);
    EXPECT_THAT(Values(*front), ElementsAre(Pair("Boot", OptionalVar("UEFI")), Pair("Cores", OptionalVar(8))));
    ExpectSomeOptions(front->m_SettingManager->m_Options);
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
}

TEST_F(SettingModel, ModelWithValuesTakesTheProtectedResourceWhenItIsToldTo)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellProtected(R"({"Secret":"s"})");
    TellSchema();
    const auto front = MakeUefi();
    EXPECT_THAT(front->QuerySettingManager(false), IsBare(0));
    EXPECT_THAT(Values(*front), ElementsAre(Pair("Boot", OptionalVar("UEFI"))));
    EXPECT_THAT(front->QuerySettingManager(true), IsBare(0));
    EXPECT_THAT(Values(*front), ElementsAre(Pair("Boot", OptionalVar("UEFI")), Pair("Secret", OptionalVar("s"))));
}

TEST_F(SettingModel, FailedValuesEndTheModelAndLeaveEverything)
{
    world.Fail("GET", SystemsUrl, 24, "no connection");
    const auto front = MakeBios();
    const auto before = std::make_shared<Manager>("old", false, Config_Options{});
    front->m_SettingManager = before;
    EXPECT_THAT(front->QuerySettingManager(false), IsResult(24, "no connection", ""));
    EXPECT_EQ(front->m_SettingManager, before);
    EXPECT_EQ(front->m_Schema, "");
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl)));
    EXPECT_THAT(world.LogsAt(1), ElementsAre("Failed to get the response info for effective values.",
                                             "Query current value error: no connection",
                                             "Failed in get current value map though: no connection",
                                             "Failed in get current value map though: no connection",
                                             "Failed to get current value map though: no connection"));
}

TEST_F(SettingModel, ModelWithValuesNeedsAnAssistantForTheSchema)
{
    TellStandard(R"({"Boot":"UEFI"})");
    const auto front = MakeBios();
    front->m_SettingAssistant.reset();
    EXPECT_THAT(front->QuerySettingManager(false), IsBare(13));
    EXPECT_EQ(front->m_SettingManager, nullptr);
    EXPECT_THAT(world.LogsAt(1), ElementsAre("[Notice]: assistant is nullptr during we query schema."));
}

TEST_F(SettingModel, ModelWithValuesNeedsNoAssistantForAKnownSchema)
{
    TellStandard(R"({"Boot":"UEFI"})");
    const auto front = MakeBios();
    front->m_SettingAssistant.reset();
    front->m_Schema = "kept";
    EXPECT_THAT(front->QuerySettingManager(false), IsBare(0));
    ASSERT_NE(front->m_SettingManager, nullptr);
    EXPECT_EQ(front->m_SettingManager->m_Schema, "kept");
    EXPECT_THAT(world.LogsAt(1), IsEmpty());
}

TEST_F(SettingModel, FailedSchemaEndsTheModelWithValues)
{
    TellStandard(R"({"Boot":"UEFI"})");
    world.Tell("SCHEMA", BiosUrl, {.Result = {27, "no registry", "s"}, .Body = "", .Errors = {}});
    const auto front = MakeBios();
    const auto before = std::make_shared<Manager>("old", false, Config_Options{});
    front->m_SettingManager = before;
    EXPECT_THAT(front->QuerySettingManager(false), IsResult(27, "no registry", "s"));
    EXPECT_EQ(front->m_SettingManager, before);
    EXPECT_EQ(front->m_Schema, "");
    EXPECT_THAT(world.LogsAt(1),
                ElementsAre("Query Schema error: no registry", "Failed to get schema though: no registry"));
}

TEST_F(SettingModel, EachModelWithValuesIsNewAndReadsTheSchemaOnce)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    const auto front = MakeBios();
    ASSERT_THAT(front->QuerySettingManager(false), IsBare(0));
    const std::shared_ptr<Manager> first = front->m_SettingManager;
    world.Calls.clear();
    EXPECT_THAT(front->QuerySettingManager(false), IsBare(0));
    EXPECT_NE(front->m_SettingManager, first);
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_EQ(first.use_count(), 1);
    EXPECT_THAT(first->m_Values, ElementsAre(Pair("Boot", OptionalVar("UEFI"))));
}

TEST_F(SettingModel, ModelWithValuesHoldsTheValuesOfItsMoment)
{
    TellSystem();
    TellSchema();
    const auto front = MakeBios();
    const auto assistant = EnterAssistant(*front, "StandardSettings", {0, "", ""}, {{"Boot", std::string("old")}});
    ASSERT_THAT(front->QuerySettingManager(false), IsBare(0));
    assistant->m_Gives["Boot"] = std::string("new");
    ASSERT_THAT(front->QuerySettingManager(false), IsBare(0));
    EXPECT_THAT(Values(*front), ElementsAre(Pair("Boot", OptionalVar("new"))));
    EXPECT_THAT(assistant->m_Reads, ElementsAre("current", "current"));
}

TEST_F(SettingModel, ACopyKeepsTheReplacedManager)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    const auto front = MakeBios();
    ASSERT_THAT(front->QuerySettingManagerWithoutValue(), IsBare(0));
    const Front copy(*front);
    ASSERT_THAT(front->QuerySettingManager(false), IsBare(0));
    ASSERT_NE(copy.m_SettingManager, nullptr);
    EXPECT_NE(copy.m_SettingManager, front->m_SettingManager);
    EXPECT_THAT(copy.m_SettingManager->m_Values, IsEmpty());
}

// --- the model without values -------------------------------------------------------------

TEST_F(SettingModel, ModelWithoutValuesReadsTheSchemaAlone)
{
    TellSystem();
    TellSchema();
    const auto front = MakeBios(SomeOptions);
    EXPECT_THAT(front->QuerySettingManagerWithoutValue(), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl)));
    EXPECT_THAT(world.Logs, ElementsAreArray(DiscoveryLogs));
    EXPECT_EQ(front->m_Schema, Schema);
    ASSERT_NE(front->m_SettingManager, nullptr);
    EXPECT_EQ(front->m_SettingManager->m_Schema, Schema);
    EXPECT_THAT(Values(*front), IsEmpty());
    ExpectSomeOptions(front->m_SettingManager->m_Options);
    EXPECT_THAT(front->m_ProcCreator->m_ProcMap, IsEmpty());
}

TEST_F(SettingModel, ModelWithoutValuesIsBuiltOnce)
{
    TellSystem();
    TellSchema();
    const auto front = MakeBios();
    ASSERT_THAT(front->QuerySettingManagerWithoutValue(), IsBare(0));
    const std::shared_ptr<Manager> first = front->m_SettingManager;
    world.Calls.clear();
    front->m_Schema.clear();
    front->m_SettingAssistant.reset();
    EXPECT_THAT(front->QuerySettingManagerWithoutValue(), IsBare(0));
    EXPECT_EQ(front->m_SettingManager, first);
    EXPECT_EQ(front->m_Schema, "");
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.LogsAt(1), IsEmpty());
}

TEST_F(SettingModel, AModelWithValuesServesWhereNoneAreNeeded)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    const auto front = MakeBios();
    ASSERT_THAT(front->QuerySettingManager(false), IsBare(0));
    const std::shared_ptr<Manager> first = front->m_SettingManager;
    EXPECT_THAT(front->QuerySettingManagerWithoutValue(), IsBare(0));
    EXPECT_EQ(front->m_SettingManager, first);
    EXPECT_THAT(Values(*front), ElementsAre(Pair("Boot", OptionalVar("UEFI"))));
}

TEST_F(SettingModel, AModelWithoutValuesIsReplacedByOneWithThem)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    Know("Boot");
    const auto front = MakeBios();
    SettingStringMap shown;
    ASSERT_THAT(front->QuerySettingValue("Boot", shown), IsBare(0));
    const std::shared_ptr<Manager> first = front->m_SettingManager;
    EXPECT_THAT(first->m_Values, IsEmpty());
    ASSERT_THAT(front->QuerySettingManager(false), IsBare(0));
    EXPECT_NE(front->m_SettingManager, first);
    EXPECT_THAT(Values(*front), ElementsAre(Pair("Boot", OptionalVar("UEFI"))));
}

TEST_F(SettingModel, ModelWithoutValuesNeedsAnAssistantForTheSchema)
{
    const auto front = MakeBios();
    front->m_SettingAssistant.reset();
    EXPECT_THAT(front->QuerySettingManagerWithoutValue(), IsBare(13));
    EXPECT_EQ(front->m_SettingManager, nullptr);
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Construct assistant error."}));
}

TEST_F(SettingModel, ModelWithoutValuesNeedsNoAssistantForAKnownSchema)
{
    const auto front = MakeBios();
    front->m_SettingAssistant.reset();
    front->m_Schema = "kept";
    EXPECT_THAT(front->QuerySettingManagerWithoutValue(), IsBare(0));
    ASSERT_NE(front->m_SettingManager, nullptr);
    EXPECT_EQ(front->m_SettingManager->m_Schema, "kept");
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(SettingModel, FailedSchemaEndsTheModelWithoutValues)
{
    TellSystem();
    world.Tell("SCHEMA", BiosUrl, {.Result = {33, "BMC is not ready.", "s"}, .Body = "", .Errors = {}});
    world.Tell("SCHEMA", BiosUrl, Schema);
    const auto front = MakeBios();
    EXPECT_THAT(front->QuerySettingManagerWithoutValue(), IsResult(33, "BMC is not ready.", "s"));
    EXPECT_EQ(front->m_SettingManager, nullptr);
    EXPECT_EQ(front->m_Schema, "");
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({DiscoveryLogs,
                                                   {{1, "Query Schema error: BMC is not ready."},
                                                    {1, "Failed to get schema though: BMC is not ready."}}})));
    EXPECT_THAT(front->QuerySettingManagerWithoutValue(), IsBare(0));
    EXPECT_EQ(front->m_Schema, Schema);
}

} // namespace
