// The registry's own text with the current values written into it.
#include <exception>

#include <boost/json/parse.hpp>

#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const LogLine EnterSchemaJson{4, "Enter BiosRedfishConfigProc::GenerateSchemaJsonStr()"};
const LogLine ExitSchemaJson{4, "Exit BiosRedfishConfigProc::GenerateSchemaJsonStr()"};
const LogLine NoAttributes{1, "Cannot find Attributes node in schema."};
const LogLine NoEntries{1, "Cannot find RegistryEntries node in schema."};

std::string Registry(const std::string& attributes)
{
    return "{\"RegistryEntries\":{\"Attributes\":[" + attributes + "]}}";
}

class SchemaJson : public FrontClassTest
{
  protected:
    SchemaJson()
    {
        m_Front->SetPrefix("One", "Two");
        m_Values = EnterAssistant(*m_Front, "StandardSettings", {0, "", ""},
                                  {{"BootMode", "Uefi"},
                                   {"Cores", std::int64_t{-26}},
                                   {"Wake", true},
                                   {"Quiet", false},
                                   {"Word", ""},
                                   {"Digits", "16"},
                                   {"Nothing", std::nullopt}});
    }

    std::unique_ptr<Front> m_Front = MakeBios();
    std::shared_ptr<ScriptedAssistant> m_Values;
    SettingStringMap m_Output;
};

// --- what is read -------------------------------------------------------------------------

TEST_F(SchemaJson, FirstCallReadsTheSchemaAndThenTheValues)
{
    TellStandard(R"({"Boot":"Uefi","Cores":4})", R"({"Cores":8})");
    world.Tell("SCHEMA", BiosUrl, Registry(R"({"AttributeName":"Cores"})"));
    const auto front = MakeBios();
    EXPECT_THAT(front->GenerateSchemaJsonStr(m_Output), IsBare(0));
    EXPECT_THAT(m_Output, ElementsAre(Pair("BIOS", Registry(R"({"AttributeName":"Cores","CurrentValue":8})"))));
    EXPECT_THAT(world.Calls,
                ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl)));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{EnterSchemaJson},
                                                   DiscoveryLogs,
                                                   BiosReadLogs,
                                                   {{3, "Enter BiosBasicSettingAssistant::QueryPatchURL()"},
                                                    {3, "Exit BiosBasicSettingAssistant::QueryPatchURL()"},
                                                    ExitSchemaJson}})));
    EXPECT_EQ(front->m_SettingManager, nullptr);
}

TEST_F(SchemaJson, SchemaThatIsKeptIsNeitherReadAgainNorChanged)
{
    const std::string kept = Registry(R"({"AttributeName":"Cores"})");
    m_Front->m_Schema = kept;
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(0));
    EXPECT_THAT(m_Output, ElementsAre(Pair("Two", Registry(R"({"AttributeName":"Cores","CurrentValue":-26})"))));
    EXPECT_EQ(m_Front->m_Schema, kept);
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
    EXPECT_THAT(m_Values->m_Reads, ElementsAre("current"));
    EXPECT_THAT(world.Logs, ElementsAre(EnterSchemaJson, ExitSchemaJson));
}

TEST_F(SchemaJson, SchemaThatIsReadIsKept)
{
    TellSystem();
    const std::string text = Registry(R"({"AttributeName":"Wake"})");
    world.Tell("SCHEMA", BiosUrl, text);
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(0));
    EXPECT_EQ(m_Front->m_Schema, text);
    world.Calls.clear();
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(SchemaJson, ProtectedValuesTakePart)
{
    const auto secret = EnterAssistant(*m_Front, "ProtectedSettings", {0, "", ""}, {{"Secret", "s"}});
    m_Front->m_Schema = Registry(R"({"AttributeName":"Secret"},{"AttributeName":"Wake"})");
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(0));
    EXPECT_THAT(secret->m_Reads, ElementsAre("current"));
    EXPECT_EQ(m_Output["Two"], Registry(R"({"AttributeName":"Secret","CurrentValue":"s"},)"
                                        R"({"AttributeName":"Wake","CurrentValue":true})"));
}

TEST_F(SchemaJson, EntryUnderTheSecondPrefixIsReplacedAndOthersStay)
{
    m_Front->m_Schema = Registry("");
    m_Output = {{"Two", "before"}, {"One", "x"}, {"Two.BootMode", "y"}};
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(0));
    EXPECT_THAT(m_Output, ElementsAre(Pair("One", "x"), Pair("Two", Registry("")), Pair("Two.BootMode", "y")));
}

TEST_F(SchemaJson, HiddenSettingsAreShown)
{
    world.Config["HIDDEN_CONFIG_KEYWORDS_LIST"] = "Two,Cores";
    m_Front->m_Schema = Registry(R"({"AttributeName":"Cores"})");
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(0));
    EXPECT_THAT(m_Output, ElementsAre(Pair("Two", Registry(R"({"AttributeName":"Cores","CurrentValue":-26})"))));
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

// --- how an element is filled -------------------------------------------------------------

struct Element
{
    const char* Name;
    const char* Before;
    const char* After;
};
void PrintTo(const Element& element, std::ostream* out) { *out << element.Name; }

class SchemaJsonElement : public SchemaJson, public testing::WithParamInterface<Element>
{
};

TEST_P(SchemaJsonElement, HoldsTheCurrentValue)
{
    // Neighbours show that the walk goes on.
    const std::string before = R"({"AttributeName":"Quiet"})";
    const std::string after = R"({"AttributeName":"Quiet","CurrentValue":false})";
    m_Front->m_Schema = Registry(before + "," + GetParam().Before + "," + before);
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(0));
    EXPECT_THAT(m_Output, ElementsAre(Pair("Two", Registry(after + "," + GetParam().After + "," + after))));
    EXPECT_THAT(world.Logs, ElementsAre(EnterSchemaJson, ExitSchemaJson));
}

INSTANTIATE_TEST_SUITE_P(
    Values, SchemaJsonElement,
    testing::Values(
        Element{"Text", R"({"AttributeName":"BootMode"})", R"({"AttributeName":"BootMode","CurrentValue":"Uefi"})"},
        Element{"Number", R"({"AttributeName":"Cores"})", R"({"AttributeName":"Cores","CurrentValue":-26})"},
        Element{"True", R"({"AttributeName":"Wake"})", R"({"AttributeName":"Wake","CurrentValue":true})"},
        Element{"EmptyText", R"({"AttributeName":"Word"})", R"({"AttributeName":"Word","CurrentValue":""})"},
        Element{"DigitsStayAText", R"({"AttributeName":"Digits"})",
                R"({"AttributeName":"Digits","CurrentValue":"16"})"},
        Element{"ReplacesAnother", R"({"CurrentValue":"old","AttributeName":"Cores","Type":"Integer"})",
                R"({"CurrentValue":-26,"AttributeName":"Cores","Type":"Integer"})"},
        Element{"ReplacesANull", R"({"AttributeName":"Wake","CurrentValue":null})",
                R"({"AttributeName":"Wake","CurrentValue":true})"},
        Element{"CaseOfTheNameIsIgnored", R"({"AttributeName":"bOOTmODE"})",
                R"({"AttributeName":"bOOTmODE","CurrentValue":"Uefi"})"}),
    [](const auto& test) { return test.param.Name; });

INSTANTIATE_TEST_SUITE_P(
    NoValue, SchemaJsonElement,
    testing::Values(Element{"BecomesNull", R"({"AttributeName":"Nothing"})",
                            R"({"AttributeName":"Nothing","CurrentValue":null})"},
                    Element{"KeepsTheRegistrysOwn", R"({"AttributeName":"Nothing","CurrentValue":"own"})",
                            R"({"AttributeName":"Nothing","CurrentValue":"own"})"},
                    Element{"KeepsTheRegistrysNull", R"({"CurrentValue":null,"AttributeName":"nothing"})",
                            R"({"CurrentValue":null,"AttributeName":"nothing"})"}),
    [](const auto& test) { return test.param.Name; });

INSTANTIATE_TEST_SUITE_P(
    Untouched, SchemaJsonElement,
    testing::Values(Element{"UnknownName", R"({"AttributeName":"Other","CurrentValue":1})",
                            R"({"AttributeName":"Other","CurrentValue":1})"},
                    Element{"UnknownNameWithoutAValue", R"({"AttributeName":"Other"})", R"({"AttributeName":"Other"})"},
                    Element{"LongerName", R"({"AttributeName":"Cores2"})", R"({"AttributeName":"Cores2"})"},
                    Element{"NumericName", R"({"AttributeName":16})", R"({"AttributeName":16})"},
                    Element{"NullName", R"({"AttributeName":null})", R"({"AttributeName":null})"},
                    Element{"NoName", R"({"attributename":"Cores"})", R"({"attributename":"Cores"})"},
                    Element{"EmptyObject", "{}", "{}"}, Element{"TextElement", R"("Cores")", R"("Cores")"},
                    Element{"NullElement", "null", "null"},
                    Element{"ArrayElement", R"([{"AttributeName":"Cores"}])", R"([{"AttributeName":"Cores"}])"}),
    [](const auto& test) { return test.param.Name; });

TEST_F(SchemaJson, WholeDocumentPassesThrough)
{
    m_Front->m_Schema = R"( { "Id" : "Registry.1", "Language" : "de", "Big" : 18446744073709551615,
        "RegistryEntries" : { "Menus" : [ { "MenuName" : "Boot" } ],
                              "Attributes" : [ { "AttributeName" : "Wake", "Help" : "a\"b\nä" } ],
                              "Dependencies" : [ ] },
        "Attributes" : [ { "AttributeName" : "Wake" } ] } )";
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(0));
    EXPECT_THAT(m_Output, ElementsAre(Pair("Two", R"({"Id":"Registry.1","Language":"de","Big":18446744073709551615,)"
                                                  R"("RegistryEntries":{"Menus":[{"MenuName":"Boot"}],)"
                                                  R"("Attributes":[{"AttributeName":"Wake","Help":"a\"b\nä",)"
                                                  R"("CurrentValue":true}],"Dependencies":[]},)"
                                                  R"("Attributes":[{"AttributeName":"Wake"}]})")));
}

TEST_F(SchemaJson, EmptySchemaTextGivesSuccessAndNoEntry)
{
    TellSystem();
    world.Tell("SCHEMA", BiosUrl, "");
    m_Output = {{"Two", "before"}};
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(0));
    EXPECT_THAT(m_Output, ElementsAre(Pair("Two", "before")));
    EXPECT_THAT(m_Values->m_Reads, ElementsAre("current"));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{EnterSchemaJson}, DiscoveryLogs, {ExitSchemaJson}})));
}

// --- failures: none writes to the map, none logs the exit ---------------------------------

TEST_F(SchemaJson, MissingAssistantIsRefusedThoughTheSchemaIsKept)
{
    m_Front->m_Schema = Registry("");
    m_Front->m_SettingAssistant.reset();
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(13));
    EXPECT_THAT(m_Output, IsEmpty());
    EXPECT_THAT(m_Values->m_Reads, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterSchemaJson, LogLine{1, "Construct assistant error."}));
}

TEST_F(SchemaJson, FailedSchemaIsHandedOn)
{
    TellSystem();
    world.Tell("SCHEMA", BiosUrl, {.Result = {33, "no registry", "s"}, .Body = "", .Errors = {}});
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsResult(33, "no registry", "s"));
    EXPECT_THAT(m_Output, IsEmpty());
    EXPECT_THAT(m_Values->m_Reads, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{EnterSchemaJson},
                                                   DiscoveryLogs,
                                                   {{1, "Query Schema error: no registry"},
                                                    {1, "Failed to get schema though: no registry"}}})));
}

TEST_F(SchemaJson, FailedValuesAreHandedOn)
{
    m_Front->m_Schema = Registry("");
    m_Values->m_Result = {24, "no connection", "s"};
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsResult(24, "no connection", "s"));
    EXPECT_THAT(m_Output, IsEmpty());
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterSchemaJson, LogLine{1, "Failed in get current value map though: no connection"},
                            LogLine{1, "Failed in get current value map though: no connection"},
                            LogLine{1, "Failed to get current values map though: no connection"}));
}

TEST_F(SchemaJson, NoValuesAtAllAreAFailedRead)
{
    m_Front->m_Schema = Registry("");
    m_Values->m_Gives.clear();
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(26));
    EXPECT_THAT(m_Output, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterSchemaJson, LogLine{1, "Failed to get current values map though: "}));
}

struct LackingText
{
    const char* Name;
    const char* Text;
    LogLine Line;
};
void PrintTo(const LackingText& lackingText, std::ostream* out) { *out << lackingText.Name; }

class SchemaJsonLacking : public SchemaJson, public testing::WithParamInterface<LackingText>
{
};

TEST_P(SchemaJsonLacking, NodeIsNamedInTheLog)
{
    m_Front->m_Schema = GetParam().Text;
    m_Output = {{"Two", "before"}};
    EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(27));
    EXPECT_THAT(m_Output, ElementsAre(Pair("Two", "before")));
    EXPECT_THAT(world.Logs, ElementsAre(EnterSchemaJson, GetParam().Line));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, SchemaJsonLacking,
    testing::Values(LackingText{"NoEntries", R"({"Attributes":[]})", NoEntries},
                    LackingText{"EntriesInOtherCase", R"({"registryEntries":{"Attributes":[]}})", NoEntries},
                    LackingText{"NullEntries", R"({"RegistryEntries":null})", NoEntries},
                    LackingText{"ArrayOfEntries", R"({"RegistryEntries":[{"Attributes":[]}]})", NoEntries},
                    LackingText{"NoAttributes", R"({"RegistryEntries":{},"Attributes":[]})", NoAttributes},
                    LackingText{"NullAttributes", R"({"RegistryEntries":{"Attributes":null}})", NoAttributes},
                    LackingText{"ObjectOfAttributes", R"({"RegistryEntries":{"Attributes":{}}})", NoAttributes}),
    [](const auto& test) { return test.param.Name; });

/// The text of what parsing `text` and taking its root as an object throws.
std::string ThrownBy(const std::string& text)
{
    try
    {
        boost::json::value root = boost::json::parse(text);
        root.as_object();
    }
    catch (const std::exception& failure)
    {
        return failure.what();
    }
    return "nothing";
}

TEST_F(SchemaJson, TextThatIsNoObjectIsLoggedWithItsCause)
{
    const std::string deep = "{\"RegistryEntries\":" + std::string(40, '[') + std::string(40, ']') + "}";
    for (const std::string& text : {std::string("null"), std::string("[]"), std::string("\"text\""), std::string("no"),
                                    std::string("{\"RegistryEntries\":"), std::string("{} {}"), deep})
    {
        SCOPED_TRACE(text);
        world.Logs.clear();
        m_Front->m_Schema = text;
        const std::string thrown = ThrownBy(text);
        ASSERT_NE(thrown, "nothing");
        EXPECT_THAT(m_Front->GenerateSchemaJsonStr(m_Output), IsBare(27));
        EXPECT_THAT(world.Logs, ElementsAre(EnterSchemaJson, LogLine{1, "Generate Schema Json failed: " + thrown}));
    }
    EXPECT_THAT(m_Output, IsEmpty());
}

} // namespace
