#include "Machine.h"

#include "BuiltInMachine.h"
#include "GeneratedMachine.h"
#include "JsonFile.h"
#include "RegistryResources.h"
#include "SmallLetters.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <sstream>
#include <system_error>
#include <vector>

namespace bmcsim
{
namespace
{

namespace fs = std::filesystem;
namespace json = boost::json;
using Objects = std::map<std::string, json::object>;

constexpr std::string_view Root = "/redfish/v1";
constexpr std::size_t MaxTreeFiles = 20000;
constexpr int MaxTreeDepth = 32;

/// "en" of "registry.en.json"; empty for other files.
std::string_view LanguageOf(std::string_view name)
{
    constexpr std::string_view begin = "registry.";
    constexpr std::string_view end = ".json";
    const bool isRegistry = name.starts_with(begin) && name.ends_with(end) && name.size() > begin.size() + end.size();
    return isRegistry ? name.substr(begin.size(), name.size() - begin.size() - end.size()) : std::string_view();
}

bool IsMachineFile(std::string_view name)
{
    constexpr std::string_view names[] = {"bios.json", "settings.json", "registryfile.json", "protected.json"};
    return !LanguageOf(name).empty() || std::find(std::begin(names), std::end(names), name) != std::end(names);
}

std::vector<std::string> Segments(const std::string& path)
{
    std::vector<std::string> segments;
    std::istringstream stream(path);
    for (std::string segment; std::getline(stream, segment, '/');)
    {
        if (!segment.empty())
        {
            segments.push_back(segment);
        }
    }
    return segments;
}

/// "437XR1138R2" of "/redfish/v1/Systems/437XR1138R2/Bios"; empty for other paths.
std::string SystemIdOf(const std::string& path)
{
    const std::vector<std::string> segments = Segments(path);
    if (segments.size() != 5)
    {
        return {};
    }
    // The id itself keeps its letters' case.
    const std::string frame = NormalPath(segments[0] + '/' + segments[1] + '/' + segments[2] + "/*/" + segments[4]);
    return frame == "redfish/v1/systems/*/bios" ? segments[3] : std::string();
}

std::string SettingsPathOf(const json::object& bios)
{
    const json::object* annotation = FindObject(bios, "@Redfish.Settings");
    const json::object* link = annotation != nullptr ? FindObject(*annotation, "SettingsObject") : nullptr;
    return link != nullptr ? FindText(*link, "@odata.id") : std::string();
}

/// @return false when the Bios resource is of no use, with error filled.
bool TakeBios(Machine& machine, json::object bios, const std::string& name, std::string& error)
{
    if (bios.contains("Attributes") && FindObject(bios, "Attributes") == nullptr)
    {
        error = fmt::format("'{}': \"Attributes\" is no object", name);
        return false;
    }
    machine.BiosPath = FindText(bios, "@odata.id");
    const std::string id = SystemIdOf(machine.BiosPath);
    machine.SystemId = id.empty() ? machine.SystemId : id;
    machine.SettingsPath = SettingsPathOf(bios);
    machine.Bios = std::move(bios);
    return true;
}

bool TakeProtected(Machine& machine, const json::object& file, const std::string& name, std::string& error)
{
    const json::object* attributes = FindObject(file, "Attributes");
    if (attributes == nullptr)
    {
        error = fmt::format("'{}' has no object \"Attributes\"", name);
        return false;
    }
    machine.Protected = *attributes;
    return true;
}

std::optional<Machine> BuildMachine(Objects files, const std::string& place, std::string& error)
{
    Machine machine;
    const auto named = [&place](const char* file) { return place.empty() ? file : (fs::path(place) / file).string(); };
    if (!TakeBios(machine, std::move(files["bios.json"]), named("bios.json"), error))
    {
        return std::nullopt;
    }
    const auto guarded = files.find("protected.json");
    if (guarded != files.end() && !TakeProtected(machine, guarded->second, named("protected.json"), error))
    {
        return std::nullopt;
    }
    const auto settings = files.find("settings.json");
    if (settings != files.end())
    {
        machine.Settings = std::move(settings->second);
    }
    Registries registries;
    for (auto& [name, object] : files)
    {
        if (const std::string_view language = LanguageOf(name); !language.empty())
        {
            registries.emplace(language, std::move(object));
        }
    }
    const auto file = files.find("registryfile.json");
    AddRegistries(machine, std::move(registries), file == files.end() ? nullptr : &file->second);
    return machine;
}

std::optional<Machine> LoadBuiltIn(std::string& error)
{
    Objects files;
    for (const auto& [name, text] : BuiltInFiles())
    {
        auto object = ParseObject(text, fmt::format("built-in {}", name), error);
        if (!object)
        {
            return std::nullopt;
        }
        files.emplace(name, std::move(*object));
    }
    return BuildMachine(std::move(files), "", error);
}

std::optional<json::object> ReadObject(const fs::path& path, std::string& error)
{
    const auto text = ReadTextFile(path, error);
    return text ? ParseObject(*text, path.string(), error) : std::nullopt;
}

std::optional<Machine> LoadFlat(const fs::path& folder, std::string& error)
{
    Objects files;
    std::error_code code;
    for (fs::directory_iterator entry(folder, code), end; !code && entry != end; entry.increment(code))
    {
        const std::string name = entry->path().filename().string();
        if (IsMachineFile(name))
        {
            auto object = ReadObject(entry->path(), error);
            if (!object)
            {
                return std::nullopt;
            }
            files.emplace(name, std::move(*object));
        }
    }
    if (code)
    {
        error = fmt::format("cannot read machine folder '{}': {}", folder.string(), code.message());
        return std::nullopt;
    }
    return BuildMachine(std::move(files), folder.string(), error);
}

/// The path that a file of a tree is served at; empty for files that are not.
std::string TreePath(const fs::path& relative)
{
    const std::string folder = relative.parent_path().generic_string();
    std::string base = folder.empty() ? std::string(Root) : fmt::format("{}/{}", Root, folder);
    if (relative.filename() == "index.json")
    {
        return base;
    }
    // A registry stands as a file of its own beside its index.
    const bool isRegistry = relative.extension() == ".json" && folder.starts_with("Registries");
    return isRegistry ? fmt::format("{}/{}", base, relative.filename().string()) : std::string();
}

std::optional<Machine> LoadTree(const fs::path& folder, std::string& error)
{
    Machine machine;
    std::error_code code;
    std::size_t count = 0;
    for (fs::recursive_directory_iterator entry(folder, code), end; !code && entry != end; entry.increment(code))
    {
        const std::string path = TreePath(entry->path().lexically_relative(folder));
        if (!entry->is_regular_file(code) || path.empty())
        {
            continue;
        }
        if (++count > MaxTreeFiles || entry.depth() > MaxTreeDepth)
        {
            error = fmt::format("machine folder '{}' has too many files or is too deep", folder.string());
            return std::nullopt;
        }
        auto object = ReadObject(entry->path(), error);
        if (!object)
        {
            return std::nullopt;
        }
        // The first Bios resource found is the one whose values can change.
        if (!machine.Bios && !SystemIdOf(path).empty())
        {
            object->emplace("@odata.id", path);
            if (!TakeBios(machine, std::move(*object), entry->path().string(), error))
            {
                return std::nullopt;
            }
            continue;
        }
        machine.Resources.emplace(path, std::move(*object));
    }
    if (code)
    {
        error = fmt::format("cannot read machine folder '{}': {}", folder.string(), code.message());
        return std::nullopt;
    }
    // A settings object that stands in the tree is served as the machine's own.
    if (const json::object* settings = FindResource(machine, machine.SettingsPath))
    {
        machine.Settings = *settings;
        std::erase_if(machine.Resources, [settings](const auto& resource) { return &resource.second == settings; });
    }
    return machine;
}

std::optional<Machine> LoadFolder(const fs::path& folder, std::string& error)
{
    std::error_code code;
    if (!fs::is_directory(folder, code))
    {
        error = fmt::format("machine folder '{}' {}", folder.string(),
                            fs::exists(folder, code) ? "is no folder" : "does not exist");
        return std::nullopt;
    }
    if (fs::exists(folder / "bios.json", code))
    {
        return LoadFlat(folder, error);
    }
    if (fs::exists(folder / "index.json", code))
    {
        return LoadTree(folder, error);
    }
    error = fmt::format("machine folder '{}' has neither bios.json nor index.json", folder.string());
    return std::nullopt;
}

} // namespace

std::string Machine::Identity() const
{
    const std::string registry = Bios ? FindText(*Bios, "AttributeRegistry") : std::string();
    return fmt::format("{}/{}", SystemId, registry);
}

std::optional<Machine> LoadMachine(const std::string& folder, std::string& error)
{
    auto machine = folder.empty() ? LoadBuiltIn(error) : LoadFolder(folder, error);
    if (machine)
    {
        AddServiceResources(*machine);
    }
    return machine;
}

std::optional<Machine> GenerateMachine(unsigned int attributes, std::string& error)
{
    auto machine = BuildMachine(GenerateFiles(attributes), "", error);
    if (machine)
    {
        AddServiceResources(*machine);
    }
    return machine;
}

const json::object* FindResource(const Machine& machine, std::string_view path)
{
    const std::string normal = NormalPath(path);
    const auto found = std::find_if(machine.Resources.begin(), machine.Resources.end(),
                                    [&normal](const auto& resource) { return NormalPath(resource.first) == normal; });
    return found != machine.Resources.end() ? &found->second : nullptr;
}

std::string LastSegment(std::string_view path)
{
    const std::string normal = NormalPath(path);
    return normal.substr(normal.rfind('/') + 1);
}

std::string NormalPath(std::string_view path)
{
    std::string normal;
    normal.reserve(path.size());
    for (const char c : path)
    {
        if (c != '/' || normal.empty() || normal.back() != '/')
        {
            normal += SmallLetter(c);
        }
    }
    if (normal.size() > 1 && normal.back() == '/')
    {
        normal.pop_back();
    }
    return normal;
}

} // namespace bmcsim
