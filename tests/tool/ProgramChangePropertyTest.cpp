// Any text as the value of a text setting: it arrives unchanged, or is refused.

#include <gtest/gtest.h>

#include <cstdint>

#include <boost/json/parse.hpp>
#include <httplib.h>
#include <rapidcheck.h>

#include "ChangeMachine.h"
#include "InsideRun.h"

using namespace tooltest;

namespace json = boost::json;

namespace
{

constexpr const char* SettingsPath = "/redfish/v1/Systems/1/Bios/Settings";
constexpr std::size_t LongestOwner = 64;
constexpr int CodeInvalidValue = 10;

/// One code point in UTF-8.
std::string Encode(std::uint32_t point)
{
    const auto tail = [point](unsigned int shift)
    { return static_cast<char>(static_cast<unsigned char>(0x80U | ((point >> shift) & 0x3FU))); };
    const auto head = [](std::uint32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    if (point < 0x80)
    {
        return {head(point)};
    }
    if (point < 0x800)
    {
        return {head(0xC0U | (point >> 6U)), tail(0)};
    }
    if (point < 0x10000)
    {
        return {head(0xE0U | (point >> 12U)), tail(6), tail(0)};
    }
    return {head(0xF0U | (point >> 18U)), tail(12), tail(6), tail(0)};
}

struct Value
{
    std::string Bytes;
    /// Of valid UTF-8; nothing of what is none.
    std::optional<std::size_t> Points;
};

std::ostream& operator<<(std::ostream& out, const Value& value) { return out << json::value(value.Bytes); }

rc::Gen<std::uint32_t> CodePoint()
{
    return rc::gen::weightedOneOf<std::uint32_t>({
        {4, rc::gen::inRange<std::uint32_t>(1, 0x80)},
        {1, rc::gen::inRange<std::uint32_t>(0x80, 0x800)},
        {1, rc::gen::inRange<std::uint32_t>(0x800, 0xD800)},
        {1, rc::gen::inRange<std::uint32_t>(0xE000, 0x110000)},
        {3, rc::gen::element<std::uint32_t>('"', '\\', '/', '=', '-', ' ', '\n', '\t', '{', '%', '$', 0x7F, 0xFEFF)},
    });
}

rc::Gen<Value> ValidValue()
{
    return rc::gen::map(rc::gen::container<std::vector<std::uint32_t>>(CodePoint()),
                        [](const std::vector<std::uint32_t>& points)
                        {
                            Value value{{}, points.size()};
                            for (const std::uint32_t point : points)
                            {
                                value.Bytes += Encode(point);
                            }
                            return value;
                        });
}

/// Bytes that cannot be UTF-8: one of them is in no sequence.
rc::Gen<Value> BrokenValue()
{
    return rc::gen::map(rc::gen::pair(ValidValue(), rc::gen::element('\x80', '\xC0', '\xED', '\xF5', '\xFF')),
                        [](const std::pair<Value, char>& parts) {
                            return Value{parts.first.Bytes + parts.second + "x", std::nullopt};
                        });
}

rc::Gen<Value> AnyValue() { return rc::gen::weightedOneOf<Value>({{9, ValidValue()}, {1, BrokenValue()}}); }

class ProgramChangeProperty : public ::testing::Test
{
  public:
    std::string PendingOwner() const
    {
        httplib::Client client(m_Bmc.Url());
        client.set_basic_auth("admin", "password");
        const auto answer = client.Get(SettingsPath);
        RC_ASSERT(answer && answer->status == 200);
        const json::value settings = json::parse(answer->body);
        const json::value* owner = settings.at("Attributes").as_object().if_contains("Owner");
        return owner == nullptr ? "me" : std::string(owner->as_string());
    }

    /// @param way  the words of a change to this value.
    void Arrives(const Value& value, const std::vector<std::string>& words, const std::string& input)
    {
        const std::string before = PendingOwner();
        const Finished set = m_Tool(words, input);
        RC_LOG(set.Output + set.Errors);
        const bool taken = value.Points && *value.Points <= LongestOwner;
        RC_ASSERT(set.Status == (taken ? 0 : CodeInvalidValue));
        RC_ASSERT(PendingOwner() == (taken ? value.Bytes : before));
        RC_CLASSIFY(taken, "taken");
    }

  private:
    ChangeMachine m_Machine;
    InsideBmc m_Bmc{m_Machine.Path()};
    InsideRun m_Tool{m_Bmc.Url()};
};

} // namespace

TEST_F(ProgramChangeProperty, AnyTextFromStandardInputArrivesOrIsRefused)
{
    EXPECT_TRUE(rc::check("any text from standard input arrives unchanged or is refused",
                          [this]
                          {
                              Value value = *AnyValue();
                              if (*rc::gen::inRange(0, 8) == 0 && value.Points)
                              {
                                  value.Bytes += '\0';
                                  ++*value.Points;
                              }
                              RC_PRE(!value.Bytes.empty());
                              Arrives(value, {"set", "Owner=-"}, value.Bytes + "\n");
                          }));
}

TEST_F(ProgramChangeProperty, AnyTextOfACommandLineArrivesOrIsRefused)
{
    EXPECT_TRUE(rc::check("any text on a command line arrives unchanged or is refused",
                          [this]
                          {
                              const Value value = *AnyValue();
                              RC_PRE(value.Bytes != "-");
                              Arrives(value, {"set", "Owner=" + value.Bytes}, {});
                          }));
}

TEST_F(ProgramChangeProperty, AnyTextOfABatchArrivesOrIsRefused)
{
    EXPECT_TRUE(rc::check("any text beside another change arrives unchanged or is refused",
                          [this]
                          {
                              const Value value = *AnyValue();
                              RC_PRE(!value.Bytes.empty());
                              const std::string seconds = std::to_string(*rc::gen::inRange(0, 256));
                              Arrives(value, {"set", "Timeout=" + seconds, "Owner=-"}, value.Bytes + "\n");
                          }));
}
