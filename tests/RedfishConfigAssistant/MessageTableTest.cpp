#include "MessageTable.h"

#include <optional>
#include <set>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "SharedData.h"

using namespace Tavrine;

namespace
{

namespace json = boost::json;

/// The Base registry of the standard; nothing where it does not lie beside this checkout.
std::optional<json::value> BaseRegistry()
{
    const auto file = testdata::SharedData() / "Base.1.18.0.json";
    return std::filesystem::exists(file) ? std::optional(json::parse(testdata::ReadFile(file))) : std::nullopt;
}

std::string WithSingleBlanks(std::string text)
{
    for (std::size_t at = text.find("  "); at != std::string::npos; at = text.find("  ", at))
    {
        text.erase(at, 1);
    }
    return text;
}

bool IsTrouble(const KnownMessage& message)
{
    return message.Kind != MessageKind::Success && message.Kind != MessageKind::Note;
}

} // namespace

TEST(MessageTable, HoldsTheTextsOfTheBaseRegistry)
{
    const auto registry = BaseRegistry();
    if (!registry)
    {
        GTEST_SKIP() << "no Base registry beside this checkout";
    }
    const json::object& messages = registry->at("Messages").as_object();
    ASSERT_GE(messages.size(), 100U);
    for (const auto& entry : messages)
    {
        const std::string key = entry.key();
        SCOPED_TRACE(key);
        const std::string official = WithSingleBlanks(std::string(entry.value().at("Message").as_string()));
        const KnownMessage* const known = FindMessage(key);
        ASSERT_NE(known, nullptr);
        if (key == "GeneralError")
        {
            EXPECT_TRUE(official.starts_with(known->Text)); // the rest sends the reader elsewhere
            continue;
        }
        EXPECT_EQ(known->Text, official);
        std::set<char> places;
        for (std::size_t at = known->Text.find('%'); at != std::string_view::npos; at = known->Text.find('%', at + 1))
        {
            places.insert(known->Text.at(at + 1));
        }
        // The registry itself counts one too few in a single place.
        const std::int64_t counted = entry.value().at("NumberOfArgs").as_int64();
        EXPECT_EQ(static_cast<std::int64_t>(places.size()), key == "ActionParameterValueOutOfRange" ? 3 : counted);
    }
}

TEST(MessageTable, SeverityOfTheBaseRegistryAgreesWithTheKind)
{
    const auto registry = BaseRegistry();
    if (!registry)
    {
        GTEST_SKIP() << "no Base registry beside this checkout";
    }
    // Warnings that tell of no failure.
    const std::set<std::string> harmless = {
        "NoOperation",        "PropertyValueModified", "PropertyDeprecated",         "PropertyValueDeprecated",
        "ResourceDeprecated", "ActionDeprecated",      "ConditionInRelatedResource", "EventBufferExceeded",
        "ResetRecommended"};
    for (const auto& entry : registry->at("Messages").as_object())
    {
        const std::string key = entry.key();
        const KnownMessage* const known = FindMessage(key);
        ASSERT_NE(known, nullptr) << key;
        const bool fine = entry.value().at("MessageSeverity").as_string() == "OK" || harmless.contains(key);
        EXPECT_EQ(IsTrouble(*known), !fine) << key;
    }
}

TEST(MessageTable, TheArgumentOfAPropertyIsTheOneThatItsTextNames)
{
    const auto registry = BaseRegistry();
    if (!registry)
    {
        GTEST_SKIP() << "no Base registry beside this checkout";
    }
    for (const auto& entry : registry->at("Messages").as_object())
    {
        const KnownMessage* const known = FindMessage(std::string(entry.key()));
        ASSERT_NE(known, nullptr) << entry.key();
        const std::string text = std::string(known->Text);
        const auto names = [&text](const std::string& word)
        {
            const std::size_t at = text.find(word);
            const std::size_t place =
                at == std::string::npos ? at : at + word.size() + (text[at + word.size()] == '\'');
            return place != std::string::npos && text[place] == '%' ? static_cast<unsigned int>(text[place + 1] - '0')
                                                                    : 0U;
        };
        if (known->PropertyArgument != 0)
        {
            const unsigned int named = std::max(names("property "), names("parameter "));
            EXPECT_EQ(known->PropertyArgument, named) << entry.key() << ": " << text;
        }
        else if (known->Kind == MessageKind::BadValue || known->Kind == MessageKind::Unknown)
        {
            EXPECT_EQ(std::max(names("property "), names("parameter ")), 0U) << entry.key() << ": " << text;
        }
    }
}

TEST(MessageTable, KeyStandsBehindTheLastPointOrColon)
{
    EXPECT_EQ(MessageKey("Base.1.8.PropertyUnknown"), "PropertyUnknown");
    EXPECT_EQ(MessageKey("Base.v1_0_0:Success"), "Success");
    EXPECT_EQ(MessageKey("Success"), "Success");
    EXPECT_EQ(MessageKey(""), "");
    EXPECT_EQ(MessageKey("Base."), "");
}

TEST(MessageTable, TextsTakeTheirArguments)
{
    EXPECT_EQ(MessageText("Base.1.8.ServiceTemporarilyUnavailable", {"60"}),
              "The service is temporarily unavailable. Retry in 60 seconds.");
    EXPECT_EQ(MessageText("Base.1.8.PropertyUnknown", {}),
              "The property ? is not in the list of valid properties for the resource.");
    EXPECT_EQ(MessageText("Oem.1.Strange", {"a"}), "Oem.1.Strange");
}
