// Many names cost little more than one, and are told of as each is by itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include "ConfigFile.h"
#include "InsideRun.h"
#include "SharedData.h"
#include "TestMachine.h"

using namespace tooltest;

namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

constexpr unsigned int MadeUpAttributes = 60;
constexpr const char* MadeUp = "generated";
constexpr const char* Small = "small";

/// What of a machine is asked about: some settings of every kind of answer, and words that are none.
Words NamesOf(const json::value& registry)
{
    Words names;
    std::map<std::string, int> kinds;
    for (const json::value& entry : registry.at("RegistryEntries").at("Attributes").as_array())
    {
        const json::object& attribute = entry.as_object();
        const json::value* type = attribute.if_contains("Type");
        const std::string kind = (type != nullptr && type->is_string() ? std::string(type->as_string()) : "") +
                                 (attribute.contains("DefaultValue") ? " default" : "") +
                                 (attribute.contains("Oem") ? " oem" : "");
        if (++kinds[kind] == 1)
        {
            names.emplace_back(attribute.at("AttributeName").as_string());
        }
    }
    const std::string known = names.front();
    std::string shifted = known;
    std::transform(shifted.begin(), shifted.end(), shifted.begin(), [](unsigned char c) { return std::toupper(c); });
    names.insert(names.end(),
                 {"Nowhere", "bIoS." + known, "uEfI." + names.back(), shifted, "e", "UEFI.setting", known});
    return names;
}

/// A machine in some state, and the tool at it.
class Bench
{
  public:
    explicit Bench(const std::string& machine)
    {
        if (machine == MadeUp)
        {
            m_Bmc = std::make_unique<InsideBmc>(MadeUpAttributes);
        }
        else
        {
            m_Bmc = std::make_unique<InsideBmc>(machine == Small ? m_Small.Path() : machine);
        }
    }

    json::value Ask(const Words& options, const Words& command, Finished& finished) const
    {
        Words words = options;
        words.insert(words.end(), command.begin(), command.end());
        words.emplace_back("--json");
        finished = InsideRun(m_Bmc->Url())(words);
        return json::parse(finished.Output);
    }

    Finished Run(const Words& words) const { return InsideRun(m_Bmc->Url())(words); }

    Words Names() const
    {
        Finished finished;
        return NamesOf(Ask({"--system-type", "bios"}, {"schema"}, finished).at("schema"));
    }

    std::size_t Requests() const { return m_Bmc->Simulator().AccessLog().size(); }

  private:
    TestMachine m_Small;
    std::unique_ptr<InsideBmc> m_Bmc;
};

/// The host is named with the first failure of a run alone.
constexpr const char* HostCause = "this came of what ";

/// Without the cause that is HostCause.
std::set<std::string> LinesOf(const std::string& text)
{
    std::set<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        if (line.find(HostCause) == std::string::npos)
        {
            lines.insert(line);
        }
    }
    return lines;
}

/// Without the cause that is HostCause.
json::array Unnamed(json::array errors)
{
    for (json::value& error : errors)
    {
        const json::value* const cause = error.as_object().if_contains("cause");
        if (cause != nullptr && cause->as_string().starts_with(HostCause))
        {
            error.as_object().erase("cause");
        }
    }
    return errors;
}

/// The answers of single questions, put together as those of one about all.
struct Together
{
    json::object Data;
    json::array Errors;
    int Status = 0;
    std::set<std::string> Lines;
    std::string Message;

    void Add(const json::value& document, const char* member, const Finished& finished)
    {
        for (const auto& entry : document.at(member).as_object())
        {
            Data[entry.key()] = entry.value();
        }
        const json::array errors = Unnamed(document.at("errors").as_array());
        if (Errors.empty())
        {
            Message = document.at("message").as_string();
        }
        Errors.insert(Errors.end(), errors.begin(), errors.end());
        Status = Status != 0 ? Status : finished.Status;
        Lines.merge(LinesOf(finished.Errors));
    }
};

/// Each name once, its first place counting; the prefix of the system is no part of it.
Words Distinct(const Words& names, const std::string& prefix)
{
    Words distinct;
    std::set<std::string> seen;
    for (const std::string& name : names)
    {
        std::string start = name.substr(0, prefix.size() + 1);
        std::transform(start.begin(), start.end(), start.begin(), [](unsigned char c) { return std::toupper(c); });
        if (seen.insert(start == prefix + "." ? name.substr(start.size()) : name).second)
        {
            distinct.push_back(name);
        }
    }
    return distinct;
}

void ExpectSame(const Bench& bench, const Words& options, const std::string& command, const Words& names)
{
    const char* const member = command == "pending" ? "settings" : command.c_str();
    const bool isUefi = std::find(options.begin(), options.end(), "uefi") != options.end();
    Together expected;
    for (const std::string& name : Distinct(names, isUefi ? "UEFI" : "BIOS"))
    {
        Finished finished;
        const json::value document = bench.Ask(options, {command, name}, finished);
        expected.Add(document, member, finished);
    }
    Words all = {command};
    all.insert(all.end(), names.begin(), names.end());
    Finished finished;
    const json::value document = bench.Ask(options, all, finished);
    EXPECT_EQ(document.at(member).as_object(), expected.Data);
    EXPECT_EQ(Unnamed(document.at("errors").as_array()), expected.Errors);
    EXPECT_EQ(finished.Status, expected.Status);
    EXPECT_EQ(LinesOf(finished.Errors), expected.Lines);
    if (!expected.Errors.empty())
    {
        EXPECT_EQ(document.at("message").as_string(), expected.Message);
    }
}

/// Some settings of all names, hidden by what is in them.
std::string HidingConfig(const Words& names)
{
    return "HIDDEN_CONFIG_KEYWORDS_LIST = \"" + names.front() + ", " + names.at(names.size() / 2) + "\"\n";
}

std::vector<std::string> Machines()
{
    std::vector<std::string> machines = {MACHINE_FOLDER, MadeUp, Small};
    for (const std::filesystem::path& machine : testdata::Machines())
    {
        machines.push_back(machine.string());
    }
    return machines;
}

class ManyNames : public testing::TestWithParam<std::string>
{
  protected:
    const Bench m_Bench{GetParam()};
    const Words m_Names = m_Bench.Names();

    void ExpectSameInEveryWay(const std::string& command) const
    {
        for (const Words& options : {Words{"--system-type", "bios"}, Words{"--system-type", "uefi"},
                                     Words{"--system-type", "uefi", "--protected"}, Words{"--legacy-names", "--hex"}})
        {
            SCOPED_TRACE(command + " " + options.back());
            ExpectSame(m_Bench, options, command, m_Names);
        }
        const Configured hidden(HidingConfig(m_Names));
        SCOPED_TRACE(command + " with hidden settings");
        ExpectSame(m_Bench, {}, command, m_Names);
    }
};

std::string NameOf(const testing::TestParamInfo<std::string>& machine)
{
    std::string name = std::filesystem::path(machine.param).filename();
    std::erase_if(name, [](char character) { return std::isalnum(static_cast<unsigned char>(character)) == 0; });
    return name;
}

} // namespace

TEST_P(ManyNames, HaveTheValuesOfEach) { ExpectSameInEveryWay("values"); }

TEST_P(ManyNames, HaveTheDefaultsOfEach) { ExpectSameInEveryWay("defaults"); }

TEST_P(ManyNames, HaveThePendingValuesOfEach) { ExpectSameInEveryWay("pending"); }

INSTANTIATE_TEST_SUITE_P(Every, ManyNames, testing::ValuesIn(Machines()), NameOf);

TEST(ManyPendingNames, AreToldOfAsEachIsWhileChangesWait)
{
    const Bench bench(MACHINE_FOLDER);
    const Words uefi = {"--system-type", "uefi", "--protected"};
    const Words names = {"BootFailLimit", "TpmClear", "BootMode", "Nowhere", "uefi.FirmwareRollback", "bootmode"};
    ASSERT_EQ(bench.Run({"--system-type", "uefi", "--protected", "set", "TpmClear=true"}).Status, 0);
    ExpectSame(bench, uefi, "pending", names);
    ExpectSame(bench, {"--system-type", "uefi"}, "pending", names);
    ASSERT_EQ(bench.Run({"set", "BootFailLimit=7"}).Status, 0);
    ExpectSame(bench, uefi, "pending", names);
    ExpectSame(bench, {"--system-type", "uefi"}, "pending", names);
    ExpectSame(bench, {}, "pending", names);
}

TEST(ManyPendingNames, CostNoMoreRequestsThanFew)
{
    const Bench bench(MadeUp);
    Words all = {"pending"};
    for (const std::string& line : LinesOf(bench.Run({"show"}).Output))
    {
        all.push_back(line.substr(0, line.find('=')));
    }
    ASSERT_GT(all.size(), MadeUpAttributes / 2);
    const auto cost = [&](const Words& words)
    {
        const std::size_t before = bench.Requests();
        EXPECT_EQ(bench.Run(words).Status, 0);
        return bench.Requests() - before;
    };
    const std::size_t one = cost({"pending", all[1]});
    const std::size_t two = cost({"pending", all[1], all[2]});
    EXPECT_EQ(cost(all), two);
    EXPECT_LE(two, one + 1); // they are asked about together once before
}
