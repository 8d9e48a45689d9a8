#include "BiosRedfishConfigProc.h"
#include "Contract.h"

using doubles::LogLine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;
using namespace Tavrine;

namespace
{

const std::string KeywordsItem = "HIDDEN_CONFIG_KEYWORDS_LIST";
const LogLine NoKeywords{1, "Failed to get the all keywords that be used to hide the settings. Eg. Raid Card"};

const std::vector<std::string> FixedNames = {
    "Q00066_L1_Stride_Prefetcher",     "Q00090_Memory_Healing_BIST",
    "Q00091_Mem_BIST_Test_Select",     "Q00092_Mem_BIST_Post_Package_Repair_Type",
    "Q00093_Mem_CE_PFA_Test_Mode",     "Q00138_Disable_PCIe_Completion_Timeout",
    "Q00140_PCIe_Ten_Bit_Tag_Support", "Q00099_PMU_Mem_BIST_Test_Select",
    "Q00100_Mem_BIST_Execution_Mode",
};

class HiddenSettings : public ContractTest
{
  protected:
    explicit HiddenSettings(int systemType = 0)
        : m_Front({.Host = "bmc1", .User = "", .Password = ""}, static_cast<ConfigurateSupportedSystemType>(systemType),
                  {})
    {
        m_Front.SetPrefix("One", "Two");
        world.Logs.clear();
    }

    void TellBmc(const std::string& attributes)
    {
        world.Tell("GET", "/redfish/v1/Systems", R"({"Members":[{"@odata.id":"/redfish/v1/Systems/1"}]})");
        world.Tell("SCHEMA", "/redfish/v1/Systems/1/Bios", R"({"Id":"registry"})");
        world.Tell("GET", "/redfish/v1/Systems/1/Bios", doubles::BiosResource(attributes, "/settings", "1"));
    }

    BiosRedfishConfigProc m_Front;
};

TEST_F(HiddenSettings, KeywordsAreSplitAtEveryCommaAndStripped)
{
    const std::vector<std::pair<std::string, std::vector<std::string>>> table = {
        {"Raid", {"Raid"}},
        {"Raid,Boot", {"Raid", "Boot"}},
        {"Boot,Raid,Boot", {"Boot", "Raid", "Boot"}},
        {"Raid Card", {"RaidCard"}},
        {"\"Raid Card\", \"Boot\"", {"RaidCard", "Boot"}},
        {"\t Ra\r\nid\v\f ", {"Raid"}},
        {"Ra\"i\"\"d", {"Raid"}},
        {"'Raid';Boot|x", {"'Raid';Boot|x"}},
        {"a,,b", {"a", "", "b"}},
        {"a,", {"a", ""}},
        {",a", {"", "a"}},
        {",", {"", ""}},
        {"", {""}},
        {" \" \" ", {""}},
    };
    for (const auto& [text, keywords] : table)
    {
        SCOPED_TRACE(text);
        world.Config[KeywordsItem] = text;
        EXPECT_THAT(m_Front.GetGlobalConfigHiddenKeywords(), ElementsAreArray(keywords));
    }
    EXPECT_THAT(world.ConfigAsked, ElementsAreArray(std::vector<std::string>(table.size(), KeywordsItem)));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(HiddenSettings, MissingItemIsLoggedAndGivesNoKeywords)
{
    EXPECT_THAT(m_Front.GetGlobalConfigHiddenKeywords(), IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(NoKeywords));
    EXPECT_THAT(world.ConfigAsked, ElementsAre(KeywordsItem));
}

/// Both kinds of answer map are filtered alike.
template <typename Map> class HiddenFilter : public HiddenSettings
{
  protected:
    static Map Make(const std::vector<std::string>& keys)
    {
        Map map;
        for (const std::string& key : keys)
        {
            map.emplace(key, ValueOf(key));
        }
        return map;
    }

    /// Filters a map of these keys by keywords and gives the keys that are left.
    std::vector<std::string> ByKeywords(const std::vector<std::string>& keys)
    {
        Map map = Make(keys);
        m_Front.HiddenSettingsByKeywords(map);
        return KeysOf(map);
    }

    std::vector<std::string> ByFixedList(const std::vector<std::string>& keys)
    {
        Map map = Make(keys);
        m_Front.HardcodeHiddenSettings(map);
        return KeysOf(map);
    }

    static std::vector<std::string> Prefixed(const std::string& prefix)
    {
        std::vector<std::string> keys = FixedNames;
        for (std::string& key : keys)
        {
            key = prefix + key;
        }
        return keys;
    }

  private:
    static std::vector<std::string> KeysOf(const Map& map)
    {
        std::vector<std::string> keys;
        for (const auto& [key, value] : map)
        {
            EXPECT_EQ(value, ValueOf(key));
            keys.push_back(key);
        }
        return keys;
    }

    static typename Map::mapped_type ValueOf(const std::string& key)
    {
        if constexpr (std::is_same_v<Map, SettingStringMap>)
        {
            return "Raid value of " + key;
        }
        else
        {
            return {"Raid value of " + key, "Raid pending of " + key};
        }
    }
};

using AnswerMaps = testing::Types<SettingStringMap, SettingCompareMap>;
TYPED_TEST_SUITE(HiddenFilter, AnswerMaps);

TYPED_TEST(HiddenFilter, KeywordHidesTheKeysThatItStandsIn)
{
    this->world.Config[KeywordsItem] = "Raid,Boot";
    EXPECT_THAT(this->ByKeywords({"Raid", "Two.RaidCard", "Two.MyRaid", "Two.BootMode", "Two.Cores"}),
                ElementsAre("Two.Cores"));
    EXPECT_THAT(this->world.Logs, IsEmpty());
}

TYPED_TEST(HiddenFilter, KeywordIsComparedByteByByteWithTheKeyAlone)
{
    this->world.Config[KeywordsItem] = "Raid";
    // The value of every entry holds the keyword.
    EXPECT_THAT(this->ByKeywords({"RAID", "raid", "Rai", "aid", "Ra.id", "Ra id", "R"}),
                ElementsAre("R", "RAID", "Ra id", "Ra.id", "Rai", "aid", "raid"));
}

TYPED_TEST(HiddenFilter, KeywordOfTwoWordsMatchesThemWithoutTheBlank)
{
    this->world.Config[KeywordsItem] = "\"Raid Card\"";
    EXPECT_THAT(this->ByKeywords({"Raid Card", "Raid", "RaidCard1"}), ElementsAre("Raid", "Raid Card"));
}

TYPED_TEST(HiddenFilter, EmptyKeywordHidesEverything)
{
    for (const char* text : {"", "x,", ",", " ", "\"\""})
    {
        this->world.Config[KeywordsItem] = text;
        EXPECT_THAT(this->ByKeywords({"", "A", "B"}), IsEmpty()) << text;
    }
}

TYPED_TEST(HiddenFilter, KeywordInThePrefixHidesEverythingUnderIt)
{
    this->world.Config[KeywordsItem] = "wo.";
    EXPECT_THAT(this->ByKeywords({"One.A", "Two.A", "Two.B"}), ElementsAre("One.A"));
}

TYPED_TEST(HiddenFilter, MissingItemLeavesTheMapAsItIs)
{
    EXPECT_THAT(this->ByKeywords({"A", "B"}), ElementsAre("A", "B"));
    EXPECT_THAT(this->world.Logs, ElementsAre(NoKeywords));
}

TYPED_TEST(HiddenFilter, KeywordsAreReadAnewForEveryMap)
{
    this->world.Config[KeywordsItem] = "A";
    EXPECT_THAT(this->ByKeywords({"A", "B"}), ElementsAre("B"));
    this->world.Config[KeywordsItem] = "B";
    EXPECT_THAT(this->ByKeywords({"A", "B"}), ElementsAre("A"));
    EXPECT_THAT(this->ByKeywords({}), IsEmpty());
    EXPECT_THAT(this->world.ConfigAsked, ElementsAre(KeywordsItem, KeywordsItem, KeywordsItem));
}

TYPED_TEST(HiddenFilter, FixedNamesGoOnSystemKindFourOnly)
{
    for (const int kind : {0, 1, 2, 3, 5, 6, -4})
    {
        this->m_Front.m_SystemKind = kind;
        EXPECT_EQ(this->ByFixedList(FixedNames).size(), FixedNames.size()) << kind;
    }
    this->m_Front.m_SystemKind = 4;
    EXPECT_THAT(this->ByFixedList(FixedNames), IsEmpty());
    EXPECT_THAT(this->world.Logs, IsEmpty());
    EXPECT_THAT(this->world.ConfigAsked, IsEmpty());
}

TYPED_TEST(HiddenFilter, EachFixedNameGoesAlone)
{
    this->m_Front.m_SystemKind = 4;
    for (const std::string& name : FixedNames)
    {
        EXPECT_THAT(this->ByFixedList({"A", name}), ElementsAre("A"));
        EXPECT_THAT(this->ByFixedList({"Two.A", "Two." + name}), ElementsAre("Two.A"));
    }
}

TYPED_TEST(HiddenFilter, FixedNamesAreLookedUpExactly)
{
    this->m_Front.m_SystemKind = 4;
    EXPECT_THAT(this->ByFixedList({"Q00066_L1_Stride_PrefetcherX", "Q00066_L1_Stride_Prefetche",
                                   "q00066_L1_Stride_Prefetcher", "xQ00066_L1_Stride_Prefetcher"}),
                testing::SizeIs(4));
}

TYPED_TEST(HiddenFilter, FirstKeyDecidesTheFormOfAllFixedNames)
{
    this->m_Front.m_SystemKind = 4;
    const std::string bare = FixedNames[0];
    const std::string prefixed = "Two." + FixedNames[0];
    EXPECT_THAT(this->ByFixedList({"AnyTwoAtAll", bare, prefixed}), ElementsAre("AnyTwoAtAll", bare));
    EXPECT_THAT(this->ByFixedList({"A", bare, prefixed}), ElementsAre("A", prefixed));
    EXPECT_THAT(this->ByFixedList({"A.two", bare, prefixed}), ElementsAre("A.two", prefixed));
    // The first prefix has no say.
    EXPECT_THAT(this->ByFixedList({"One.A", "One." + bare, prefixed}), ElementsAre("One.A", "One." + bare, prefixed));
    // The search ends at a NUL byte.
    const std::string cut = std::string("A\0Two", 5);
    EXPECT_THAT(this->ByFixedList({cut, bare, prefixed}), ElementsAre(cut, prefixed));
}

TYPED_TEST(HiddenFilter, EmptySecondPrefixLooksForNamesBehindAPoint)
{
    this->m_Front.m_SystemKind = 4;
    this->m_Front.m_SecondPrefix = "";
    EXPECT_THAT(this->ByFixedList({"." + FixedNames[0], FixedNames[0]}), ElementsAre(FixedNames[0]));
}

TYPED_TEST(HiddenFilter, FixedListFollowsTheKeywords)
{
    this->m_Front.m_SystemKind = 4;
    this->world.Config[KeywordsItem] = "Hide";
    // Only what the keywords left decides the form.
    EXPECT_THAT(this->ByKeywords({"AHide", "Two.A", "Two." + FixedNames[3]}), ElementsAre("Two.A"));
    EXPECT_THAT(this->ByKeywords({"AHide"}), IsEmpty());
}

TYPED_TEST(HiddenFilter, FixedListRunsWithoutKeywordsToo)
{
    this->m_Front.m_SystemKind = 4;
    EXPECT_THAT(this->ByKeywords(this->Prefixed("Two.")), IsEmpty());
    EXPECT_THAT(this->world.Logs, ElementsAre(NoKeywords));
}

TYPED_TEST(HiddenFilter, FixedNamesStayWhateverTheSystemTypeOfTheConstructor)
{
    this->world.Config[KeywordsItem] = "Raid";
    for (const int systemType : {1, 4, 5})
    {
        BiosRedfishConfigProc front({.Host = "bmc1", .User = "", .Password = ""},
                                    static_cast<ConfigurateSupportedSystemType>(systemType), {});
        TypeParam map = this->Make(FixedNames);
        front.HiddenSettingsByKeywords(map);
        EXPECT_EQ(map, this->Make(FixedNames)) << systemType;
    }
}

TEST_F(HiddenSettings, GroupReadLeavesHiddenSettingsOut)
{
    TellBmc(R"({"RaidCard":"On","Cores":8})");
    world.Config[KeywordsItem] = "Raid";
    SettingStringMap values;
    EXPECT_THAT(m_Front.QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Two.Cores", "8")));
}

TEST_F(HiddenSettings, SingleReadStillAnswers)
{
    TellBmc(R"({"RaidCard":"On"})");
    world.Settings["RaidCard"].AttributeKey = "RaidCard";
    world.Config[KeywordsItem] = "Raid";
    SettingStringMap values;
    EXPECT_THAT(m_Front.QuerySettingValue("RaidCard", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("One.RaidCard", "On")));
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

TEST_F(HiddenSettings, JsonOutputIsSearchedByItsOneKey)
{
    TellBmc(R"({"RaidCard":"On"})");
    BiosRedfishConfigProc front({.Host = "bmc1", .User = "", .Password = ""}, SystemTypeBios, {.OutputFormat = 1});
    front.SetPrefix("One", "Two");
    world.Config[KeywordsItem] = "Raid";
    SettingStringMap values;
    EXPECT_THAT(front.QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Two", R"({"RaidCard":"On"})")));

    world.Config[KeywordsItem] = "Two";
    values.clear();
    EXPECT_THAT(front.QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, IsEmpty());
}

} // namespace
