// Valid values, defaults and descriptions: three queries that differ in their texts.
#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;

namespace
{

using Operation = RedfishConfigResult (BiosRedfishConfigProc::*)(SettingStringMap&, const std::string&);

struct Query
{
    const char* Name;
    Operation Call;
    const char* EntryText;
    const char* All;
    const char* One;
    const char* ErrorText;
    /// Nothing where the query logs no exit.
    const char* ExitText;
};
void PrintTo(const Query& query, std::ostream* out) { *out << query.Name; }

const Query ValidValues{"ValidValues",
                        &BiosRedfishConfigProc::QuerySettingValidValues,
                        "Enter Bios QuerySettingValidValues() for setting ",
                        "QueryGroupSettingValidValues",
                        "QuerySettingValidValues",
                        "Query setting valid values error.",
                        nullptr};
const Query DefaultValues{"DefaultValues",
                          &BiosRedfishConfigProc::QuerySettingDefaultValues,
                          "Enter Bios QuerySettingDefaultValues() for setting ",
                          "QueryGroupSettingDefaultValues",
                          "QuerySettingDefaultValue",
                          "Query setting default values error.",
                          "Exit BiosRedfishConfigProc::QuerySettingDefaultValues()"};
// The texts of the defaults serve the descriptions too.
const Query Descriptions{"Descriptions",
                         &BiosRedfishConfigProc::QuerySettingDescriptions,
                         "Enter BiosRedfishConfigProc::QuerySettingDescriptions(), try to get the description of ",
                         "QueryGroupSettingDescriptions",
                         "QuerySettingDescription",
                         "Query setting default values error.",
                         "Exit BiosRedfishConfigProc::QuerySettingDefaultValues()"};

const std::string KeywordsItem = "HIDDEN_CONFIG_KEYWORDS_LIST";
const LogLine NoKeywords{1, "Failed to get the all keywords that be used to hide the settings. Eg. Raid Card"};

class Metadata : public FrontClassTest
{
  protected:
    Metadata() { world.Config[KeywordsItem] = "Unseen"; }

    /// A front object that builds its manager without a request or a log record.
    std::shared_ptr<Front> MakeKnowing(const Config_Options& options = {}, const std::string& prefix = "One")
    {
        std::shared_ptr<Front> front = m_Made.emplace_back(MakeBios(options));
        front->SetPrefix(prefix, "Two");
        front->m_Schema = Schema;
        m_Standard = EnterAssistant(*front, "StandardSettings", {0, "", ""}, {{"Boot", "Uefi"}});
        return front;
    }
    void TellManager(const std::string& operation, RedfishConfigResult result, const std::string& text,
                     const SettingStringMap& map)
    {
        world.ManagerAnswers[operation] = {.Result = std::move(result), .Text = text, .Map = map, .Errors = {}};
    }

    std::shared_ptr<ScriptedAssistant> m_Standard;
    /// They live as long as the test: their end would write log records.
    std::vector<std::shared_ptr<Front>> m_Made;
    SettingStringMap m_Values;
};

class MetadataQuery : public Metadata, public testing::WithParamInterface<Query>
{
  protected:
    RedfishConfigResult Ask(Front& front, const std::string& setting)
    {
        return (front.*GetParam().Call)(m_Values, setting);
    }
    void TellOne(const std::string& name, RedfishConfigResult result, const std::string& text)
    {
        TellManager(GetParam().One + (" " + name), std::move(result), text, {});
    }
    void TellAll(RedfishConfigResult result, const SettingStringMap& map)
    {
        TellManager(GetParam().All, std::move(result), "", map);
    }
    static std::string OneCall(const std::string& name) { return GetParam().One + (" " + name); }
    static LogLine Entry(const std::string& name) { return {3, GetParam().EntryText + name}; }
    /// The records of an operation that ends well.
    static std::vector<LogLine> Whole(const std::string& name, const std::vector<LogLine>& between = {})
    {
        std::vector<LogLine> lines = Join({{Entry(name)}, between});
        if (GetParam().ExitText != nullptr)
        {
            lines.push_back({3, GetParam().ExitText});
        }
        return lines;
    }
};

INSTANTIATE_TEST_SUITE_P(Queries, MetadataQuery, testing::Values(ValidValues, DefaultValues, Descriptions),
                         [](const auto& test) { return test.param.Name; });

// --- one setting --------------------------------------------------------------------------

TEST_P(MetadataQuery, OneSettingStandsUnderTheFirstPrefix)
{
    const auto front = MakeKnowing();
    TellOne("Boot", {0, "remark", "s"}, "text of Boot");
    m_Values = {{"One.Boot", "before"}, {"Two.Boot", "x"}, {"other", "y"}};
    EXPECT_THAT(Ask(*front, "Boot"), IsResult(0, "remark", "s"));
    EXPECT_THAT(m_Values, ElementsAre(Pair("One.Boot", "text of Boot"), Pair("Two.Boot", "x"), Pair("other", "y")));
    EXPECT_THAT(world.ManagerCalls, ElementsAre(OneCall("Boot")));
    EXPECT_THAT(world.Logs, ElementsAreArray(Whole("Boot")));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(front->m_ErrorList, IsEmpty());
}

TEST_P(MetadataQuery, EmptyTextIsShown)
{
    TellOne("Boot", {0, "", ""}, "");
    EXPECT_THAT(Ask(*MakeKnowing(), "Boot"), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("One.Boot", "")));
}

TEST_P(MetadataQuery, OneSettingIsShownThoughAKeywordHidesIt)
{
    world.Config[KeywordsItem] = "Boot";
    TellOne("Boot", {0, "", ""}, "text");
    EXPECT_THAT(Ask(*MakeKnowing(), "Boot"), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("One.Boot", "text")));
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

TEST_P(MetadataQuery, OldNameStaysTheKeyWhileTheManagerIsAskedForTheNewOne)
{
    world.NewNames["Old"] = "New";
    TellOne("New", {0, "", ""}, "text");
    EXPECT_THAT(Ask(*MakeKnowing({.LegacyNameMode = true}, "BIOS"), "Old"), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.Old", "text")));
    EXPECT_THAT(world.NamesAsked, ElementsAre("Old"));
    EXPECT_THAT(world.ManagerCalls, ElementsAre(OneCall("New")));
    EXPECT_THAT(world.Logs, ElementsAreArray(Whole("Old")));
}

TEST_P(MetadataQuery, NameThatIsNotTranslatedIsAskedForAsItIs)
{
    TellOne("Boot", {0, "", ""}, "text");
    EXPECT_THAT(Ask(*MakeKnowing({.LegacyNameMode = true}), "Boot"), IsBare(0));
    EXPECT_THAT(world.NamesAsked, ElementsAre("Boot"));
    EXPECT_THAT(world.ManagerCalls, ElementsAre(OneCall("Boot")));
}

TEST_P(MetadataQuery, FailureOfOneSettingShowsItsFullNameAndIsNotLogged)
{
    m_Values = {{"One.Boot", "before"}};
    // Of a single setting, 7 and 1 are failures too.
    for (const int code : {20, 21, 7, 1})
    {
        world.Logs.clear();
        TellOne("Boot", {code, "no Boot, Boot; boot", "Boot"}, "half a text");
        EXPECT_THAT(Ask(*MakeKnowing(), "Boot"), IsResult(code, "no One.Boot, One.Boot; boot", "Boot"));
        EXPECT_THAT(world.Logs, ElementsAre(Entry("Boot")));
    }
    EXPECT_THAT(m_Values, ElementsAre(Pair("One.Boot", "before")));
}

TEST_P(MetadataQuery, FailureOfOneSettingShowsTheOldNameAlone)
{
    world.NewNames["Old"] = "New";
    TellOne("New", {20, "no New and no Old, New", "New"}, "");
    m_Values = {{"before", "x"}};
    for (const char* prefix : {"BIOS", "HOST"})
    {
        world.Logs.clear();
        EXPECT_THAT(Ask(*MakeKnowing({.LegacyNameMode = true}, prefix), "Old"),
                    IsResult(20, "no Old and no Old, Old", "New"));
        EXPECT_THAT(world.Logs, ElementsAre(Entry("Old")));
    }
    EXPECT_THAT(m_Values, ElementsAre(Pair("before", "x")));
}

// --- all settings -------------------------------------------------------------------------

TEST_P(MetadataQuery, AllSettingsStandUnderTheSecondPrefix)
{
    const auto front = MakeKnowing();
    TellAll({0, "remark", "s"}, {{"Boot", "b"}, {"Cores", "c"}});
    m_Values = {{"Two.Boot", "before"}, {"One.Boot", "x"}, {"other", "y"}};
    EXPECT_THAT(Ask(*front, ""), IsResult(0, "remark", "s"));
    EXPECT_THAT(m_Values,
                ElementsAre(Pair("One.Boot", "x"), Pair("Two.Boot", "b"), Pair("Two.Cores", "c"), Pair("other", "y")));
    EXPECT_THAT(world.ManagerCalls, ElementsAre(GetParam().All));
    EXPECT_THAT(world.ConfigAsked, ElementsAre(KeywordsItem));
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAreArray(Whole("")));
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_P(MetadataQuery, HiddenSettingsAreLeftOutByTheirBareNames)
{
    TellAll({0, "", ""}, {{"Boot", "b"}, {"Cores", "c"}});
    world.Config[KeywordsItem] = "Two,oot";
    m_Values = {{"Two.Bootstrap", "stays"}};
    EXPECT_THAT(Ask(*MakeKnowing(), ""), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("Two.Bootstrap", "stays"), Pair("Two.Cores", "c")));
}

TEST_P(MetadataQuery, PartlyFailedListIsShownAndItsCodeHandedOn)
{
    TellAll({7, "some failed", "s"}, {{"Boot", "b"}, {"Cores", "c"}});
    world.Config.clear();
    EXPECT_THAT(Ask(*MakeKnowing(), ""), IsResult(7, "some failed", "s"));
    EXPECT_THAT(m_Values, ElementsAre(Pair("Two.Boot", "b"), Pair("Two.Cores", "c")));
    EXPECT_THAT(world.Logs, ElementsAreArray(Whole("", {NoKeywords})));
}

TEST_P(MetadataQuery, FailedListIsFilteredAndLoggedAndLeavesTheMap)
{
    world.Config.clear();
    m_Values = {{"Two.Boot", "before"}};
    for (const int code : {27, 1, 8, 6})
    {
        world.Logs.clear();
        TellAll({code, "no list", "s"}, {{"Boot", "b"}});
        EXPECT_THAT(Ask(*MakeKnowing(), ""), IsResult(code, "no list", "s"));
        EXPECT_THAT(world.Logs, ElementsAre(Entry(""), NoKeywords, LogLine{1, GetParam().ErrorText}));
    }
    EXPECT_THAT(m_Values, ElementsAre(Pair("Two.Boot", "before")));
}

TEST_P(MetadataQuery, NothingFoundIsNoFailure)
{
    TellAll({0, "", ""}, {});
    m_Values = {{"other", "y"}};
    EXPECT_THAT(Ask(*MakeKnowing(), ""), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("other", "y")));
    EXPECT_THAT(world.Logs, ElementsAreArray(Whole("")));
}

// --- form of the keys ---------------------------------------------------------------------

TEST_P(MetadataQuery, KeysAreBareOnlyForOldNamesUnderAPrefixOfTheCaller)
{
    struct Form
    {
        bool LegacyNameMode;
        const char* Prefix;
        bool Bare;
    };
    TellOne("Boot", {0, "", ""}, "b");
    TellAll({7, "", ""}, {{"Boot", "b"}, {"Cores", "c"}});
    for (const Form& form :
         {Form{true, "HOST", true}, Form{true, "", true}, Form{true, "BIOS1", true}, Form{true, "UEF", true},
          Form{true, "BIOS", false}, Form{true, "bIoS", false}, Form{true, "UEFI", false}, Form{true, "uefi", false},
          Form{false, "HOST", false}, Form{false, "BIOS", false}, Form{false, "", false}})
    {
        SCOPED_TRACE(std::string(form.LegacyNameMode ? "legacy " : "") + form.Prefix);
        const auto front = MakeKnowing({.LegacyNameMode = form.LegacyNameMode}, form.Prefix);
        m_Values = {{"before", "x"}};
        EXPECT_THAT(Ask(*front, "Boot"), IsBare(0));
        EXPECT_EQ(m_Values, form.Bare ? SettingStringMap({{"Boot", "b"}})
                                      : SettingStringMap({{"before", "x"}, {form.Prefix + std::string(".Boot"), "b"}}));
        m_Values = {{"before", "x"}};
        EXPECT_THAT(Ask(*front, ""), IsBare(7));
        EXPECT_EQ(m_Values, form.Bare ? SettingStringMap({{"Boot", "b"}, {"Cores", "c"}})
                                      : SettingStringMap({{"before", "x"}, {"Two.Boot", "b"}, {"Two.Cores", "c"}}));
    }
}

TEST_P(MetadataQuery, BareKeysStillEndWithTheExitLine)
{
    world.NewNames["Old"] = "New";
    TellOne("New", {0, "", ""}, "text");
    m_Values = {{"Old", "before"}, {"HOST.New", "gone"}};
    EXPECT_THAT(Ask(*MakeKnowing({.LegacyNameMode = true}, "HOST"), "Old"), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("Old", "text")));
    EXPECT_THAT(world.Logs, ElementsAreArray(Whole("Old")));
}

TEST_P(MetadataQuery, OutputFormatOneAndHexValueModeChangeNothing)
{
    TellOne("Cores", {0, "", ""}, "26");
    EXPECT_THAT(Ask(*MakeKnowing({.HexValueMode = true, .OutputFormat = 1}), "Cores"), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("One.Cores", "26")));
}

// --- the manager --------------------------------------------------------------------------

TEST_P(MetadataQuery, FirstQueryReadsValuesAndSchemaAlone)
{
    TellStandard(R"({"Boot":"Uefi"})");
    TellSchema();
    TellOne("Boot", {0, "", ""}, "text");
    const auto front = MakeBios();
    EXPECT_THAT(Ask(*front, "Boot"), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.Boot", "text")));
    EXPECT_THAT(world.Calls,
                ElementsAre(Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl), Get(SystemsUrl), ReadSchema(BiosUrl)));
}

TEST_P(MetadataQuery, ManagerIsMadeAnewFromTheStandardValues)
{
    const auto front = MakeKnowing();
    const auto secret = EnterAssistant(*front, "ProtectedSettings", {0, "", ""}, {{"Secret", "s"}});
    const auto before = std::make_shared<RedfishConfigSettingManager>("old", false, Config_Options{});
    front->m_SettingManager = before;
    TellOne("Boot", {0, "", ""}, "text");
    EXPECT_THAT(Ask(*front, "Boot"), IsBare(0));
    EXPECT_NE(front->m_SettingManager, before);
    EXPECT_THAT(front->m_SettingManager->m_Values, ElementsAre(Pair("Boot", OptionalVar("Uefi"))));
    EXPECT_THAT(m_Standard->m_Reads, ElementsAre("current"));
    EXPECT_THAT(secret->m_Reads, IsEmpty());
}

TEST_P(MetadataQuery, FailedManagerIsHandedOnUnchanged)
{
    m_Values = {{"before", "x"}};
    for (const char* name : {"Boot", ""})
    {
        for (const int format : {0, 2})
        {
            world.Logs.clear();
            const auto front = MakeKnowing({.LegacyNameMode = true, .OutputFormat = format}, "HOST");
            m_Standard->m_Result = {24, "no connection for Boot", "s"};
            EXPECT_THAT(Ask(*front, name), IsResult(24, "no connection for Boot", "s"));
            EXPECT_THAT(world.Logs,
                        ElementsAre(Entry(name),
                                    LogLine{1, "Failed in get current value map though: no connection for Boot"},
                                    LogLine{1, "Failed in get current value map though: no connection for Boot"},
                                    LogLine{1, "Failed to get current value map though: no connection for Boot"},
                                    LogLine{1, "Failed to get setting manager with error: no connection for Boot"}));
        }
    }
    EXPECT_THAT(m_Values, ElementsAre(Pair("before", "x")));
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

// --- the registry as the answer -----------------------------------------------------------

const LogLine EnterRegistry{4, "Enter BiosRedfishConfigProc::GenerateSchemaJsonStr()"};
const LogLine ExitRegistry{4, "Exit BiosRedfishConfigProc::GenerateSchemaJsonStr()"};

TEST_F(Metadata, ValidValuesOfFormatTwoAreTheRegistryWhateverTheName)
{
    for (const char* name : {"", "Boot", "Unknown"})
    {
        SCOPED_TRACE(name);
        world.Logs.clear();
        const auto front = MakeKnowing({.LegacyNameMode = true, .OutputFormat = 2}, "HOST");
        front->m_Schema = R"({"RegistryEntries":{"Attributes":[{"AttributeName":"Boot"}]}})";
        m_Values = {{"before", "x"}};
        EXPECT_THAT(front->QuerySettingValidValues(m_Values, name), IsBare(0));
        EXPECT_THAT(m_Values, ElementsAre(Pair("Two", R"({"RegistryEntries":{"Attributes":[)"
                                                      R"({"AttributeName":"Boot","CurrentValue":"Uefi"}]}})"),
                                          Pair("before", "x")));
        EXPECT_THAT(world.Logs,
                    ElementsAre(LogLine{3, ValidValues.EntryText + std::string(name)}, EnterRegistry, ExitRegistry));
    }
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

TEST_F(Metadata, RegistryThatCannotBeFilledIsHandedOn)
{
    const auto front = MakeKnowing({.OutputFormat = 2});
    front->m_Schema = "{}";
    EXPECT_THAT(front->QuerySettingValidValues(m_Values, "Boot"), IsBare(27));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{3, "Enter Bios QuerySettingValidValues() for setting Boot"},
                                        EnterRegistry, LogLine{1, "Cannot find RegistryEntries node in schema."}));
}

TEST_F(Metadata, DefaultsAndDescriptionsTakeNoNoticeOfTheFormat)
{
    for (const Query& query : {DefaultValues, Descriptions})
    {
        const auto front = MakeKnowing({.OutputFormat = 2});
        m_Values.clear();
        TellManager(query.One + std::string(" Boot"), {0, "", ""}, "text", {});
        EXPECT_THAT((*front.*query.Call)(m_Values, "Boot"), IsBare(0));
        EXPECT_THAT(m_Values, ElementsAre(Pair("One.Boot", "text")));
    }
}

TEST_F(Metadata, ValidValuesOfAnyOtherFormatAreATextForEachSetting)
{
    TellManager("QuerySettingValidValues Boot", {0, "", ""}, "text", {});
    for (const int format : {-1, 0, 1, 3})
    {
        m_Values.clear();
        EXPECT_THAT(MakeKnowing({.OutputFormat = format})->QuerySettingValidValues(m_Values, "Boot"), IsBare(0));
        EXPECT_THAT(m_Values, ElementsAre(Pair("One.Boot", "text")));
    }
}

} // namespace
