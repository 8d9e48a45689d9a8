// What the library computes, without any BMC: each operation over machines of 100 to
// 100,000 settings, with the order of growth that fits the measured times best.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>
#include <boost/json/serialize.hpp>

#include "AttributeRegistry.h"
#include "BMCBaseAssistant.h"
#include "BiosBasicSettingAssistant.h"
#include "BiosBasicSettingProc.h"
#include "BiosRedfishConfigProc.h"
#include "BiosRedfishProcCreator.h"
#include "Dependencies.h"
#include "GeneratedMachine.h"
#include "RedfishConfigSettingManager.h"
#include "SettingModel.h"

using namespace Tavrine;

namespace
{

namespace json = boost::json;

/// A setting whose changes nothing stands against.
constexpr const char* OneSetting = "Setting000000";

/// A made-up machine, and other values for all its settings.
struct Machine
{
    std::string Bios;
    std::string Registry;
    SettingValueMap Values;
    SettingStringMap OtherTexts;
};

/// A value that the setting takes and does not have.
OptionalVar OtherValue(const OptionalVar& value)
{
    if (const auto* number = std::get_if<std::int64_t>(&*value))
    {
        return (*number + 10) % 1000;
    }
    if (const auto* flag = std::get_if<bool>(&*value))
    {
        return !*flag;
    }
    return std::get<std::string>(*value) == "Enabled" ? "Auto" : "another text";
}

std::string TextOf(const OptionalVar& value)
{
    if (const auto* number = std::get_if<std::int64_t>(&*value))
    {
        return std::to_string(*number);
    }
    const auto* flag = std::get_if<bool>(&*value);
    return flag != nullptr ? (*flag ? "true" : "false") : std::get<std::string>(*value);
}

void Demand(bool good, const char* what)
{
    if (!good)
    {
        std::fprintf(stderr, "benchmark: %s failed\n", what);
        std::exit(1);
    }
}

void ReadValues(const std::string& bios, SettingValueMap& values)
{
    static BMCBaseAssistant reader(TavrineConnection::ConnectionInfo{.Host = "127.0.0.1", .User = "", .Password = ""},
                                   SystemTypeBios);
    Demand(reader.ParseSettingValuesFromResponse(bios, values) == 0, "the parse of a Bios resource");
}

const Machine& MachineOf(benchmark::State& state)
{
    state.SetComplexityN(state.range(0));
    static std::map<std::int64_t, Machine> machines;
    const auto [place, fresh] = machines.try_emplace(state.range(0));
    Machine& machine = place->second;
    if (fresh)
    {
        std::map<std::string, json::object> files = bmcsim::GenerateFiles(static_cast<unsigned int>(state.range(0)));
        machine.Bios = json::serialize(files["bios.json"]);
        machine.Registry = json::serialize(files["registry.en.json"]);
        ReadValues(machine.Bios, machine.Values);
        for (const auto& [name, value] : machine.Values)
        {
            machine.OtherTexts[name] = TextOf(OtherValue(value));
        }
    }
    return machine;
}

/// Builds the model, which the manager does at its first operation.
void Warm(RedfishConfigSettingManager& manager)
{
    RedfishConfigSettingInfoStru info;
    Demand(manager.GetSettingProperties(OneSetting, info) == 0, "a setting's properties");
}

/// Plays the Bios resource: gives the values that it has and takes every change.
class Store final : public BiosBasicSettingAssistant
{
  public:
    explicit Store(const SettingValueMap& values) : m_Values(values) {}

    RedfishConfigResult FlushChanges() override
    {
        TakeFlushErrors({});
        return {0, "", ""};
    }
    RedfishConfigResult QueryEffectiveValue(SettingValueMap& values) override
    {
        values = m_Values;
        return {0, "", ""};
    }
    RedfishConfigResult QueryPendingValue(SettingValueMap&) override { return {0, "", ""}; }
    RedfishConfigResult QueryValueURLResponse() override { return {0, "", ""}; }

  private:
    const SettingValueMap& m_Values;
};

/// A front object over a store, its registry read.
struct Front
{
    explicit Front(const Machine& machine)
        : Proc(TavrineConnection::ConnectionInfo{.Host = "127.0.0.1", .User = "", .Password = ""}, SystemTypeBios,
               Config_Options())
    {
        auto proc = std::make_shared<BiosBasicSettingProc>();
        proc->m_Prefix = Proc.m_Prefix;
        proc->m_Assistant = std::make_shared<Store>(machine.Values);
        Proc.m_ProcCreator->m_ProcMap["StandardSettings"] = proc;
        Proc.m_Schema = machine.Registry;
    }

    BiosRedfishConfigProc Proc;
};

void ParseBiosResource(benchmark::State& state)
{
    const Machine& machine = MachineOf(state);
    for (auto _ : state)
    {
        SettingValueMap values;
        ReadValues(machine.Bios, values);
        benchmark::DoNotOptimize(values);
    }
}

void BuildModel(benchmark::State& state)
{
    const Machine& machine = MachineOf(state);
    for (auto _ : state)
    {
        RedfishConfigSettingManager manager(machine.Registry, machine.Values, false, Config_Options());
        Warm(manager);
    }
}

void UpdateSettingValue(benchmark::State& state)
{
    const Machine& machine = MachineOf(state);
    RedfishConfigSettingManager manager(machine.Registry, machine.Values, false, Config_Options());
    Warm(manager);
    // Values that did not move would cost next to nothing.
    SettingValueMap others = machine.Values;
    others[OneSetting] = OtherValue(others[OneSetting]);
    bool other = false;
    const auto move = [&]
    {
        other = !other;
        manager.UpdateSettingValue(other ? others : machine.Values);
        Warm(manager); // dependencies wait for a question
    };
    move(); // the names are sorted once
    for (auto _ : state)
    {
        move();
    }
}

void PreparePatchContextOfOne(benchmark::State& state)
{
    const Machine& machine = MachineOf(state);
    RedfishConfigSettingManager manager(machine.Registry, machine.Values, false, Config_Options());
    Warm(manager);
    for (auto _ : state)
    {
        std::string context;
        Demand(manager.PreparePatchContext(OneSetting, "Auto", context, FilterChange) == 0, "the check of one value");
    }
}

void PreparePatchContextOfAll(benchmark::State& state)
{
    const Machine& machine = MachineOf(state);
    RedfishConfigSettingManager manager(machine.Registry, machine.Values, false, Config_Options());
    Warm(manager);
    for (auto _ : state)
    {
        SettingStringMap contexts;
        Demand(manager.PreparePatchContext(machine.OtherTexts, contexts, FilterChange) == 0 &&
                   contexts.size() == machine.OtherTexts.size(),
               "the check of all values");
    }
}

void EvaluateDependencies(benchmark::State& state)
{
    const Machine& machine = MachineOf(state);
    AttributeRegistry registry;
    RegistryNotes notes;
    std::string error;
    Demand(ReadAttributeRegistry(machine.Registry, registry, notes, error), "the registry");
    const SettingModel model(std::move(registry));
    for (auto _ : state)
    {
        const DependencyEvaluation evaluation(model, machine.Values);
        Demand(evaluation.Settled(), "the evaluation of dependencies");
    }
}

void FilterSettingValueNotChange(benchmark::State& state)
{
    const Machine& machine = MachineOf(state);
    Front front(machine);
    for (auto _ : state)
    {
        state.PauseTiming();
        SettingStringMap wanted = machine.OtherTexts;
        SettingStringMap unchanged;
        SettingStringMap notFound;
        state.ResumeTiming();
        Demand(front.Proc.FilterSettingValueNotChange(machine.Values, wanted, unchanged, notFound) == 0 &&
                   wanted.size() == machine.Values.size(),
               "the filter");
    }
}

void Restore(benchmark::State& state)
{
    const Machine& machine = MachineOf(state);
    for (auto _ : state)
    {
        state.PauseTiming();
        auto front = std::make_unique<Front>(machine);
        SettingStringMap wanted = machine.OtherTexts;
        SettingStringMap done;
        SettingStringMap failed;
        state.ResumeTiming();
        Demand(front->Proc.Restore(wanted, done, failed, true, false) == 0 && done.size() == machine.Values.size(),
               "the restore");
        state.PauseTiming();
        front.reset();
        state.ResumeTiming();
    }
}

void GenerateSchemaJsonStr(benchmark::State& state)
{
    const Machine& machine = MachineOf(state);
    Front front(machine);
    for (auto _ : state)
    {
        SettingStringMap output;
        Demand(front.Proc.GenerateSchemaJsonStr(output) == 0 && output.size() == 1, "the registry with values");
    }
}

void CompareSettingDefaultValues(benchmark::State& state)
{
    const Machine& machine = MachineOf(state);
    Front front(machine);
    SettingCompareMap first; // the model is built on the way, which is measured by itself
    Demand(front.Proc.CompareSettingDefaultValues(first, "") == 0, "the first comparison with defaults");
    for (auto _ : state)
    {
        SettingCompareMap compare;
        Demand(front.Proc.CompareSettingDefaultValues(compare, "") == 0 && compare.size() == machine.Values.size(),
               "the comparison with defaults");
    }
}

constexpr std::pair<const char*, void (*)(benchmark::State&)> Operations[] = {
    {"parse of a Bios resource", ParseBiosResource},
    {"build of the model", BuildModel},
    {"UpdateSettingValue and a question", UpdateSettingValue},
    {"PreparePatchContext of one", PreparePatchContextOfOne},
    {"PreparePatchContext of all", PreparePatchContextOfAll},
    {"dependency evaluation", EvaluateDependencies},
    {"FilterSettingValueNotChange", FilterSettingValueNotChange},
    {"Restore over doubles", Restore},
    {"GenerateSchemaJsonStr", GenerateSchemaJsonStr},
    {"CompareSettingDefaultValues of all", CompareSettingDefaultValues},
};

} // namespace

int main(int argc, char** argv)
{
    for (const auto& [name, operation] : Operations)
    {
        benchmark::RegisterBenchmark(name, operation)
            ->RangeMultiplier(10)
            ->Range(100, 100'000)
            ->Unit(benchmark::kMicrosecond)
            ->Complexity();
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
    {
        return 64;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
