#include "Report.h"

#include <algorithm>
#include <functional>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>

namespace bench
{
namespace
{

namespace json = boost::json;

constexpr std::size_t SessionRequests = 2;

double MedianBy(const std::vector<Cost>& costs, double Cost::*member)
{
    std::vector<double> values;
    for (const Cost& cost : costs)
    {
        values.push_back(cost.*member);
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double Ratio(double value, double floor) { return floor > 0 ? value / floor : 0; }

struct Target
{
    const char* Name;
    double Limit;
    std::function<bool(const Row&)> Concerns;
    std::function<double(const Row&)> Value;
};

bool IsShowAll(const Row& row) { return row.Work == "show all"; }
bool IsDescribe(const Row& row) { return row.Work == "describe one"; }
double RequestsBesideSession(const Row& row) { return static_cast<double>(row.Requests - SessionRequests); }

std::vector<Target> TargetTable()
{
    return {
        {"show all: requests beyond the session", 2, IsShowAll, RequestsBesideSession},
        {"describe one, registry kept: requests beyond the session", 8, IsDescribe, RequestsBesideSession},
        {"describe one, registry kept: bytes of the registry", 0, IsDescribe,
         [](const Row& row) { return static_cast<double>(row.RegistryBytes); }},
        {"connections of a run", 1, [](const Row&) { return true; },
         [](const Row& row) { return static_cast<double>(row.Connections); }},
        {"wall at 50 ms, times curl", 1.05, [](const Row& row) { return row.LatencyMs == 50; },
         [](const Row& row) { return Ratio(row.Tool.WallMs, row.Floor.WallMs); }},
        {"CPU at 5,000 settings, times curl", 3, [](const Row& row) { return row.Attributes == 5000; },
         [](const Row& row) { return Ratio(row.Tool.CpuMs, row.Floor.CpuMs); }},
        {"peak memory at 5,000 settings with a registry of 3 MB, MiB", 40, [](const Row& row) { return row.Wordy; },
         [](const Row& row) { return row.Tool.PeakMiB; }},
    };
}

std::string SizeOf(const Row& row) { return std::to_string(row.Attributes) + (row.Wordy ? " (3 MB)" : ""); }

std::string PlaceOf(const Row& row)
{
    return fmt::format("{}, {} settings, {}, {} ms", row.Work, SizeOf(row), row.Tls ? "https" : "http", row.LatencyMs);
}

std::string Judged(const Target& target, const std::vector<Row>& rows)
{
    std::size_t concerned = 0;
    std::size_t missed = 0;
    const Row* worst = nullptr;
    for (const Row& row : rows)
    {
        if (target.Concerns(row))
        {
            ++concerned;
            missed += target.Value(row) > target.Limit ? 1U : 0U;
            worst = worst == nullptr || target.Value(row) > target.Value(*worst) ? &row : worst;
        }
    }
    return worst == nullptr ? fmt::format("not measured  {} at most {}\n", target.Name, target.Limit)
                            : fmt::format("{:<13} {} at most {}: missed in {} of {}, worst {:.2f} ({})\n",
                                          missed == 0 ? "met" : "MISSED", target.Name, target.Limit, missed, concerned,
                                          target.Value(*worst), PlaceOf(*worst));
}

json::object ObjectOf(const Cost& cost)
{
    return {{"wallMs", cost.WallMs}, {"cpuMs", cost.CpuMs}, {"peakMiB", cost.PeakMiB}};
}

} // namespace

Cost MedianOf(std::vector<Cost> costs)
{
    return {MedianBy(costs, &Cost::WallMs), MedianBy(costs, &Cost::CpuMs), MedianBy(costs, &Cost::PeakMiB)};
}

std::string HeadOfTable()
{
    return "| Work | Settings | Scheme | Latency ms | Wall ms | x curl | CPU ms | x curl | Peak MiB | Requests "
           "| Connections | Bytes |\n|---|---:|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n";
}

std::string LineOf(const Row& row)
{
    return fmt::format("| {} | {} | {} | {} | {:.0f} | {:.2f} | {:.0f} | {:.2f} | {:.1f} | {} | {} | {} |\n", row.Work,
                       SizeOf(row), row.Tls ? "https" : "http", row.LatencyMs, row.Tool.WallMs,
                       Ratio(row.Tool.WallMs, row.Floor.WallMs), row.Tool.CpuMs, Ratio(row.Tool.CpuMs, row.Floor.CpuMs),
                       row.Tool.PeakMiB, row.Requests, row.Connections, row.Bytes);
}

std::string Targets(const std::vector<Row>& rows, const Cost& version)
{
    std::string text;
    for (const Target& target : TargetTable())
    {
        text += Judged(target, rows);
    }
    return text + fmt::format("{:<13} tavrine --version: CPU below 10 ms: {:.1f} ms\n",
                              version.CpuMs < 10 ? "met" : "MISSED", version.CpuMs);
}

std::string JsonOf(const std::vector<Row>& rows, const Cost& version)
{
    json::array array;
    for (const Row& row : rows)
    {
        array.push_back(json::object{{"work", row.Work},
                                     {"settings", row.Attributes},
                                     {"tls", row.Tls},
                                     {"latencyMs", row.LatencyMs},
                                     {"wordy", row.Wordy},
                                     {"tavrine", ObjectOf(row.Tool)},
                                     {"curl", ObjectOf(row.Floor)},
                                     {"requests", row.Requests},
                                     {"connections", row.Connections},
                                     {"bytes", row.Bytes},
                                     {"registryBytes", row.RegistryBytes}});
    }
    return json::serialize(json::object{{"version", ObjectOf(version)}, {"rows", std::move(array)}}) + "\n";
}

} // namespace bench
