// The whole program against the simulated BMC, beside curl sending the same requests.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

#include "Children.h"
#include "Floor.h"
#include "GeneratedMachine.h"
#include "Report.h"
#include "Work.h"

using namespace bench;

namespace
{

struct Plan
{
    std::string Tool;
    std::string Simulator;
    std::string Folder;
    int Repetitions = 5;
    std::vector<unsigned int> Attributes = {200, 1000, 5000};
    std::vector<unsigned int> Latencies = {0, 50, 200};
    std::vector<bool> Schemes = {false, true};
};

constexpr unsigned int MostAttributes = 5000;

struct Machine
{
    unsigned int Attributes;
    bool Tls;
    unsigned int LatencyMs;
    /// A folder with its files; empty for a machine that the simulator makes up.
    std::string Files = {};
};

/// A machine whose help texts are as long as it takes for a registry of 3 MB.
std::string WriteWordyMachine(const std::string& folder)
{
    constexpr std::size_t wantedBytes = 3'000'000;
    std::filesystem::create_directories(folder);
    for (auto& [name, content] : bmcsim::GenerateFiles(MostAttributes))
    {
        std::string text = boost::json::serialize(content);
        if (name.starts_with("registry."))
        {
            const std::size_t words = (wantedBytes - std::min(text.size(), wantedBytes)) / MostAttributes + 1;
            for (boost::json::value& attribute : content["RegistryEntries"].at("Attributes").as_array())
            {
                attribute.at("HelpText").as_string().append(std::string(words, '.'));
            }
            text = boost::json::serialize(content);
        }
        std::ofstream(folder + "/" + name, std::ios::binary) << text;
    }
    return folder;
}

void Show(const std::string& text)
{
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
}

class MachineRun
{
  public:
    MachineRun(const Plan& plan, const Machine& machine)
        : m_Plan(plan), m_Machine(machine), m_Folder(Fresh(plan.Folder + "/machine")),
          m_Simulator(plan.Simulator, Arguments(machine), m_Folder + "/access")
    {
    }

    void Measure(std::vector<Row>& rows)
    {
        const std::string saved[2] = {m_Folder + "/saved.json", m_Folder + "/other.json"};
        RunTool({"save", saved[0]});
        WriteOtherValues(saved[0], saved[1]);
        for (const Work& work : AllWork(saved, m_Folder))
        {
            rows.push_back(MeasureWork(work));
            Show(LineOf(rows.back()));
        }
    }

  private:
    static std::string Fresh(const std::string& folder)
    {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        return folder;
    }

    static Words Arguments(const Machine& machine)
    {
        Words arguments = {"--latency-ms", std::to_string(machine.LatencyMs)};
        if (machine.Files.empty())
        {
            arguments.insert(arguments.end(), {"--attributes", std::to_string(machine.Attributes)});
        }
        else
        {
            arguments.insert(arguments.end(), {"--machine", machine.Files});
        }
        if (!machine.Tls)
        {
            arguments.emplace_back("--http");
        }
        return arguments;
    }

    Cost RunTool(const Words& arguments)
    {
        Words command = {m_Plan.Tool, "--bmc", m_Simulator.Url(), "--user", "admin"};
        if (m_Machine.Tls)
        {
            command.insert(command.end(), {"--pin", m_Simulator.Pin()});
        }
        command.insert(command.end(), arguments.begin(), arguments.end());
        const Cost cost =
            RunMeasured(command, {{"TAVRINE_PASSWORD", "password"}, {"XDG_CACHE_HOME", m_Folder + "/cache"}});
        m_Requests = m_Simulator.TakeRequests();
        return cost;
    }

    Row MeasureWork(const Work& work)
    {
        RunTool(work.Arguments[1]); // what a second run finds prepared
        std::vector<Cost> tool;
        std::vector<Cost> floor;
        Row row{work.Name, m_Machine.Attributes, m_Machine.Tls, m_Machine.LatencyMs, !m_Machine.Files.empty(), {}, {}};
        for (int repetition = 0; repetition < m_Plan.Repetitions; ++repetition)
        {
            const int way = repetition % 2;
            tool.push_back(RunTool(work.Arguments[way]));
            floor.push_back(RunMeasured(FloorCommand(m_Simulator, m_Requests, work.Bodies[way], m_Folder)));
            if (const std::string fault = FloorFault(m_Requests, m_Simulator.TakeRequests()); !fault.empty())
            {
                throw std::runtime_error("the floor of \"" + work.Name + "\" is none: " + fault);
            }
        }
        row.Tool = MedianOf(std::move(tool));
        row.Floor = MedianOf(std::move(floor));
        CountTraffic(row);
        return row;
    }

    void CountTraffic(Row& row) const
    {
        std::set<int> connections;
        for (const Request& request : m_Requests)
        {
            connections.insert(request.Connection);
            row.Bytes += request.Bytes;
            row.RegistryBytes += request.Path.ends_with(".json") ? request.Bytes : 0;
        }
        row.Requests = m_Requests.size();
        row.Connections = connections.size();
    }

    const Plan& m_Plan;
    Machine m_Machine;
    std::string m_Folder;
    Simulator m_Simulator;
    std::vector<Request> m_Requests;
};

Cost MeasureVersion(const Plan& plan)
{
    std::vector<Cost> costs;
    for (int repetition = 0; repetition < 4 * plan.Repetitions + 1; ++repetition)
    {
        costs.push_back(RunMeasured({plan.Tool, "--version"}));
    }
    return MedianOf(std::move(costs));
}

void Measure(const Plan& plan, const std::string& output)
{
    const Cost version = MeasureVersion(plan);
    std::vector<Row> rows;
    Show(HeadOfTable());
    for (const bool tls : plan.Schemes)
    {
        for (const unsigned int attributes : plan.Attributes)
        {
            for (const unsigned int latency : plan.Latencies)
            {
                MachineRun(plan, {attributes, tls, latency}).Measure(rows);
            }
        }
    }
    const auto has = [](const auto& list, auto value)
    { return std::find(list.begin(), list.end(), value) != list.end(); };
    if (has(plan.Attributes, MostAttributes) && has(plan.Latencies, 0U) && has(plan.Schemes, true))
    {
        MachineRun(plan, {MostAttributes, true, 0, WriteWordyMachine(plan.Folder + "/wordy")}).Measure(rows);
    }
    Show("\n" + Targets(rows, version));
    std::ofstream(output, std::ios::binary) << JsonOf(rows, version);
}

} // namespace

int main(int argc, char** argv)
try
{
    Plan plan;
    std::string output;
    std::vector<std::string> schemes;
    bool quick = false;
    CLI::App app("Measures tavrine against the simulated BMC, beside curl sending the same requests.");
    app.add_option("TAVRINE", plan.Tool, "The tool")->required();
    app.add_option("SIMULATOR", plan.Simulator, "The simulated BMC")->required();
    app.add_option("FOLDER", plan.Folder, "Folder for what is needed on the way")->required();
    app.add_option("OUTPUT", output, "File that gets the figures as JSON")->required();
    app.add_flag("--quick", quick, "200 and 5,000 settings, 0 and 50 ms, https");
    app.add_option("--settings", plan.Attributes, "Machines of so many settings only");
    app.add_option("--latency", plan.Latencies, "Pauses of so many milliseconds only");
    app.add_option("--scheme", schemes, "http or https only")->check(CLI::IsMember({"http", "https"}));
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& fault)
    {
        return app.exit(fault) == 0 ? 0 : 64;
    }
    if (quick)
    {
        // What is asked for by name holds over it.
        plan.Attributes = app.count("--settings") == 0 ? std::vector<unsigned int>{200, 5000} : plan.Attributes;
        plan.Latencies = app.count("--latency") == 0 ? std::vector<unsigned int>{0, 50} : plan.Latencies;
        plan.Schemes = {true};
    }
    if (!schemes.empty())
    {
        plan.Schemes.clear();
        std::transform(schemes.begin(), schemes.end(), std::back_inserter(plan.Schemes),
                       [](const std::string& scheme) { return scheme == "https"; });
    }
    Measure(plan, output);
    return 0;
}
catch (const std::exception& failure)
{
    std::fprintf(stderr, "bench_program: %s\n", failure.what());
    return 1;
}
