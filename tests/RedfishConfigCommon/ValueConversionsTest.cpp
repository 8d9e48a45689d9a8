#include "ValueConversions.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <locale>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

using namespace Tavrine;

namespace
{

std::string TextOf(const OptionalVar& value)
{
    std::string text = "(none)";
    GetOptionalVarAsString(value, text);
    return text;
}

} // namespace

TEST(CaseInsensitiveComparator, OrdersByLoweredBytesShorterFirst)
{
    const CaseInsensitiveComparator less;
    const std::vector<std::pair<std::string, std::string>> ordered = {
        {"", "a"},    {"BootMode", "bootmodes"}, {"a", "B"},    {"A", "b"},   {"Z_", "za"},
        {"A1", "aA"}, {"a", "\xc3\xa4"},         {"Z", "\x80"}, {"_a", "AA"},
    };
    for (const auto& [first, second] : ordered)
    {
        EXPECT_TRUE(less(first, second)) << first << " < " << second;
        EXPECT_FALSE(less(second, first)) << second << " < " << first;
    }
    EXPECT_FALSE(less("BootMode", "bOOTmODE"));
    EXPECT_FALSE(less("bOOTmODE", "BootMode"));
}

namespace
{

/// Lowers as nothing else does: digits to "a", and "A" to itself.
class OddLetters : public std::ctype<char>
{
  protected:
    char do_tolower(char letter) const override { return letter >= '0' && letter <= '9' ? 'a' : letter; }
    const char* do_tolower(char* first, const char* last) const override
    {
        std::transform(static_cast<const char*>(first), last, first, [this](char c) { return do_tolower(c); });
        return last;
    }
};

} // namespace

TEST(CaseInsensitiveComparator, FollowsTheGlobalLocale)
{
    const CaseInsensitiveComparator less;
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), new OddLetters));
    EXPECT_TRUE(less("xA", "xa"));
    EXPECT_FALSE(less("x1", "x2") || less("x2", "x1"));
    EXPECT_FALSE(less("x9", "xa") || less("xa", "x9"));
    EXPECT_TRUE(less("x9", "x1b"));
    std::locale::global(former);
    EXPECT_FALSE(less("xA", "xa"));
    EXPECT_TRUE(less("x1", "x2"));
}

namespace
{

/// Names as registries have them: long common beginnings, differences in case, bytes beyond ASCII.
rc::Gen<std::string> Name()
{
    const std::vector<std::string> parts = {"SettingOfTheProcessor",
                                            "settingoftheprocessor",
                                            "Q00066_",
                                            "Setting0",
                                            "12345678",
                                            "a",
                                            "A",
                                            "_",
                                            "Z",
                                            "\xc3\xa4",
                                            "\x80",
                                            "\xff",
                                            std::string(1, '\0')};
    const auto join = [](const std::vector<std::string>& chosen)
    { return std::accumulate(chosen.begin(), chosen.end(), std::string()); };
    return rc::gen::map(rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(parts)), join);
}

std::string LoweredCopy(std::string text)
{
    const std::locale locale;
    std::use_facet<std::ctype<char>>(locale).tolower(text.data(), text.data() + text.size());
    return text;
}

void ExpectOrderOfLoweredCopies()
{
    const std::string first = *Name();
    const std::string second = *Name();
    const CaseInsensitiveComparator less;
    // std::string compares bytes without a sign, the shorter first on a tie.
    RC_ASSERT(less(first, second) == (LoweredCopy(first) < LoweredCopy(second)));
    RC_ASSERT(!less(first, first));
}

} // namespace

RC_GTEST_PROP(CaseInsensitiveComparator, ComparesLoweredCopies, ()) { ExpectOrderOfLoweredCopies(); }

RC_GTEST_PROP(CaseInsensitiveComparator, ComparesCopiesLoweredByAnOddLocale, ())
{
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), new OddLetters));
    const std::shared_ptr<void> back(nullptr, [&](void*) { std::locale::global(former); });
    ExpectOrderOfLoweredCopies();
}

TEST(CaseInsensitiveComparator, MapKeepsTheCaseOfTheFirstInsertion)
{
    SettingValueMap values;
    values["BootMode"] = "Uefi";
    values["BOOTMODE"] = "LegacyBios";
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(values.begin()->first, "BootMode");
    EXPECT_EQ(TextOf(values.begin()->second), "LegacyBios");
}

TEST(VariantToJson, KeepsTheKind)
{
    EXPECT_EQ(boost::json::serialize(VariantToJson(std::string("true"))), R"("true")");
    EXPECT_EQ(boost::json::serialize(VariantToJson(std::string("a\"b\n"))), R"("a\"b\n")");
    EXPECT_EQ(boost::json::serialize(VariantToJson(true)), "true");
    EXPECT_EQ(boost::json::serialize(VariantToJson(false)), "false");
    EXPECT_EQ(boost::json::serialize(VariantToJson(std::numeric_limits<std::int64_t>::min())), "-9223372036854775808");
}

TEST(TransferStringToOptionalVar, KeepsTheKindThatStands)
{
    OptionalVar number = std::int64_t{1};
    EXPECT_TRUE(TransferStringToOptionalVar(number, "-9223372036854775808"));
    EXPECT_EQ(number, OptionalVar(std::numeric_limits<std::int64_t>::min()));

    OptionalVar flag = false;
    EXPECT_TRUE(TransferStringToOptionalVar(flag, "TrUe"));
    EXPECT_EQ(flag, OptionalVar(true));
    EXPECT_TRUE(TransferStringToOptionalVar(flag, "FALSE"));
    EXPECT_EQ(flag, OptionalVar(false));

    OptionalVar text = "Old";
    EXPECT_TRUE(TransferStringToOptionalVar(text, "1"));
    EXPECT_EQ(text, OptionalVar(std::string("1")));
    EXPECT_TRUE(TransferStringToOptionalVar(text, ""));
    EXPECT_EQ(text, OptionalVar(std::string()));

    OptionalVar nothing;
    EXPECT_TRUE(TransferStringToOptionalVar(nothing, "true"));
    EXPECT_EQ(nothing, OptionalVar(std::string("true")));
}

TEST(TransferStringToOptionalVar, RefusesWhatDoesNotSuitAndTouchesNothing)
{
    for (const std::string text : {"", " ", "1 ", " 1", "+1", "1.0", "0x1", "-", "one", "1e3", "9223372036854775808",
                                   "-9223372036854775809", "18446744073709551615"})
    {
        OptionalVar number = std::int64_t{7};
        EXPECT_FALSE(TransferStringToOptionalVar(number, text)) << text;
        EXPECT_EQ(number, OptionalVar(std::int64_t{7})) << text;
    }
    for (const std::string text : {"", "1", "0", "yes", "true ", "tru", "truee"})
    {
        OptionalVar flag = true;
        EXPECT_FALSE(TransferStringToOptionalVar(flag, text)) << text;
        EXPECT_EQ(flag, OptionalVar(true)) << text;
    }
}

TEST(GetOptionalVarAsString, WritesEveryKindAndRefusesNothing)
{
    EXPECT_EQ(TextOf(std::string()), "");
    EXPECT_EQ(TextOf(std::string("a b")), "a b");
    EXPECT_EQ(TextOf(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(TextOf(true), "true");
    EXPECT_EQ(TextOf(false), "false");
    EXPECT_EQ(TextOf(std::nullopt), "(none)");
    std::string text = "kept";
    EXPECT_FALSE(GetOptionalVarAsString(std::nullopt, text));
    EXPECT_EQ(text, "kept");
}

TEST(ValueKinds, AreTheAlternativeHeld)
{
    EXPECT_TRUE(IsNumSetting(std::int64_t{0}));
    EXPECT_FALSE(IsNumSetting(std::string("0")));
    EXPECT_FALSE(IsNumSetting(false));
    EXPECT_FALSE(IsNumSetting(std::nullopt));
    EXPECT_TRUE(IsBoolenSetting(false));
    EXPECT_FALSE(IsBoolenSetting(std::string("false")));
    EXPECT_FALSE(IsBoolenSetting(std::int64_t{0}));
    EXPECT_FALSE(IsBoolenSetting(std::nullopt));
}

TEST(HexToDec, TakesEveryFormOfTheRange)
{
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"0", "0"},
        {"0x0", "0"},
        {"-0", "0"},
        {"-0x0", "0"},
        {"10", "16"},
        {"0x1f", "31"},
        {"0X1F", "31"},
        {"ABCDEF", "11259375"},
        {"00000000000000000001", "1"},
        {"-a", "-10"},
        {"-0X0a", "-10"},
        {"0xFFFFFFFFFFFFFFFF", "18446744073709551615"},
        {"-0x8000000000000000", "-9223372036854775808"},
        {"-7fffffffffffffff", "-9223372036854775807"},
    };
    for (const auto& [hex, decimal] : rows)
    {
        EXPECT_TRUE(isHexString(hex)) << hex;
        EXPECT_EQ(HexToDec(hex), decimal) << hex;
    }
}

TEST(HexToDec, GivesBackWhatIsRefused)
{
    for (const std::string text : {"",
                                   "-",
                                   "0x",
                                   "0X",
                                   "-0x",
                                   "x1",
                                   "0xg",
                                   "g",
                                   " 1",
                                   "1 ",
                                   "0x 1",
                                   "+1",
                                   "0x+1",
                                   "0x-1",
                                   "--1",
                                   "-0x-1",
                                   "1.0",
                                   "0x0x1",
                                   "1h",
                                   "0x10000000000000000",
                                   "-0x8000000000000001",
                                   "-0xFFFFFFFFFFFFFFFF",
                                   "\t1",
                                   "1\n"})
    {
        EXPECT_FALSE(isHexString(text)) << text;
        EXPECT_EQ(HexToDec(text), text);
    }
    const std::string withNul("1\0", 2);
    EXPECT_FALSE(isHexString(withNul));
}

TEST(DecToHex, WritesCapitalDigitsAndALeadingSign)
{
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"0", "0x0"},      {"-0", "0x0"},
        {"007", "0x7"},    {"255", "0xFF"},
        {"-255", "-0xFF"}, {"18446744073709551615", "0xFFFFFFFFFFFFFFFF"},
        {"-1", "-0x1"},    {"-9223372036854775808", "-0x8000000000000000"},
    };
    for (const auto& [decimal, hex] : rows)
    {
        EXPECT_EQ(DecToHex(decimal), hex) << decimal;
    }
}

TEST(DecToHex, GivesBackAnyOtherText)
{
    for (const std::string text : {"", "-", "Enabled", " 1", "1 ", "+1", "1.5", "0x1", "1e3", "18446744073709551616",
                                   "-9223372036854775809", "true"})
    {
        EXPECT_EQ(DecToHex(text), text);
    }
}

RC_GTEST_PROP(HexadecimalProperty, SignedIntegersSurviveTheRoundTrip, (std::int64_t number))
{
    const std::string decimal = std::to_string(number);
    RC_ASSERT(isHexString(DecToHex(decimal)));
    RC_ASSERT(HexToDec(DecToHex(decimal)) == decimal);
}

RC_GTEST_PROP(HexadecimalProperty, UnsignedIntegersSurviveTheRoundTrip, ())
{
    // Small and large magnitudes alike, not the small ones that are drawn by default.
    const auto shift = *rc::gen::inRange(0, 64);
    const std::uint64_t number = *rc::gen::arbitrary<std::uint64_t>() << shift;
    const std::string decimal = std::to_string(number);
    RC_ASSERT(HexToDec(DecToHex(decimal)) == decimal);
}

RC_GTEST_PROP(HexadecimalProperty, NoTextIsChangedUnlessItIsHexadecimal, (std::string text))
{
    RC_ASSERT(isHexString(text) || HexToDec(text) == text);
}
