// Whether a wanted value is in place already: for one setting and for a map of them.
#include "ChangeFixture.h"

using namespace changing;
using namespace Tavrine;
using staging::NoNeed;
using staging::NotFound;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const char* const InvalidValue = "Setting new value is invalid.";

enum class Judged
{
    InPlace,
    Differs,
    BadNumber,
};

struct NoChangeCase
{
    const char* Name;
    bool HexMode;
    OptionalVar Current;
    const char* Wanted;
    Judged Verdict;
    /// The text to use where the value differs; the current text where it is in place.
    const char* Text;
};

OptionalVar Text(const char* text) { return SettingVariant(std::string(text)); }
OptionalVar Number(std::int64_t number) { return SettingVariant(number); }
OptionalVar Switch(bool on) { return SettingVariant(on); }

const NoChangeCase NoChangeCases[] = {
    {"SameText", false, Text("Uefi"), "Uefi", Judged::InPlace, "Uefi"},
    {"TextInAnotherCase", false, Text("Uefi"), "uefi", Judged::Differs, "uefi"},
    {"LongerText", false, Text("Uefi"), "Uefi ", Judged::Differs, "Uefi "},
    {"ShorterText", false, Text("Uefi"), "Uef", Judged::Differs, "Uef"},
    {"EmptyTextInPlace", false, Text(""), "", Judged::InPlace, ""},
    {"EmptyTextWanted", false, Text("Uefi"), "", Judged::Differs, ""},
    {"SameNumber", false, Number(10), "10", Judged::InPlace, "10"},
    {"OtherNumber", false, Number(10), "11", Judged::Differs, "11"},
    {"NumberWithALeadingZero", false, Number(10), "010", Judged::Differs, "010"},
    {"NumberWithASign", false, Number(10), "+10", Judged::Differs, "+10"},
    {"NegativeNumber", false, Number(-10), "-10", Judged::InPlace, "-10"},
    {"HexTextInDecimalMode", false, Number(10), "0xA", Judged::Differs, "0xA"},
    {"HexDigitsThatReadAsTheDecimalOnes", false, Number(10), "10", Judged::InPlace, "10"},
    {"NoNumberInDecimalMode", false, Number(10), "ten", Judged::Differs, "ten"},
    {"TextForAnEmptyValue", false, {}, "Uefi", Judged::Differs, "Uefi"},
    {"NothingForAnEmptyValue", false, {}, "", Judged::Differs, ""},
    {"SameSwitch", false, Switch(true), "true", Judged::InPlace, "true"},
    {"OtherSwitch", false, Switch(true), "false", Judged::Differs, "false"},
    {"SwitchInAnotherCase", false, Switch(false), "False", Judged::Differs, "False"},
    {"SameNumberInHex", true, Number(10), "0xA", Judged::InPlace, "10"},
    {"SameNumberInBareHex", true, Number(255), "ff", Judged::InPlace, "255"},
    {"SameNumberInPaddedHex", true, Number(10), "0x000A", Judged::InPlace, "10"},
    {"OtherNumberInHex", true, Number(10), "0x1F", Judged::Differs, "31"},
    {"DecimalDigitsReadAsHex", true, Number(10), "10", Judged::Differs, "16"},
    {"BadNumber", true, Number(10), "0xG", Judged::BadNumber, ""},
    {"WordForANumber", true, Number(10), "ten", Judged::BadNumber, ""},
    {"NothingForANumber", true, Number(10), "", Judged::BadNumber, ""},
    {"TextInHexMode", true, Text("16"), "0x10", Judged::Differs, "0x10"},
    {"SameTextInHexMode", true, Text("0x10"), "0x10", Judged::InPlace, "0x10"},
    {"TextThatIsNoHexInHexMode", true, Text("Uefi"), "Legacy", Judged::Differs, "Legacy"},
    {"SwitchInHexMode", true, Switch(true), "true", Judged::InPlace, "true"},
    {"EmptyValueInHexMode", true, {}, "0x10", Judged::Differs, "0x10"},
};

class NoChangeTest : public ChangeTest
{
  protected:
    /// With the prefix "Front", and nothing logged yet.
    void StartFront(bool hexMode)
    {
        StartBios({.HexValueMode = hexMode});
        m_Front->m_Prefix = "Front";
    }
};

class NoChange : public NoChangeTest, public testing::WithParamInterface<NoChangeCase>
{
};

INSTANTIATE_TEST_SUITE_P(Values, NoChange, testing::ValuesIn(NoChangeCases),
                         [](const auto& test) { return test.param.Name; });

TEST_P(NoChange, OneSettingIsJudged)
{
    const NoChangeCase& test = GetParam();
    StartFront(test.HexMode);
    const SettingValueMap current{{"Some", test.Current}};
    std::string value = test.Wanted;
    EXPECT_EQ(m_Front->CheckSettingValueChange(current, "Some", value), test.Verdict != Judged::InPlace);
    EXPECT_EQ(value, test.Verdict == Judged::Differs ? test.Text : test.Wanted);
    switch (test.Verdict)
    {
    case Judged::InPlace:
        EXPECT_THAT(world.Logs, ElementsAre(LogLine{4, "no need to change setting Front.Some"}));
        break;
    case Judged::Differs:
        EXPECT_THAT(world.Logs, IsEmpty());
        break;
    case Judged::BadNumber:
        EXPECT_THAT(world.Logs,
                    ElementsAre(LogLine{4, "The setting new value " + std::string(test.Wanted) + " is invalid."}));
        break;
    }
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
}

TEST_P(NoChange, EntryOfAMapIsSorted)
{
    const NoChangeCase& test = GetParam();
    StartFront(test.HexMode);
    const SettingValueMap current{{"Some", test.Current}};
    SettingStringMap wanted{{"Some", test.Wanted}};
    SettingStringMap unchanged;
    SettingStringMap notFound;
    RedfishConfigResult result = m_Front->FilterSettingValueNotChange(current, wanted, unchanged, notFound);
    switch (test.Verdict)
    {
    case Judged::InPlace:
        EXPECT_THAT(result, IsBare(0));
        EXPECT_THAT(wanted, IsEmpty());
        EXPECT_THAT(unchanged, ElementsAre(Pair("Front.Some", test.Text)));
        EXPECT_THAT(world.Logs, ElementsAre(NoNeed("Front.Some")));
        break;
    case Judged::Differs:
        EXPECT_THAT(result, IsBare(0));
        EXPECT_THAT(wanted, ElementsAre(Pair("Some", test.Text)));
        EXPECT_THAT(unchanged, IsEmpty());
        EXPECT_THAT(world.Logs, IsEmpty());
        break;
    case Judged::BadNumber:
        EXPECT_THAT(result, IsResult(10, InvalidValue, ""));
        EXPECT_THAT(wanted, ElementsAre(Pair("Some", test.Wanted)));
        EXPECT_THAT(unchanged, IsEmpty());
        EXPECT_THAT(world.Logs, IsEmpty());
        break;
    }
    EXPECT_THAT(notFound, IsEmpty());
}

// --- one setting --------------------------------------------------------------------------

class NoChangeOfOne : public NoChangeTest
{
};

TEST_F(NoChangeOfOne, UnreportedSettingGoesOnUnconverted)
{
    StartFront(true);
    std::string value = "0xA";
    EXPECT_TRUE(m_Front->CheckSettingValueChange({{"Other", Number(10)}}, "Some", value));
    EXPECT_EQ(value, "0xA");
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Not find setting Front.Somein value list."}));
}

TEST_F(NoChangeOfOne, NameIsFoundInAnyCaseAndShownInThatOfTheCaller)
{
    StartFront(false);
    std::string value = "Uefi";
    EXPECT_FALSE(m_Front->CheckSettingValueChange({{"BootMode", Text("Uefi")}}, "BOOTmode", value));
    EXPECT_THAT(world.Logs, ElementsAre(NoNeed("Front.BOOTmode")));
}

// --- a map of settings --------------------------------------------------------------------

class NoChangeOfMany : public NoChangeTest
{
  protected:
    RedfishConfigResult Filter(const SettingValueMap& current)
    {
        return m_Front->FilterSettingValueNotChange(current, m_Wanted, m_Unchanged, m_NotFound);
    }

    SettingStringMap m_Wanted;
    SettingStringMap m_Unchanged;
    SettingStringMap m_NotFound;
};

TEST_F(NoChangeOfMany, NothingWantedTouchesNothing)
{
    StartFront(false);
    m_Unchanged = {{"Front.Old", "1"}};
    m_NotFound = {{"Front.Older", "2"}};
    EXPECT_THAT(Filter({{"Some", Number(10)}}), IsBare(0));
    EXPECT_THAT(m_Unchanged, ElementsAre(Pair("Front.Old", "1")));
    EXPECT_THAT(m_NotFound, ElementsAre(Pair("Front.Older", "2")));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(NoChangeOfMany, EachEntryGoesWhereItBelongs)
{
    StartFront(true);
    m_Wanted = {{"Alpha", "one"}, {"Beta", "0x10"}, {"Gamma", "0xA"}, {"Kappa", "0xF"}, {"Omega", "same"}};
    EXPECT_THAT(Filter({{"Alpha", Text("one")}, {"Beta", Text("16")}, {"Gamma", Number(11)}, {"Omega", Text("same")}}),
                IsBare(0));
    EXPECT_THAT(m_Wanted, ElementsAre(Pair("Beta", "0x10"), Pair("Gamma", "10"), Pair("Kappa", "0xF")));
    EXPECT_THAT(m_Unchanged, ElementsAre(Pair("Front.Alpha", "one"), Pair("Front.Omega", "same")));
    EXPECT_THAT(m_NotFound, ElementsAre(Pair("Front.Kappa", "Unable to find the setting Front.Kappa")));
    EXPECT_THAT(world.Logs, ElementsAre(NoNeed("Front.Alpha"), NotFound("Front.Kappa"), NoNeed("Front.Omega")));
}

TEST_F(NoChangeOfMany, AllInPlaceEmptiesTheMap)
{
    StartFront(false);
    m_Wanted = {{"A", "1"}, {"B", "2"}, {"C", "3"}};
    EXPECT_THAT(Filter({{"A", Number(1)}, {"B", Number(2)}, {"C", Number(3)}}), IsBare(0));
    EXPECT_THAT(m_Wanted, IsEmpty());
    EXPECT_THAT(m_Unchanged, ElementsAre(Pair("Front.A", "1"), Pair("Front.B", "2"), Pair("Front.C", "3")));
}

TEST_F(NoChangeOfMany, OldEntriesOfTheCallerStayAndSameNamesAreOverwritten)
{
    StartFront(false);
    m_Wanted = {{"A", "1"}, {"B", "2"}};
    m_Unchanged = {{"Front.A", "old"}, {"Front.Z", "z"}};
    m_NotFound = {{"Front.B", "old"}, {"Front.Y", "y"}};
    EXPECT_THAT(Filter({{"A", Number(1)}}), IsBare(0));
    EXPECT_THAT(m_Unchanged, ElementsAre(Pair("Front.A", "1"), Pair("Front.Z", "z")));
    EXPECT_THAT(m_NotFound, ElementsAre(Pair("Front.B", "Unable to find the setting Front.B"), Pair("Front.Y", "y")));
}

// Keys that differ in case alone are two wishes for one setting.
TEST_F(NoChangeOfMany, NamesAreFoundInAnyCaseAndKeepThatOfTheCaller)
{
    StartFront(true);
    m_Wanted = {{"CORES", "0xA"}, {"cores", "0xB"}};
    EXPECT_THAT(Filter({{"Cores", Number(10)}}), IsBare(0));
    EXPECT_THAT(m_Wanted, ElementsAre(Pair("cores", "11")));
    EXPECT_THAT(m_Unchanged, ElementsAre(Pair("Front.CORES", "10")));
    EXPECT_THAT(world.Logs, ElementsAre(NoNeed("Front.CORES")));
}

TEST_F(NoChangeOfMany, BadNumberStopsTheWalkWhereItStands)
{
    StartFront(true);
    SettingValueMap current;
    for (char name = 'A'; name <= 'E'; ++name)
    {
        current[std::string(1, name)] = Number(10);
    }
    m_Wanted = {{"A", "0xA"}, {"B", "0xB"}, {"Bx", "1"}, {"C", "worse"}, {"D", "0xA"}, {"Dx", "1"}, {"E", "0xB"}};
    EXPECT_THAT(Filter(current), IsResult(10, InvalidValue, ""));
    EXPECT_THAT(m_Wanted, ElementsAre(Pair("B", "11"), Pair("Bx", "1"), Pair("C", "worse"), Pair("D", "0xA"),
                                      Pair("Dx", "1"), Pair("E", "0xB")));
    EXPECT_THAT(m_Unchanged, ElementsAre(Pair("Front.A", "10")));
    EXPECT_THAT(m_NotFound, ElementsAre(Pair("Front.Bx", "Unable to find the setting Front.Bx")));
    EXPECT_THAT(world.Logs, ElementsAre(NoNeed("Front.A"), NotFound("Front.Bx")));
}

} // namespace
