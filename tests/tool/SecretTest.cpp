#include "Secret.h"

#include <array>
#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <gtest/gtest.h>

#include "SetPlan.h"

using namespace Tavrine::Tool;

namespace json = boost::json;

namespace
{

/// Short enough to stand in the object of a text itself.
constexpr std::string_view Password = "hunter2";

/// The memory of one object, which can be looked at after its end.
template <typename T> struct Remains
{
    alignas(T) std::array<char, sizeof(T)> Memory{};

    template <typename... Arguments> T& Make(Arguments&&... arguments)
    {
        return *new (Memory.data()) T(std::forward<Arguments>(arguments)...);
    }
    bool HoldPassword() const
    {
        return std::string_view(Memory.data(), Memory.size()).find(Password) != std::string_view::npos;
    }
};

void Fill(SetSetting& setting)
{
    setting.Value = Password;
    setting.UncheckedText = Password;
    setting.Context = '"' + std::string(Password) + '"';
}

} // namespace

TEST(SetSetting, LeavesNothingOfItsTextsBehind)
{
    Remains<SetSetting> remains;
    SetSetting& setting = remains.Make();
    Fill(setting);
    ASSERT_TRUE(remains.HoldPassword());
    setting.~SetSetting();
    EXPECT_FALSE(remains.HoldPassword());
}

TEST(SetSetting, LeavesNothingBehindWhereItIsMovedFrom)
{
    Remains<SetSetting> remains;
    SetSetting& setting = remains.Make();
    Fill(setting);
    const SetSetting taken = std::move(setting);
    EXPECT_EQ(taken.Value, Password);
    setting.~SetSetting();
    EXPECT_FALSE(remains.HoldPassword());
}

TEST(Secret, TakesOverATextOfWhichNothingIsLeft)
{
    Remains<std::string> remains;
    std::string& text = remains.Make(Password);
    ASSERT_TRUE(remains.HoldPassword());
    Secret secret(std::move(text));
    EXPECT_EQ(secret.Text(), Password);
    EXPECT_FALSE(remains.HoldPassword());
    text.~basic_string();
}

TEST(Wipe, LeavesNothingOfATextInADocument)
{
    json::string text(json::string_view(Password.data(), Password.size()));
    const char* memory = text.data();
    Wipe(text);
    EXPECT_TRUE(text.empty());
    for (std::size_t index = 0; index < Password.size(); ++index)
    {
        ASSERT_EQ(memory[index], '\0') << index;
    }
}

TEST(QuotedJson, IsWhatADocumentHoldsOfAText)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
    {
        all += static_cast<char>(byte);
    }
    for (const std::string& text :
         {std::string(), std::string(Password), std::string("a\"b\\\n/"), std::string("Zürich"), all,
          std::string(10'000, '\x1f'), std::string(10'000, '"'), std::string(100'000, 'x')})
    {
        EXPECT_EQ(QuotedJson(text), json::serialize(json::value(text)));
    }
}

TEST(WithoutSecrets, EveryFormIsBlottedOut)
{
    struct Row
    {
        const char* Secret;
        const char* Text;
        const char* Shown;
    };
    const Row rows[] = {
        {"hunter2", "The value hunter2 is bad, hunter2!", "The value ******** is bad, ********!"},
        {"hunter2", "hunter hunte", "hunter hunte"},
        {"hunter2", "hunter2hunter2", "********"},
        {"abcabc", "abcabcabc", "********"},
        {R"(abc"de)", R"(raw abc"de, once abc\"de, twice abc\\\"de)", "raw ********, once ********, twice ********"},
        {R"(abc\de)", R"(raw abc\de, once abc\\de, twice abc\\\\de)", "raw ********, once ********, twice ********"},
        {"abc\tde", R"(raw abc	de, once abc\tde, twice abc\\tde)", "raw ********, once ********, twice ********"},
        {"abc\x1f"
         "de",
         "as a message has it: abc de", "as a message has it: ********"},
        {"abcde\n", "at the end: abcde", "at the end: ********"},
        {" abcde", "abcde at the start", "******** at the start"},
        {"a\x7f"
         "bc",
         "a bc", "********"},
        {"abcdefgh", "cut: abcdef...", "cut: ********..."},
        {"abc\"defgh", R"(cut: abc\"d... and the rest)", "cut: ********... and the rest"},
        {"abcdefgh", "abc... abcd", "abc... abcd"},
        {"abcdefgh", "shortest start that tells: abcd...", "shortest start that tells: ********..."},
        {"abcdefgh", "other words... and abcdef... and abcde...", "other words... and ********... and ********..."},
        {"Zürich", "Zürich", "********"},
        {"", "nothing", "nothing"},
        {"hunter2", "", ""},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(WithoutSecrets(row.Text, {row.Secret}), row.Shown) << row.Secret << " in " << row.Text;
    }
}

TEST(WithoutSecrets, OfSecretsThatOverlapNothingIsLeft)
{
    EXPECT_EQ(WithoutSecrets("abcd and abcdefgh", {"abcd", "abcdefgh"}), "******** and ********");
    EXPECT_EQ(WithoutSecrets("abcdefgh", {"abcdef", "defgh"}), "********");
    EXPECT_EQ(WithoutSecrets("words", {}), "words");
}

TEST(WithoutSecrets, WhereAShortOneStandsNothingOfTheWordsIsLeft)
{
    const std::string hidden = "what the BMC answered is not shown, since a new password may stand in it";
    for (const char* secret : {"a", "abc", "a\"b", "a\\b", "a\tb"})
    {
        for (const std::string& form : {std::string(secret), QuotedJson(secret), QuotedJson(QuotedJson(secret))})
        {
            EXPECT_TRUE(HoldsShortSecret("The value " + form + " is bad.", {secret})) << form;
            EXPECT_EQ(WithoutSecrets("The value " + form + " is bad.", {"hunter2", secret}), hidden) << form;
        }
        EXPECT_FALSE(HoldsShortSecret("No other", {secret, ""}));
        EXPECT_EQ(WithoutSecrets("No other", {secret, ""}), "No other");
    }
    EXPECT_FALSE(HoldsShortSecret("abcd", {"abcd"}));
    EXPECT_EQ(WithoutSecrets("abc: the connection ended; whether the change was done is not known.", {"abc"}),
              hidden + "; whether the change was done is not known");
}

TEST(Hidden, ShortSecretsAreLookedForWhereTheBmcSpeaks)
{
    struct Row
    {
        int Code;
        const char* Message;
        bool IsShown;
    };
    const Row rows[] = {
        {24, "h: the name abc is not known.", true},
        {24, "h: it refuses the user name or the password (401 Unauthorized): not abc.", false},
        {24, "h: the account has not the privilege for PATCH /x (403 Forbidden): not abc.", false},
        {33, "h is not ready (503): not abc.", false},
        {18, "not abc.", false},
    };
    for (const Row& row : rows)
    {
        const Failure shown = Hidden({row.Code, row.Message, {}, "abc"}, {"abc"}, "BIOS.A");
        EXPECT_EQ(shown.Message.find("abc") != std::string::npos, row.IsShown) << row.Message;
        EXPECT_EQ(shown.Cause, row.IsShown ? "abc" : "") << row.Message;
    }
}
