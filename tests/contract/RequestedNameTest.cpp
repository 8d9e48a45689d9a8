// The caller's own name put back in place of a translated one.
#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;

namespace
{

struct Move
{
    const char* Name;
    SettingStringMap Before;
    const char* KeyName;
    const char* RequestedName;
    SettingStringMap After;
};

class RequestedName : public FrontClassTest
{
};

class MovedEntry : public RequestedName, public testing::WithParamInterface<Move>
{
};

TEST_P(MovedEntry, StandsUnderTheRequestedName)
{
    const auto front = MakeBios({.LegacyNameMode = true});
    front->SetPrefix("HOST", "BIOS");
    SettingStringMap values = GetParam().Before;
    front->RestoreRequestedName(values, GetParam().KeyName, GetParam().RequestedName);
    EXPECT_EQ(values, GetParam().After);
    EXPECT_TRUE(world.Logs.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Exact, MovedEntry,
    testing::Values(
        Move{"Moves", {{"New", "v"}, {"Other", "w"}}, "New", "Old", {{"Old", "v"}, {"Other", "w"}}},
        Move{"ReplacesAnEntryOfTheRequestedName", {{"New", "v"}, {"Old", "w"}}, "New", "Old", {{"Old", "v"}}},
        Move{"IsLostWhenBothNamesAreOne", {{"New", "v"}, {"Other", "w"}}, "New", "New", {{"Other", "w"}}},
        Move{"StopsBeforePrefixedKeys",
             {{"HOST.New", "p"}, {"New", "v"}},
             "New",
             "Old",
             {{"HOST.New", "p"}, {"Old", "v"}}},
        Move{"LossStopsBeforePrefixedKeys", {{"HOST.New", "p"}, {"New", "v"}}, "New", "New", {{"HOST.New", "p"}}},
        Move{"CaseCounts", {{"new", "v"}}, "New", "Old", {{"new", "v"}}}),
    [](const auto& test) { return test.param.Name; });

INSTANTIATE_TEST_SUITE_P(
    Prefixed, MovedEntry,
    testing::Values(
        Move{"Moves", {{"HOST.New", "v"}, {"HOST.Other", "w"}}, "New", "Old", {{"HOST.Other", "w"}, {"Old", "v"}}},
        Move{"MovesToTheSameBareName", {{"HOST.New", "v"}}, "New", "New", {{"New", "v"}}},
        Move{"AnyPrefixServes", {{"X.New", "v"}}, "New", "Old", {{"Old", "v"}}},
        Move{"EmptyPrefixServes", {{".New", "v"}}, "New", "Old", {{"Old", "v"}}},
        Move{"ReplacesAnEntryOfTheRequestedName", {{"HOST.New", "v"}, {"Old", "w"}}, "New", "Old", {{"Old", "v"}}},
        Move{"FirstOfThreeMovesAlone",
             {{"A.New", "a"}, {"B.New", "b"}, {"C.New", "c"}},
             "New",
             "Old",
             {{"B.New", "b"}, {"C.New", "c"}, {"Old", "a"}}},
        Move{"CaseOfTheNameCounts", {{"HOST.new", "v"}}, "New", "Old", {{"HOST.new", "v"}}},
        Move{"LongerNameIsPassedOver",
             {{"HOST.NewMode", "m"}, {"HOST2.New", "v"}},
             "New",
             "Old",
             {{"HOST.NewMode", "m"}, {"Old", "v"}}},
        Move{"NameNeedsThePointBeforeIt", {{"HOST.ANew", "v"}}, "New", "Old", {{"HOST.ANew", "v"}}},
        Move{"OnlyTheFirstPointWithTheNameIsLookedAt", {{"A.New.New", "v"}}, "New", "Old", {{"A.New.New", "v"}}},
        Move{"PrefixWithAPoint", {{"A.B.New", "v"}}, "New", "Old", {{"Old", "v"}}},
        Move{"NameWithAPoint", {{"HOST.New.Sub", "v"}}, "New.Sub", "Old", {{"Old", "v"}}},
        Move{"EntryUnderTheRequestedKeyIsLost", {{"HOST.New", "v"}}, "New", "HOST.New", {}},
        Move{"NothingMatches", {{"HOST", "{}"}}, "New", "Old", {{"HOST", "{}"}}},
        Move{"EmptyMap", {}, "New", "Old", {}}),
    [](const auto& test) { return test.param.Name; });

struct Condition
{
    const char* Name;
    bool LegacyNameMode;
    const char* Prefix;
    bool Moves;
};

class RestoreCondition : public RequestedName, public testing::WithParamInterface<Condition>
{
};

TEST_P(RestoreCondition, DecidesWhetherAnythingMoves)
{
    const Condition& condition = GetParam();
    const auto front = MakeBios({.LegacyNameMode = condition.LegacyNameMode});
    front->SetPrefix(condition.Prefix, "HOST");
    const SettingStringMap exact = {{"New", "v"}};
    SettingStringMap values = exact;
    front->RestoreRequestedName(values, "New", "Old");
    EXPECT_EQ(values, condition.Moves ? SettingStringMap({{"Old", "v"}}) : exact);

    const SettingStringMap prefixed = {{"HOST.New", "v"}};
    values = prefixed;
    front->RestoreRequestedName(values, "New", "Old");
    EXPECT_EQ(values, condition.Moves ? SettingStringMap({{"Old", "v"}}) : prefixed);
}

INSTANTIATE_TEST_SUITE_P(
    Modes, RestoreCondition,
    testing::Values(Condition{"OtherPrefix", true, "HOST", true}, Condition{"LongerPrefix", true, "BIOS1", true},
                    Condition{"ShorterPrefix", true, "UEF", true}, Condition{"EmptyPrefix", true, "", true},
                    Condition{"BiosCapitals", true, "BIOS", false}, Condition{"BiosSmall", true, "bios", false},
                    Condition{"BiosMixed", true, "bIoS", false}, Condition{"UefiCapitals", true, "UEFI", false},
                    Condition{"UefiSmall", true, "uefi", false}, Condition{"UefiMixed", true, "Uefi", false},
                    Condition{"NoLegacyNames", false, "HOST", false}),
    [](const auto& test) { return test.param.Name; });

} // namespace
