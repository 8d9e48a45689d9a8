// What becomes of objects and log records when memory runs out.
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "BiosRedfishConfigProc.h"
#include "BiosSettingManager.h"
#include "FailingMemory.h"
#include "Log.h"
#include "Logging.h"
#include "RedfishConfigSettingManager.h"
#include "RunningMachine.h"

using endtoend::RunningMachine;
using failingmemory::Failure;
using failingmemory::Held;
using namespace Tavrine;

namespace
{

/// Few, with short values: gcc 12's library reaches a place that it calls unreachable when the copy of a
/// std::variant fails because of the string in it (its destructor runs over a variant without a value).
constexpr unsigned int Attributes = 40;
/// Takes texts.
const std::string Changed = "Setting000009";

TavrineConnection::ConnectionInfo Connection()
{
    return {.Host = "a host whose name needs memory of its own", .User = "", .Password = ""};
}

/// Fails at the first allocation, at the second and so on until there is none left to fail.
/// @return how often it failed.
template <class Work> std::size_t FailEverywhere(const Work& work)
{
    constexpr std::size_t Most = 10'000;
    for (std::size_t good = 0; good < Most; ++good)
    {
        const std::ptrdiff_t before = Held();
        bool done = false;
        bool happened = false;
        try
        {
            const Failure failure(good);
            work();
            done = true;
            happened = failure.Happened();
        }
        catch (const std::bad_alloc&)
        {
        }
        EXPECT_EQ(Held(), before) << "after " << good << " allocations";
        if (done)
        {
            EXPECT_FALSE(happened) << "allocation " << good << " failed and nobody heard of it";
            return good;
        }
    }
    ADD_FAILURE() << "no end of allocations";
    return 0;
}

TEST(Memory, AFrontObjectIsMadeWholeOrNotAtAll)
{
    const TavrineConnection::ConnectionInfo connection = Connection();
    const auto make = [&] { const BiosRedfishConfigProc front(connection, SystemTypeUefi, {}); };
    // What all objects of a connection share is there from now on.
    const BiosRedfishConfigProc other(connection, SystemTypeBios, {});
    EXPECT_GT(FailEverywhere(make), 5U);
}

TEST(Memory, ACopyIsMadeWholeOrNotAtAll)
{
    BiosRedfishConfigProc front(Connection(), SystemTypeUefi, {});
    front.SetPrefix("A prefix that needs memory of its own", "Another prefix that needs memory");
    EXPECT_GT(FailEverywhere([&] { const BiosRedfishConfigProc copy = front; }), 1U);
    EXPECT_EQ(front.m_Prefix, "A prefix that needs memory of its own");
}

struct OperationCase
{
    std::string Name;
    std::function<RedfishConfigResult(BiosRedfishConfigProc&, SettingStringMap&)> Call;
};

void PrintTo(const OperationCase& param, std::ostream* out) { *out << param.Name; }

struct Outcome
{
    int Code = 0;
    SettingStringMap Texts;

    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out) { *out << outcome.Code << ", " << outcome.Texts.size(); }

Outcome OutcomeOf(const OperationCase& operation, BiosRedfishConfigProc& front)
{
    Outcome outcome;
    outcome.Code = operation.Call(front, outcome.Texts).ErrorCode();
    return outcome;
}

class MemoryOfOperation : public testing::TestWithParam<OperationCase>
{
};

/// The first allocations one by one, then ever fewer of them.
std::size_t Behind(std::size_t good) { return good + 1 + good / 15; }

TEST_P(MemoryOfOperation, IsThrownOrAFailureAndTheObjectWorksOn)
{
    RunningMachine machine(Attributes);
    ASSERT_EQ(machine.Error(), "");
    BiosRedfishConfigProc whole(machine.Info(), SystemTypeBios, {});
    const Outcome expected = OutcomeOf(GetParam(), whole);
    ASSERT_FALSE(expected.Texts.empty());
    std::size_t failures = 0;
    bool happened = true;
    for (std::size_t good = 0; happened; good = Behind(good))
    {
        BiosRedfishConfigProc front(machine.Info(), SystemTypeBios, {});
        try
        {
            const Failure failure(good);
            const Outcome outcome = OutcomeOf(GetParam(), front);
            happened = failure.Happened();
            EXPECT_TRUE(outcome.Code != expected.Code || outcome == expected) << "half of it behind " << good;
        }
        catch (const std::bad_alloc&)
        {
            ++failures;
        }
        EXPECT_EQ(OutcomeOf(GetParam(), front), expected) << "having failed after " << good << " allocations";
    }
    EXPECT_GT(failures, 20U);
}

struct ChangeCase
{
    std::string Name;
    std::function<RedfishConfigResult(BiosRedfishConfigProc&, const std::string&)> Call;
};

void PrintTo(const ChangeCase& param, std::ostream* out) { *out << param.Name; }

class MemoryOfChange : public testing::TestWithParam<ChangeCase>
{
};

/// What waits for a reboot; empty when nothing does.
std::string PendingOf(const RunningMachine& machine, const std::string& name)
{
    BiosRedfishConfigProc front(machine.Info(), SystemTypeBios, {});
    SettingCompareMap compared;
    const RedfishConfigResult result = front.CompareSettingPendingValues(compared, name);
    EXPECT_TRUE(result == 0 || result == 2);
    return compared.empty() ? "" : compared.begin()->second.second;
}

TEST_P(MemoryOfChange, IsNotCalledDoneUnlessItIs)
{
    RunningMachine machine(Attributes);
    ASSERT_EQ(machine.Error(), "");
    std::size_t thrown = 0;
    std::size_t done = 0;
    bool happened = true;
    for (std::size_t good = 0; happened; good = Behind(good))
    {
        const std::string former = PendingOf(machine, Changed);
        const std::string wanted = "tag" + std::to_string(good);
        BiosRedfishConfigProc front(machine.Info(), SystemTypeBios, {});
        bool isDone = false;
        try
        {
            const Failure failure(good);
            const RedfishConfigResult result = GetParam().Call(front, wanted);
            isDone = result == 0 || result == 1; // 1: a reboot is needed
            happened = failure.Happened();
        }
        catch (const std::bad_alloc&)
        {
            ++thrown;
        }
        const std::string now = PendingOf(machine, Changed);
        EXPECT_TRUE(now == wanted || (!isDone && now == former)) << now << " behind " << good << " allocations";
        done += isDone ? 1U : 0U;
    }
    EXPECT_GT(thrown, 20U);
    EXPECT_GT(done, 0U);
}

RedfishConfigResult RestoreTag(BiosRedfishConfigProc& front, const std::string& value)
{
    SettingStringMap wanted{{Changed, value}};
    SettingStringMap done;
    SettingStringMap failed;
    return front.Restore(wanted, done, failed, true, false);
}

INSTANTIATE_TEST_SUITE_P(Each, MemoryOfChange,
                         testing::ValuesIn(std::vector<ChangeCase>{
                             {"PatchSettingNewValue", [](auto& front, const auto& value)
                              { return front.PatchSettingNewValue(Changed, value, false); }},
                             {"PatchSettingNewValueWithOutCheck", [](auto& front, const auto& value)
                              { return front.PatchSettingNewValueWithOutCheck(Changed, value, false); }},
                             {"Restore", RestoreTag},
                         }),
                         [](const auto& instance) { return instance.param.Name; });

RedfishConfigResult Groups(BiosRedfishConfigProc& front, SettingStringMap& texts)
{
    SettingGroupMap groups;
    RedfishConfigResult result = front.QueryGroupList(groups);
    for (const auto& [group, names] : groups)
    {
        for (const std::string& name : names)
        {
            texts[group] += name + ",";
        }
    }
    return result;
}

RedfishConfigResult Defaults(BiosRedfishConfigProc& front, SettingStringMap& texts)
{
    SettingCompareMap compared;
    RedfishConfigResult result = front.CompareSettingDefaultValues(compared, "");
    for (const auto& [name, pair] : compared)
    {
        texts[name] = pair.first + "|" + pair.second;
    }
    return result;
}

INSTANTIATE_TEST_SUITE_P(
    Each, MemoryOfOperation,
    testing::ValuesIn(std::vector<OperationCase>{
        {"QueryGroupSettingValues", [](auto& front, auto& texts) { return front.QueryGroupSettingValues(texts); }},
        {"QueryGroupList", Groups},
        {"QuerySettingValidValues", [](auto& front, auto& texts) { return front.QuerySettingValidValues(texts, ""); }},
        {"QuerySettingDefaultValues",
         [](auto& front, auto& texts) { return front.QuerySettingDefaultValues(texts, ""); }},
        {"QuerySaveSettingValues", [](auto& front, auto& texts) { return front.QuerySaveSettingValues(texts); }},
        {"CompareSettingDefaultValues", Defaults},
    }),
    [](const auto& instance) { return instance.param.Name; });

TEST(Memory, DefaultsThatAreAwaitedAreNotDenied)
{
    RunningMachine machine(Attributes);
    ASSERT_EQ(machine.Error(), "");
    BiosRedfishConfigProc front(machine.Info(), SystemTypeBios, {});
    const RedfishConfigResult reset = front.PostDefaultvalue("", "reset-bios");
    ASSERT_TRUE(reset == 0 || reset == 1) << reset.ErrorCode();
    SettingStringMap values;
    BiosRedfishConfigProc reader(machine.Info(), SystemTypeBios, {});
    ASSERT_EQ(reader.QueryGroupSettingValues(values), 0);
    EXPECT_GT(FailEverywhere([&] { EXPECT_TRUE(AwaitsDefaults(reader)); }), 3U);
}

/// A manager in which Mode=b locks Locked.
std::string LockingRegistry()
{
    return R"({"RegistryEntries":{"Attributes":[{"AttributeName":"Mode","Type":"String"},)"
           R"({"AttributeName":"Locked","Type":"String"}],"Menus":[],"Dependencies":[{"Type":"Map","Dependency":)"
           R"({"MapFrom":[{"MapFromAttribute":"Mode","MapFromProperty":"CurrentValue","MapFromCondition":"EQU",)"
           R"("MapFromValue":"b"}],"MapToAttribute":"Locked","MapToProperty":"ReadOnly","MapToValue":true}}]}})";
}

TEST(Memory, TheModelFollowsValuesThatCouldNotBeTakenOver)
{
    std::size_t failures = 0;
    for (bool happened = true; happened && failures < 1'000; ++failures)
    {
        RedfishConfigSettingManager manager(LockingRegistry(), {{"Mode", "a"}, {"Locked", "x"}}, false,
                                            Config_Options());
        RedfishConfigSettingInfoStru info;
        ASSERT_EQ(manager.GetSettingProperties("Locked", info), 0);
        ASSERT_FALSE(info.ReadOnly);
        const SettingValueMap moved = {{"Mode", "b"}, {"New", "y"}};
        try
        {
            const Failure failure(failures);
            manager.UpdateSettingValue(moved);
            RedfishConfigSettingInfoStru ignored;
            manager.GetSettingProperties("Locked", ignored);
            happened = failure.Happened();
        }
        catch (const std::bad_alloc&)
        {
        }
        manager.UpdateSettingValue(moved);
        ASSERT_EQ(manager.GetSettingProperties("Locked", info), 0);
        EXPECT_TRUE(info.ReadOnly) << failures;
        EXPECT_EQ(info.ForcedBy, (SettingStringMap{{"ReadOnly", "Mode is b"}})) << failures;
        std::string context;
        EXPECT_EQ(manager.PreparePatchContext("Locked", "z", context, FilterChange), 18) << failures;
    }
    EXPECT_GT(failures, 5U);
}

TEST(Memory, ARecordThatCannotBeMadeIsLostAndTold)
{
    std::string taken;
    taken.reserve(200);
    const auto write = [&](std::size_t good)
    {
        std::optional<Log> log(std::in_place, 1, __FILE__, __LINE__);
        log->Stream() << "a record that needs memory of its own";
        const Failure failure(good);
        log.reset();
        return failure.Happened();
    };
    const Logging::SinkId sink = Logging::AddSink(4, [&](const LogRecord& record) { taken = record.Text; });
    std::size_t lost = 0;
    while (lost < 100 && write(lost))
    {
        EXPECT_EQ(taken, "");
        ++lost;
        EXPECT_EQ(Logging::Trouble(sink), "lost " + std::to_string(lost) + " log record(s): std::bad_alloc");
    }
    EXPECT_GT(lost, 0U);
    EXPECT_EQ(taken, "a record that needs memory of its own");
    Logging::RemoveSink(sink);
}

} // namespace
