#include <cstddef>
#include <cstring>
#include <functional>

#include "BMCBaseAssistant.h"
#include "BiosBasicSettingProc.h"
#include "BiosRedfishConfigProc.h"
#include "Contract.h"
#include "RedfishConfigAssistant.h"
#include "RedfishConfigProc.h"
#include "RedfishRegistryAssistant.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace Tavrine;

namespace
{

/// A further implementation of the interface, with every default kept.
class PlainProc : public RedfishConfigProc
{
  public:
    RedfishConfigResult QueryGroupSettingValues(SettingStringMap&) override { return {0, "", ""}; }
    RedfishConfigResult QuerySettingValue(const std::string&, SettingStringMap&) override { return {0, "", ""}; }
    RedfishConfigResult PatchSettingNewValueWithOutCheck(const std::string&, const std::string&, bool) override
    {
        return {0, "", ""};
    }
    RedfishConfigResult QueryGroupList(SettingGroupMap&) override { return {0, "", ""}; }
    RedfishConfigResult QuerySettingValidValues(SettingStringMap&, const std::string&) override { return {0, "", ""}; }
    RedfishConfigResult QuerySettingDefaultValues(SettingStringMap&, const std::string&) override
    {
        return {0, "", ""};
    }
    RedfishConfigResult QuerySettingDescriptions(SettingStringMap&, const std::string&) override { return {0, "", ""}; }
    RedfishConfigResult PatchSettingNewValue(const std::string&, const std::string&, bool) override
    {
        return {0, "", ""};
    }
    RedfishConfigResult QuerySaveSettingValues(SettingStringMap&) override { return {0, "", ""}; }
    RedfishConfigResult Restore(SettingStringMap&, SettingStringMap&, SettingStringMap&, bool, bool) override
    {
        return {0, "", ""};
    }
    RedfishConfigResult PostDefaultvalue(const std::string&, const std::string&) override { return {0, "", ""}; }
    RedfishConfigResult CheckSettingCouldbeSupported(const std::string&) override { return {0, "", ""}; }
    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap&, const std::string&) override
    {
        return {0, "", ""};
    }
};

/// Answers a flush as told and notes its targets.
class FlushingAssistant : public RedfishConfigAssistant
{
  public:
    RedfishConfigResult FlushChanges(const std::string target) override
    {
        m_Targets.push_back(target);
        UpdateError(m_ErrorsOfFlush);
        return m_Result;
    }

    RedfishConfigResult m_Result{0, "", ""};
    std::vector<RedfishConfigResult> m_ErrorsOfFlush;
    std::vector<std::string> m_Targets;
};

struct Operation
{
    std::string Name;
    std::function<RedfishConfigResult(RedfishConfigProc&)> Call;
};

std::vector<Operation> UnsupportedOperations()
{
    return {
        {"1", [](RedfishConfigProc& proc) { return proc.UnsupportedOperation1(); }},
        {"2", [](RedfishConfigProc& proc) { return proc.UnsupportedOperation2(); }},
        {"3", [](RedfishConfigProc& proc) { return proc.UnsupportedOperation3(); }},
        {"4", [](RedfishConfigProc& proc) { return proc.UnsupportedOperation4(); }},
        {"5", [](RedfishConfigProc& proc) { return proc.UnsupportedOperation5(); }},
        {"6", [](RedfishConfigProc& proc) { return proc.UnsupportedOperation6(); }},
        {"7", [](RedfishConfigProc& proc) { return proc.UnsupportedOperation7(); }},
        {"8", [](RedfishConfigProc& proc) { return proc.UnsupportedOperation8(); }},
        {"9", [](RedfishConfigProc& proc) { return proc.UnsupportedOperation9(); }},
        {"10", [](RedfishConfigProc& proc) { return proc.UnsupportedOperation10(); }},
    };
}

class Interface : public ContractTest
{
  protected:
    TavrineConnection::ConnectionInfo m_Connection{.Host = "bmc1", .User = "", .Password = ""};
    PlainProc m_Plain;
};

TEST_F(Interface, PlainMembersStartEmpty)
{
    EXPECT_EQ(m_Plain.m_Prefix, "");
    EXPECT_EQ(m_Plain.m_SecondPrefix, "");
    EXPECT_EQ(m_Plain.m_Assistant, nullptr);
    EXPECT_EQ(m_Plain.m_SystemKind, 0);
    EXPECT_FALSE(m_Plain.m_Options.HexValueMode || m_Plain.m_Options.allowProtectedSettings ||
                 m_Plain.m_Options.ReservedOption || m_Plain.m_Options.LegacyNameMode);
    EXPECT_EQ(m_Plain.m_Options.OutputFormat, 0);
    EXPECT_EQ(m_Plain.m_FlushTarget, "");
    EXPECT_THAT(m_Plain.m_ErrorList, IsEmpty());
    EXPECT_EQ(m_Plain.m_DebugConfigFile, "");
}

TEST_F(Interface, EveryUnsupportedOperationAnswersABareEleven)
{
    BiosRedfishConfigProc front(m_Connection, SystemTypeUefi, {});
    world.Logs.clear();
    for (const Operation& operation : UnsupportedOperations())
    {
        SCOPED_TRACE(operation.Name);
        EXPECT_THAT(operation.Call(m_Plain), IsBare(11));
        EXPECT_THAT(operation.Call(front), IsBare(11));
    }
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(Interface, DefaultsOfOptionalOperationsAnswerABareElevenAndTouchNothing)
{
    std::string content = "kept";
    SettingCompareMap compare = {{"kept", {"a", "b"}}};
    EXPECT_THAT(m_Plain.ImportUEFICustomDefaultFile("text"), IsBare(11));
    EXPECT_THAT(m_Plain.ExportUEFICustomDefaultFile(content), IsBare(11));
    EXPECT_THAT(m_Plain.CompareSettingDefaultValues(compare, "BootMode"), IsBare(11));
    EXPECT_EQ(content, "kept");
    EXPECT_EQ(compare, (SettingCompareMap{{"kept", {"a", "b"}}}));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(Interface, DefaultSetPrefixStoresBoth)
{
    m_Plain.SetPrefix("First", "Second");
    EXPECT_EQ(m_Plain.m_Prefix, "First");
    EXPECT_EQ(m_Plain.m_SecondPrefix, "Second");
    EXPECT_EQ(m_Plain.GetSecondPrefix(), "Second");
    m_Plain.SetPrefix(m_Plain.m_Prefix, m_Plain.m_SecondPrefix);
    EXPECT_EQ(m_Plain.m_Prefix, "First");
    EXPECT_EQ(m_Plain.m_SecondPrefix, "Second");
}

TEST_F(Interface, DefaultSetDebugConfigFileStoresThePath)
{
    m_Plain.SetDebugConfigFile("/nowhere/debug.json");
    EXPECT_EQ(m_Plain.m_DebugConfigFile, "/nowhere/debug.json");
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(Interface, DefaultFlushWithoutAnAssistantEmptiesTheErrorsAndAnswersThirteen)
{
    m_Plain.m_ErrorList = {{18, "old", "S"}};
    EXPECT_THAT(m_Plain.FlushChanges(), IsBare(13));
    EXPECT_THAT(m_Plain.m_ErrorList, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(Interface, DefaultFlushGoesThroughTheAssistantAndTakesItsErrors)
{
    const std::vector<RedfishConfigResult> results = {
        {0, "", ""}, {0, "fine", "S"}, {1, "reboot", ""}, {18, "refused", "BootMode"}, {33, "busy", ""}};
    for (RedfishConfigResult expected : results)
    {
        SCOPED_TRACE(expected.ErrorCode());
        const auto assistant = std::make_shared<FlushingAssistant>();
        assistant->m_Result = expected;
        assistant->m_ErrorsOfFlush = {{10, "bad", "A"}, {9, "unknown", "B"}};
        m_Plain.m_Assistant = assistant;
        m_Plain.m_FlushTarget = "/target";
        m_Plain.m_ErrorList = {{18, "old", "S"}};
        EXPECT_THAT(m_Plain.FlushChanges(),
                    IsResult(expected.ErrorCode(), expected.ErrorMsg(), expected.ErrorSetting()));
        EXPECT_THAT(assistant->m_Targets, ElementsAre("/target"));
        EXPECT_THAT(m_Plain.m_ErrorList, ElementsAre(IsResult(10, "bad", "A"), IsResult(9, "unknown", "B")));
    }
    EXPECT_THAT(world.Logs, IsEmpty());
}

#if defined(__x86_64__) && defined(__GNUC__)

/// Place of a virtual operation in its table, by the Itanium C++ ABI. A destructor takes
/// two places.
template <typename Member> std::size_t SlotOf(Member member)
{
    std::ptrdiff_t parts[2];
    static_assert(sizeof(member) == sizeof(parts));
    std::memcpy(parts, &member, sizeof(parts));
    return static_cast<std::size_t>(parts[0] - 1) / sizeof(void*);
}

using Text = const std::string&;
using Strings = SettingStringMap&;
template <typename Class, typename... Arguments> using Op = RedfishConfigResult (Class::*)(Arguments...);
template <typename... Arguments> using FrontOp = Op<RedfishConfigProc, Arguments...>;
template <typename... Arguments> using ProcOp = Op<BiosBasicSettingProc, Arguments...>;

TEST(VirtualTable, InterfaceOperationsStandInTheirOrder)
{
    using P = RedfishConfigProc;
    const std::vector<std::size_t> slots = {
        SlotOf<FrontOp<Strings>>(&P::QueryGroupSettingValues),
        SlotOf<FrontOp<Text, Strings>>(&P::QuerySettingValue),
        SlotOf<FrontOp<Text, Text, bool>>(&P::PatchSettingNewValueWithOutCheck),
        SlotOf<FrontOp<SettingGroupMap&>>(&P::QueryGroupList),
        SlotOf<FrontOp<Strings, Text>>(&P::QuerySettingValidValues),
        SlotOf<FrontOp<Strings, Text>>(&P::QuerySettingDefaultValues),
        SlotOf<FrontOp<Strings, Text>>(&P::QuerySettingDescriptions),
        SlotOf<FrontOp<Text, Text, bool>>(&P::PatchSettingNewValue),
        SlotOf<FrontOp<Strings>>(&P::QuerySaveSettingValues),
        SlotOf(&P::UnsupportedOperation1),
        SlotOf<FrontOp<Strings, Strings, Strings, bool, bool>>(&P::Restore),
        SlotOf(&P::UnsupportedOperation2),
        SlotOf<FrontOp<Text, Text>>(&P::PostDefaultvalue),
        SlotOf<FrontOp<Text>>(&P::ImportUEFICustomDefaultFile),
        SlotOf<FrontOp<std::string&>>(&P::ExportUEFICustomDefaultFile),
        SlotOf(&P::UnsupportedOperation3),
        SlotOf(&P::UnsupportedOperation4),
        SlotOf(&P::UnsupportedOperation5),
        SlotOf(&P::UnsupportedOperation6),
        SlotOf(&P::UnsupportedOperation7),
        SlotOf(&P::UnsupportedOperation8),
        SlotOf(&P::UnsupportedOperation9),
        SlotOf(&P::UnsupportedOperation10),
        SlotOf<void (P::*)(Text, Text)>(&P::SetPrefix),
        SlotOf<FrontOp<>>(&P::FlushChanges),
        SlotOf<FrontOp<Text>>(&P::CheckSettingCouldbeSupported),
        SlotOf<FrontOp<SettingCompareMap&, Text>>(&P::CompareSettingPendingValues),
        SlotOf<FrontOp<SettingCompareMap&, Text>>(&P::CompareSettingDefaultValues),
        SlotOf<std::string (P::*)()>(&P::GetSecondPrefix),
        SlotOf<void (P::*)(Text)>(&P::SetDebugConfigFile),
    };
    ASSERT_EQ(slots.size(), 30U);
    for (std::size_t place = 0; place < slots.size(); ++place)
    {
        EXPECT_EQ(slots[place], place + 2) << "operation " << place + 2;
    }
}

TEST(VirtualTable, ProcOperationsStandInTheirOrder)
{
    using P = BiosBasicSettingProc;
    EXPECT_EQ(SlotOf<ProcOp<Strings>>(&P::QueryGroupSettingValues), 2U);
    EXPECT_EQ((SlotOf<ProcOp<Text, Strings>>(&P::QuerySettingValue)), 3U);
    EXPECT_EQ((SlotOf<ProcOp<Text, Text, bool>>(&P::PatchSettingNewValueWithOutCheck)), 4U);
    EXPECT_EQ((SlotOf<ProcOp<SettingCompareMap&, Text>>(&P::CompareSettingPendingValues)), 5U);
    EXPECT_EQ(SlotOf<void (P::*)(Text)>(&P::SetDebugConfigFile), 6U);
}

TEST(VirtualTable, RestOperationsStandInTheirOrder)
{
    using C = BMCBaseAssistant;
    using S = std::string;
    using Errors = std::vector<RedfishConfigResult>&;
    EXPECT_EQ((SlotOf<Op<C, S, S, Errors, bool, const SettingStringMap&>>(&C::PatchData)), 2U);
    EXPECT_EQ((SlotOf<Op<C, S, S, S&, Errors, bool, int>>(&C::PostData)), 3U);
    EXPECT_EQ((SlotOf<Op<C, S, S, S&, bool, int>>(&C::PostData)), 4U);
    EXPECT_EQ((SlotOf<Op<C, S, S&>>(&C::GetData)), 5U);
    EXPECT_EQ((SlotOf<Op<C, S, S&>>(&C::DeleteData)), 6U);
}

TEST(VirtualTable, RegistryOperationsStandInTheirOrder)
{
    using R = RedfishRegistryAssistant;
    const std::vector<std::size_t> slots = {
        SlotOf(&R::GetValueResponse),
        SlotOf<Op<R, std::string&>>(&R::GetSchema),
        SlotOf<Op<R, SettingValueMap&>>(&R::GetEffectiveValueMap),
        SlotOf<Op<R, std::string, std::string>>(&R::UpdateSettingValueCache),
        SlotOf<Op<R>>(&R::QueryEffectiveValue),
        SlotOf<Op<R>>(&R::QueryValueURLResponse),
        SlotOf<Op<R>>(&R::QuerySchema),
        SlotOf<Op<R, std::string&>>(&R::ComplementQuerySchemaURL),
    };
    // Behind the destructor and FlushChanges, which the base class has.
    for (std::size_t place = 0; place < slots.size(); ++place)
    {
        EXPECT_EQ(slots[place], place + 3) << "operation " << place;
    }
}

#endif

} // namespace
