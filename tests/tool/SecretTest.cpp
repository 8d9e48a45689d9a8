#include "Secret.h"

#include <array>
#include <cstddef>
#include <new>
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
