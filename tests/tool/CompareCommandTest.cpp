#include "CompareCommand.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <boost/json/serialize.hpp>

#include "ConfigFile.h"
#include "KnowingFront.h"
#include "Options.h"
#include "SmallRegistry.h"

using namespace Tavrine;
using namespace Tavrine::Tool;
using tooltest::Configured;
using tooltest::KnowingFront;

namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

const RedfishConfigResult Good{0, "", ""};

/// Of the registry that has the password Lock.
RedfishConfigResult ReadSmallManager(RedfishConfigProc& front, std::unique_ptr<RedfishConfigSettingManager>& manager)
{
    manager = std::make_unique<RedfishConfigSettingManager>(tooltest::SmallRegistry, false, front.m_Options);
    return Good;
}

/// A copy of one of two objects for each that is asked for.
CompareWay From(const KnowingFront& texts, const KnowingFront& typed = KnowingFront(),
                std::optional<std::size_t> columns = std::nullopt)
{
    return {[&texts, typed](OutputForm form)
            { return std::make_unique<KnowingFront>(form == OutputForm::Typed ? typed : texts); },
            columns, ReadSmallManager};
}

Options Asked(const Words& names)
{
    Options options;
    options.Names = names;
    return options;
}

KnowingFront WithDefaults()
{
    KnowingFront front("One", "Two");
    front.DefaultPairs.insert(
        {"", {{7, "", ""}, {{"Two.ProcA", {"1", "2"}}, {"Two.ProcB", {"x", "x"}}, {"Two.Mem", {"a\tb", ""}}}}});
    front.DefaultPairs.insert({"ProcB", {Good, {{"One.ProcB", {"x", "x"}}}}});
    front.DefaultPairs.insert({"None", {{21, "The setting None has no default value.", ""}, {}}});
    front.Descriptions.insert(
        {"", {Good, {{"Two.ProcA", ""}, {"Two.ProcB", ""}, {"Two.Mem", ""}, {"Two.None", ""}, {"Two.Void", ""}}}});
    return front;
}

KnowingFront WithPending()
{
    KnowingFront front("One", "Two");
    front.PendingPairs.insert({"", {Good, {{"Two.ProcA", {"1", "2"}}, {"Two.Mem", {"a", "b"}}}}});
    front.PendingPairs.insert({"ProcA", {Good, {{"One.ProcA", {"1", "2"}}}}});
    front.PendingPairs.insert({"ProcB", {{2, "Setting has no pending value.", ""}, {}}});
    front.Group = {Good, {{"Two.ProcA", "1"}, {"Two.ProcB", "1"}, {"Two.Mem", "a"}}};
    return front;
}

KnowingFront Typed(const std::string& values)
{
    KnowingFront front("One", "Two");
    front.Group = {Good, {{"Two", values}}};
    return front;
}

/// Options with the prefixes of the fronts above, as a command line would set them.
Options PrefixedOptions(const Words& names)
{
    Options options = Asked(names);
    options.FirstPrefix = "One";
    options.SecondPrefix = "Two";
    return options;
}

class CompareCommand : public ::testing::Test
{
    Configured m_NothingConfigured{""};

  protected:
    testdata::TemporaryFolder m_Folder;
};

} // namespace

TEST_F(CompareCommand, DefaultsAreALineEachWithWhatIsMissingAsANote)
{
    KnowingFront front = WithDefaults();
    const Answer answer = CompareDefaults(front, Asked({"defaults"}), std::nullopt);
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "Two.Mem\ta\\tb\t\nTwo.ProcA\t1\t2\nTwo.ProcB\tx\tx\n");
    EXPECT_EQ(answer.Notes, Words{"note: 2 of 5 settings have no value or no default value"});
}

TEST_F(CompareCommand, ChangedLeavesEqualValuesOut)
{
    KnowingFront front = WithDefaults();
    Options options = Asked({"defaults"});
    options.Changed = true;
    EXPECT_EQ(CompareDefaults(front, options, std::nullopt).Text, "Two.Mem\ta\\tb\t\nTwo.ProcA\t1\t2\n");
    options.Json = true;
    EXPECT_EQ(json::serialize(CompareDefaults(front, options, std::nullopt).Data),
              R"({"Two.Mem":{"current":"a\tb","default":""},"Two.ProcA":{"current":"1","default":"2"}})");
}

TEST_F(CompareCommand, DefaultsOfNamesAndPatterns)
{
    KnowingFront front = WithDefaults();
    const Answer answer = CompareDefaults(front, Asked({"defaults", "ProcB", "None", "M*", "Zz*", "V*"}), std::nullopt);
    EXPECT_EQ(answer.Code, 21);
    EXPECT_EQ(answer.Text, "One.Mem\ta\\tb\t\nOne.ProcB\tx\tx\n");
    ASSERT_EQ(answer.Errors.size(), 2U);
    EXPECT_EQ(answer.Errors[0].Setting, "One.None");
    EXPECT_EQ(answer.Errors[1].Message, "Unable to find a setting that matches Zz*");
    EXPECT_EQ(answer.Notes, Words{"note: 1 of 2 settings have no value or no default value"});
}

TEST_F(CompareCommand, OnATerminalItIsATableOfItsWidth)
{
    KnowingFront front = WithDefaults();
    EXPECT_EQ(CompareDefaults(front, Asked({"defaults", "ProcB"}), 80).Text,
              "SETTING    VALUE  DEFAULT\nOne.ProcB  x      x\n");
    EXPECT_EQ(CompareDefaults(front, Asked({"defaults", "ProcB"}), 20).Text, "SETT…  VALUE  DEFA…\nOne.…  x      x\n");
}

TEST_F(CompareCommand, PendingValuesStandBesideThoseInForce)
{
    const KnowingFront front = WithPending();
    const KnowingFront typed = Typed(R"({"ProcA":1,"ProcB":1,"Mem":"a"})");
    Options options = PrefixedOptions({"pending"});
    EXPECT_EQ(ComparePending(options, From(front, typed)).Text, "Two.Mem\ta\tb\nTwo.ProcA\t1\t2\n");
    options.Json = true;
    EXPECT_EQ(json::serialize(ComparePending(options, From(front, typed)).Data),
              R"({"Two.Mem":{"current":"a","pending":"b"},"Two.ProcA":{"current":1,"pending":2}})");
    options.Json = false;
    options.Hex = true;
    EXPECT_EQ(ComparePending(options, From(front, typed)).Text, "Two.Mem\ta\tb\nTwo.ProcA\t0x1\t0x2\n");
}

TEST_F(CompareCommand, PendingOfNamesAndPatterns)
{
    const KnowingFront front = WithPending();
    const KnowingFront typed = Typed(R"({"ProcA":1,"ProcB":1,"Mem":"a"})");
    const auto compared = [&](const Words& names)
    { return ComparePending(PrefixedOptions(names), From(front, typed)); };
    EXPECT_EQ(compared({"pending", "ProcA", "M*"}).Text, "One.Mem\ta\tb\nOne.ProcA\t1\t2\n");
    for (const Words& names : {Words{"pending", "ProcB"}, Words{"pending", "*B"}})
    {
        const Answer nothing = compared(names);
        EXPECT_EQ(nothing.Code, 0) << names[1];
        EXPECT_EQ(nothing.Text, "");
        EXPECT_TRUE(nothing.Errors.empty());
    }
    const Answer unknown = compared({"pending", "Zz*", "Proc*"});
    EXPECT_EQ(unknown.Code, 20);
    EXPECT_EQ(unknown.Text, "One.ProcA\t1\t2\n");
}

TEST_F(CompareCommand, NothingPendingIsAGoodAnswer)
{
    KnowingFront front;
    front.PendingPairs.insert({"", {{2, "", ""}, {}}});
    const Answer answer = ComparePending(Asked({"pending"}), From(front));
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "");
    EXPECT_EQ(answer.Notes, Words{"note: Nothing is pending; passwords and protected settings are not looked at."});
    EXPECT_EQ(answer.Message, "Nothing is pending; passwords and protected settings are not looked at.");
    EXPECT_TRUE(answer.Errors.empty());
}

TEST_F(CompareCommand, AFailedPendingComparisonIsTold)
{
    KnowingFront front;
    front.PendingPairs.insert({"", {{26, "", ""}, {}}});
    EXPECT_EQ(ComparePending(Asked({"pending"}), From(front)).Code, 26);
}

TEST_F(CompareCommand, ASavedFileStandsBesideTheMachine)
{
    const KnowingFront machine = Typed(R"({"Num":255,"Flag":true,"Text":"a","Other":1,"Null":null})");
    const Words files = {
        m_Folder.Write("typed", R"({"settings":{"One.Num":255,"Two.Flag":false,"Text":"b","Gone":1,"Null":null}})"),
        m_Folder.Write("lines", "UEFI.Num=0xFF\nBIOS.Flag=false\nText=b\nGone=1\n"),
    };
    for (const std::string& file : files)
    {
        SCOPED_TRACE(file);
        Options options = Asked({file});
        const Answer all = CompareFile(options, From(KnowingFront(), machine));
        EXPECT_EQ(all.Code, 0);
        EXPECT_EQ(all.Text.substr(0, all.Text.find("Two.Num")), "Two.Flag\ttrue\tfalse\nTwo.Gone\t\\N\t1\n");
        EXPECT_EQ(all.Notes, Words{"note: 1 of 4 settings of the file have no value on the machine"});
        options.Changed = true;
        EXPECT_EQ(CompareFile(options, From(KnowingFront(), machine)).Text,
                  "Two.Flag\ttrue\tfalse\nTwo.Gone\t\\N\t1\nTwo.Text\ta\tb\n");
    }
}

TEST_F(CompareCommand, ThePrefixOfAFileAndThoseOfOtherSystemsAreTakenOff)
{
    const KnowingFront machine = Typed(R"({"Num":1,"Flag":true,"Text":"a"})");
    const std::string file = m_Folder.Write(
        "saved", R"({"prefix":"Rack","settings":{"Rack.Num":1,"bios.Flag":true,"UEFI.Text":"a","Two.UEFI.Num":5}})");
    EXPECT_EQ(CompareFile(Asked({file}), From(KnowingFront(), machine)).Text,
              "Two.Flag\ttrue\ttrue\nTwo.Num\t1\t1\nTwo.Text\ta\ta\nTwo.UEFI.Num\t\\N\t5\n");
    const std::string twice = m_Folder.Write("twice", R"({"prefix":"Rack","settings":{"Rack.Num":1,"BIOS.Num":2}})");
    const Answer refused = CompareFile(Asked({twice}), From(KnowingFront(), machine));
    EXPECT_EQ(refused.Code, 16);
    EXPECT_EQ(refused.Message,
              "The file " + twice + " cannot be compared: the setting Num stands in it under two names");
}

TEST_F(CompareCommand, SavedTextsTakeTheKindOfTheValueInForce)
{
    const KnowingFront machine = Typed(R"({"Num":255,"Hex":16,"Odd":1,"Flag":true,"Word":"true"})");
    Options options = Asked({m_Folder.Write("lines", "Num=255\nHex=0x1F\nOdd=x\nFlag=false\nWord=true\nGone=5\n")});
    options.Json = true;
    EXPECT_EQ(json::serialize(CompareFile(options, From(KnowingFront(), machine)).Data),
              R"({"Two.Flag":{"current":true,"saved":false},"Two.Gone":{"current":null,"saved":"5"},)"
              R"("Two.Hex":{"current":16,"saved":31},"Two.Num":{"current":255,"saved":255},)"
              R"("Two.Odd":{"current":1,"saved":"x"},"Two.Word":{"current":"true","saved":"true"}})");
}

TEST_F(CompareCommand, ATextOfAFileIsReadAsRestoreReadsIt)
{
    const KnowingFront machine =
        Typed(R"({"Num":3,"Minus":-7,"Big":18446744073709551615,"Flag":true,"Word":"true","None":null})");
    Options options = Asked(
        {m_Folder.Write("lines", "Num=03\nMinus=-07\nBig=18446744073709551615\nFlag=TRUE\nWord=TRUE\nNone=TRUE\n")});
    options.Changed = true;
    EXPECT_EQ(CompareFile(options, From(KnowingFront(), machine)).Text, "Two.None\t\\N\tTRUE\nTwo.Word\ttrue\tTRUE\n");
    options = Asked({m_Folder.Write("others", "Num=3.0\nFlag=1\nBig=18446744073709551614\n")});
    options.Changed = true;
    EXPECT_EQ(CompareFile(options, From(KnowingFront(), machine)).Text,
              "Two.Big\t18446744073709551615\t18446744073709551614\nTwo.Flag\ttrue\t1\nTwo.Num\t3\t3.0\n");
}

TEST_F(CompareCommand, APasswordIsComparedAndNotShown)
{
    Options options = Asked({m_Folder.Write("lines", "UEFI.Lock=Sup3rS3cret\nMode=Uefi\n")});
    for (const char* const values : {R"({"Mode":"Legacy"})", R"({"Mode":"Legacy","Lock":null})",
                                     R"({"Mode":"Legacy","Lock":"geheim"})", R"({"Mode":"Legacy","Lock":""})"})
    {
        SCOPED_TRACE(values);
        const KnowingFront machine = Typed(values);
        const std::string current =
            machine.Group.second.at("Two").find(R"("Lock":")") != std::string::npos ? "********" : "\\N";
        for (const bool changed : {false, true})
        {
            options.Changed = changed;
            options.Json = false;
            EXPECT_EQ(CompareFile(options, From(KnowingFront(), machine)).Text,
                      "Two.Lock\t" + current + "\t********\nTwo.Mode\tLegacy\tUefi\n");
            options.Json = true;
            const json::object lock =
                CompareFile(options, From(KnowingFront(), machine)).Data.at("Two.Lock").as_object();
            EXPECT_EQ(lock.at("saved"), "********");
            EXPECT_EQ(lock.at("current"), current == "\\N" ? json::value() : json::value(current));
        }
    }
    options.Json = false;
    const KnowingFront equal = Typed(R"({"Mode":"Uefi","Lock":"Sup3rS3cret"})");
    EXPECT_EQ(CompareFile(options, From(KnowingFront(), equal)).Text, "");
}

TEST_F(CompareCommand, WithoutARegistryWhatMayBeAPasswordIsNotShown)
{
    const KnowingFront machine = Typed(R"({"Num":1,"Flag":true,"Text":"a"})");
    CompareWay way = From(KnowingFront(), machine);
    way.Manager = [](RedfishConfigProc&, std::unique_ptr<RedfishConfigSettingManager>&)
    { return RedfishConfigResult(26, "", ""); };
    const Options options = Asked({m_Folder.Write("lines", "Num=2\nFlag=false\nText=b\nGone=c\n")});
    const Answer answer = CompareFile(options, way);
    EXPECT_EQ(answer.Code, 26);
    EXPECT_EQ(answer.Text, "Two.Flag\ttrue\tfalse\nTwo.Gone\t\\N\t********\nTwo.Num\t1\t2\n"
                           "Two.Text\t********\t********\n");
    EXPECT_EQ(answer.Notes,
              (Words{"note: without the attribute registry texts are not shown, since any may be a password",
                     "note: 1 of 4 settings of the file have no value on the machine"}));
    way.Manager = [](RedfishConfigProc&, std::unique_ptr<RedfishConfigSettingManager>&)
    { return RedfishConfigResult(24, "h: gone", ""); };
    const Answer gone = CompareFile(options, way);
    EXPECT_EQ(gone.Code, 24);
    EXPECT_EQ(gone.Text, "");
}

TEST_F(CompareCommand, NamesSelectFromTheFile)
{
    const KnowingFront machine = Typed(R"({"ProcA":1,"ProcB":2,"Mem":3})");
    const std::string file = m_Folder.Write("saved", "ProcA=1\nProcB=3\n");
    const Answer answer = CompareFile(Asked({file, "One.ProcB", "Mem", "Z*", "*A"}), From(KnowingFront(), machine));
    EXPECT_EQ(answer.Text, "One.ProcA\t1\t1\nOne.ProcB\t2\t3\n");
    EXPECT_EQ(answer.Code, 20);
    ASSERT_EQ(answer.Errors.size(), 2U);
    EXPECT_EQ(answer.Errors[0].Message, "The file " + file + " does not have the setting One.Mem");
    EXPECT_EQ(answer.Errors[1].Message, "Unable to find a setting that matches Z*");
}

TEST_F(CompareCommand, OldNamesOfAFileAreTakenWhereThatIsAskedFor)
{
    const Configured names("[legacy_names]\nOldA = \"ProcA\"\n");
    const KnowingFront machine = Typed(R"({"ProcA":1,"Mem":3})");
    const std::string file = m_Folder.Write("saved", "OldA=2\nMem=3\n");
    Options options = Asked({file});
    EXPECT_EQ(CompareFile(options, From(KnowingFront(), machine)).Text, "Two.Mem\t3\t3\nTwo.OldA\t\\N\t2\n");
    options.LegacyNames = true;
    EXPECT_EQ(CompareFile(options, From(KnowingFront(), machine)).Text, "Two.Mem\t3\t3\nTwo.ProcA\t1\t2\n");
    for (const char* const name : {"OldA", "ProcA", "One.OldA"})
    {
        options.Names = {file, name};
        EXPECT_EQ(CompareFile(options, From(KnowingFront(), machine)).Text, "One.ProcA\t1\t2\n") << name;
    }
}

TEST_F(CompareCommand, AFileThatCannotBeReadAsksNobody)
{
    const CompareWay way = {[](OutputForm)
                            {
                                ADD_FAILURE() << "the BMC was asked";
                                return std::make_unique<KnowingFront>();
                            },
                            {},
                            ReadSmallManager};
    EXPECT_EQ(CompareFile(Asked({(m_Folder.Path() / "missing").string()}), way).Code, 38);
}

TEST(CompareHidden, KeywordsHideInTheFileForm)
{
    const Configured configured("HIDDEN_CONFIG_KEYWORDS_LIST = 'Mem'\n");
    const testdata::TemporaryFolder folder;
    const KnowingFront machine = Typed(R"({"ProcA":1,"MemB":2})");
    const std::string file = folder.Write("saved", "ProcA=2\nMemB=3\n");
    EXPECT_EQ(CompareFile(Asked({file}), From(KnowingFront(), machine)).Text, "Two.ProcA\t1\t2\n");
    EXPECT_EQ(CompareFile(Asked({file, "Mem*"}), From(KnowingFront(), machine)).Code, 20);
    EXPECT_EQ(CompareFile(Asked({file, "MemB"}), From(KnowingFront(), machine)).Text, "One.MemB\t2\t3\n");
}
