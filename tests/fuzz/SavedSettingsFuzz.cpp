// Saved settings: what is taken is what another reader sees, and written in either form it
// reads the same.
#include "SavedSettings.h"

#include <algorithm>
#include <set>

#include "Oracle.h"
#include "PlainJson.h"
#include "SavedSettingsWriter.h"

using namespace fuzztest;
using namespace Tavrine::Tool;

namespace
{

using Kind = PlainJson::Kind;

bool IsText(const PlainJson& value)
{
    return value.Is == Kind::String || value.Is == Kind::Boolean || value.Is == Kind::Integer ||
           (value.Is == Kind::Number && value.Text.find_first_of(".eE") == std::string::npos);
}

/// The settings of a document by another reader; nothing where one of its rules says that
/// it has none.
std::optional<Tavrine::SettingStringMap> Expected(const PlainJson& document)
{
    Tavrine::SettingStringMap settings;
    const PlainJson* const member = document.Find("settings");
    if (member == nullptr || member->Is != Kind::Object)
    {
        return std::nullopt;
    }
    std::set<std::string> names;
    for (const auto& [name, value] : member->Members)
    {
        if (!names.insert(name).second || (!IsText(value) && value.Is != Kind::Null))
        {
            return std::nullopt;
        }
        if (value.Is != Kind::Null)
        {
            settings[name] = value.Is == Kind::Boolean ? (value.Flag ? "true" : "false") : value.Text;
        }
    }
    return settings;
}

bool Same(const SavedSettings& left, const SavedSettings& right)
{
    const auto header = [](const SavedSettings& saved)
    {
        const SavedHeader& from = saved.Header;
        return std::vector<std::string>{from.Time,         from.Bmc,         from.Manufacturer, from.Model,
                                        from.SerialNumber, from.BiosVersion, from.Registry,     from.Prefix};
    };
    return left.Settings == right.Settings && header(left) == header(right);
}

void CheckWritten(const SavedSettings& saved, const std::string& text)
{
    SavedSettings again;
    const std::string error = ParseSavedSettings(text, again);
    FUZZ_REQUIRE(error.empty(), error + "\n" + text);
    FUZZ_REQUIRE(Same(saved, again), text);
}

bool HasEmptyName(const SavedSettings& saved) { return saved.Settings.contains(""); }

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = Text(data, size);
    SavedSettings saved;
    const std::string error = ParseSavedSettings(text, saved);
    if (!error.empty())
    {
        return 0;
    }
    for (const auto& [name, value] : saved.Settings)
    {
        FUZZ_REQUIRE(IsUtf8(name) && IsUtf8(value), name);
    }
    bool doubtful = false;
    const std::optional<PlainJson> plain = ReadPlainJson(text, doubtful);
    const bool document = plain && plain->Is == Kind::Object;
    if (document && !doubtful && text.find("-0") == std::string_view::npos)
    {
        FUZZ_REQUIRE(Expected(*plain) == saved.Settings, text);
    }
    CheckWritten(saved, SavedDocument(saved));
    // Lines have no room for no settings, nor for a name of no letters.
    if (!saved.Settings.empty() && !HasEmptyName(saved))
    {
        CheckWritten(saved, SavedLines(saved));
    }
    return 0;
}
