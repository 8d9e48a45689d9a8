#include "FindCommand.h"

#include <gtest/gtest.h>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "ConfigFile.h"
#include "KnowingFront.h"
#include "Options.h"
#include "SmallRegistry.h"
#include "TextManager.h"

using namespace Tavrine;
using namespace Tavrine::Tool;
using tooltest::Configured;
using tooltest::KnowingFront;
using tooltest::ReadTextManager;

namespace
{

using Words = std::vector<std::string>;

KnowingFront Machine()
{
    KnowingFront front("One", "Two");
    front.Registry = {{0, "", ""}, tooltest::SmallRegistry};
    front.Group = {{0, "", ""}, {{"Two.Mode", "Uefi"}, {"Two.LooseEnd", "Zzz"}}};
    return front;
}

Answer Find(KnowingFront front, const Words& words, bool regex = false, std::optional<std::size_t> columns = {})
{
    Options options;
    options.Names = words;
    options.Regex = regex;
    return FindSettings(front, ReadTextManager, options, columns);
}

} // namespace

TEST(FindCommand, WordsAreFoundWhereverTheyStand)
{
    const Configured nothing("");
    struct Row
    {
        Words Looked;
        bool Regex;
        const char* Text;
    };
    const Row rows[] = {
        {{"BOOT MODE"}, false, "Two.Mode\tBoot Mode\tdisplay name\n"},
        {{"mode"}, false, "Two.Mode\tBoot Mode\tname, display name, values\n"},
        {{"second line"}, false, "Two.Mode\tBoot Mode\thelp\n"},
        {{"twice"}, false, "Two.Mode\tBoot Mode\twarning\n"},
        {{"uefi"}, false, "Two.Mode\tBoot Mode\tvalues\n"},
        {{"16"}, false, "Two.Timeout\tTimeout\tvalues\n"},
        {{"セキュ"}, false, "Two.Secure\tセキュア\tdisplay name\n"},
        {{"loose"}, false, "Two.LooseEnd\t\tname\n"},
        {{"zZ"}, false, "Two.LooseEnd\t\tvalues\n"},
        {{"boot", "twice"}, false, "Two.Mode\tBoot Mode\tdisplay name, warning\n"},
        {{"^t.*out$"}, true, "Two.Timeout\tTimeout\tname, display name\n"},
        {{"^(Seal|Fixed)$"}, true, "Two.Fixed\tFixed\tname, display name\nTwo.Seal\tSeal\tname, display name\n"},
    };
    for (const Row& row : rows)
    {
        const Answer answer = Find(Machine(), row.Looked, row.Regex);
        EXPECT_EQ(answer.Text, row.Text) << row.Looked[0];
        EXPECT_EQ(answer.Code, 0);
    }
}

TEST(FindCommand, NothingFoundIsTold)
{
    const Configured nothing("");
    for (const Words& words : {Words{"nowhere to be"}, Words{"mode", "zzz"}, Words{"geheim"}, Words{"m.de"}})
    {
        const Answer answer = Find(Machine(), words);
        EXPECT_EQ(answer.Code, 20) << words[0];
        EXPECT_EQ(answer.Text, "");
    }
}

TEST(FindCommand, WhatItGaveUpOnIsTold)
{
    const Configured nothing("");
    KnowingFront front = Machine();
    const std::string endless = "^(?:(a+)+b|a*!|Seal)$";
    EXPECT_TRUE(Find(front, {endless}, true).Notes.empty());
    front.Group.second["Two.LooseEnd"] = std::string(40, 'a') + "!";
    const Answer one = Find(front, {endless}, true);
    EXPECT_EQ(one.Code, 0);
    EXPECT_EQ(one.Text, "Two.Seal\tSeal\tname, display name\n");
    EXPECT_EQ(one.Notes, Words{"warning: the search was given up on 1 text as it took too long, so that settings or "
                               "places may be missing"});
    front.Group.second["Two.Another"] = std::string(50, 'a') + "!";
    const Answer two = Find(front, {"^(?:(a+)+b|a*!)$"}, true);
    EXPECT_EQ(two.Code, 20);
    EXPECT_EQ(two.Message, "No setting with what is looked for was found before the search was given up");
    EXPECT_EQ(two.Notes, Words{"warning: the search was given up on 2 texts as it took too long, so that settings or "
                               "places may be missing"});
    Options options;
    options.Names = {endless};
    options.Regex = options.Json = true;
    EXPECT_EQ(FindSettings(front, ReadTextManager, options, {}).More, (boost::json::object{{"givenUp", 2}}));
}

TEST(FindCommand, WhatAnotherWordRulesOutIsNotGivenUp)
{
    const Configured nothing("");
    KnowingFront front = Machine();
    front.Group.second["Two.LooseEnd"] = std::string(40, 'a') + "!";
    const std::string endless = "^(?:(a+)+b|a*!)$";
    for (const Words& words : {Words{endless, "nowhere"}, {"nowhere", endless}})
    {
        const Answer none = Find(front, words, true);
        EXPECT_EQ(none.Code, 20) << words[0];
        EXPECT_EQ(none.Message, "Unable to find a setting with what is looked for") << words[0];
        EXPECT_TRUE(none.Notes.empty()) << words[0];
    }
    for (const Words& words : {Words{endless, "loose"}, {"loose", endless}, {endless, "^(?:(a+)+c|a*!)$"}})
    {
        const Answer maybe = Find(front, words, true);
        EXPECT_EQ(maybe.Message, "No setting with what is looked for was found before the search was given up");
        EXPECT_EQ(maybe.Notes, Words{"warning: the search was given up on 1 text as it took too long, so that "
                                     "settings or places may be missing"})
            << words[0];
    }
}

TEST(FindCommand, OfASettingThatWasFoundOnlyPlacesCanBeMissing)
{
    const Configured nothing("");
    KnowingFront front = Machine();
    front.Group.second["Two.LooseEnd"] = std::string(40, 'a') + "!";
    const std::string endless = "^(?:(a+)+b|a*!|LooseEnd)$";
    for (const Words& words : {Words{endless, "loose"}, {"loose", endless}})
    {
        const Answer lacking = Find(front, words, true);
        EXPECT_EQ(lacking.Text, "Two.LooseEnd\t\tname\n");
        EXPECT_EQ(lacking.Notes, Words{"warning: the search was given up on 1 text as it took too long, so that "
                                       "settings or places may be missing"});
    }
    for (const Words& words : {Words{endless, "a!"}, {"a!", endless}})
    {
        const Answer whole = Find(front, words, true);
        EXPECT_EQ(whole.Text, "Two.LooseEnd\t\tname, values\n");
        EXPECT_TRUE(whole.Notes.empty());
    }
}

TEST(FindCommand, JsonTellsThePlaces)
{
    const Configured nothing("");
    KnowingFront front = Machine();
    Options options;
    options.Names = {"mode"};
    options.Json = true;
    EXPECT_EQ(boost::json::serialize(FindSettings(front, ReadTextManager, options, {}).Data),
              R"({"Two.Mode":{"displayName":"Boot Mode","places":["name","display name","values"]}})");
}

TEST(FindCommand, ATerminalGetsATable)
{
    const Configured nothing("");
    EXPECT_EQ(Find(Machine(), {"セキュ"}, false, 80).Text,
              "SETTING     DISPLAY NAME  FOUND IN\nTwo.Secure  セキュア      display name\n");
}

TEST(FindCommand, KeywordsHide)
{
    const Configured configured("HIDDEN_CONFIG_KEYWORDS_LIST = 'Mode, Loose'\n");
    EXPECT_EQ(Find(Machine(), {"mode"}).Code, 20);
    EXPECT_EQ(Find(Machine(), {"zzz"}).Code, 20);
    EXPECT_EQ(Find(Machine(), {"secure"}).Text, "Two.Secure\tセキュア\tname\n");
}

TEST(FindCommand, AWrongWordIsAFaultOfTheCommandLine)
{
    Options options;
    options.Names = {"good", "("};
    EXPECT_EQ(FindFault(options), "");
    options.Regex = true;
    EXPECT_EQ(FindFault(options), "Unable to look for (: missing closing parenthesis at 1");
    options.Names = {""};
    EXPECT_NE(FindFault(options), "");
}

TEST(FindCommand, AFailureOfTheLibraryIsTold)
{
    const Configured nothing("");
    KnowingFront front = Machine();
    front.Registry = {{24, "gone", ""}, ""};
    EXPECT_EQ(Find(front, {"mode"}).Code, 24);
    front.Registry = {{0, "", ""}, "[]"};
    EXPECT_EQ(Find(front, {"mode"}).Code, 27);
}
