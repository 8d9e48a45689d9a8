#include "RedfishConfigSettingManager.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "AttributeRegistry.h"
#include "Dependencies.h"
#include "Log.h"
#include "RedfishConfigSetting.h"
#include "SettingGroups.h"
#include "SettingModel.h"

using Tavrine::Config_Options;
using Tavrine::Log;
using Tavrine::OptionalVar;
using Tavrine::RedfishConfigSettingInfoStru;

namespace
{

constexpr int CodeUnknownSetting = 20;
constexpr int CodeUnreadable = 27;
/// Less than this part of a map is looked up rather than walked to.
constexpr std::size_t FewOf = 16;
/// What is left of a registry without attributes: a manager without settings reads its text anew.
constexpr const char* EmptyRegistry = R"({"RegistryEntries":{"Attributes":[]}})";

void LogNotes(const Tavrine::RegistryNotes& notes)
{
    for (const std::string& line : notes.Lines)
    {
        Log(4, __FILE__, __LINE__).Stream() << line;
    }
    if (notes.More != 0)
    {
        Log(4, __FILE__, __LINE__).Stream() << notes.More << " more notes on the attribute registry are not shown.";
    }
}

/// The properties that dependencies shape. The current value is not among them: it is what the
/// BMC reports.
void ApplyDependencies(const RedfishConfigSetting& setting, const Tavrine::DependencyEvaluation& evaluation,
                       RedfishConfigSettingInfoStru& info)
{
    const std::size_t index = setting.Index();
    for (const Tavrine::SettingProperty flag : Tavrine::FlagProperties)
    {
        Tavrine::SetFlag(info, flag, evaluation.Flag(index, flag));
    }
    // Without any there is no slot to look for.
    for (std::size_t row = 0; row < Tavrine::PropertyCount && setting.Model().HasDependencies(index); ++row)
    {
        const auto property = static_cast<Tavrine::SettingProperty>(row);
        const bool shaped = !Tavrine::IsFlag(property) && property != Tavrine::SettingProperty::CurrentValue &&
                            setting.Model().SlotOfAttribute(index, property) != Tavrine::NoIndex;
        if (shaped)
        {
            Tavrine::SetProperty(info, property, evaluation.Now(index, property));
        }
    }
}

/// What dependencies force on one setting, each with its condition.
Tavrine::SettingStringMap ForcedProperties(std::size_t index, const Tavrine::DependencyEvaluation& evaluation)
{
    Tavrine::SettingStringMap forced;
    for (std::size_t row = 0; row < Tavrine::PropertyCount; ++row)
    {
        const auto property = static_cast<Tavrine::SettingProperty>(row);
        const Tavrine::RegistryDependency* cause = evaluation.Cause(index, property);
        if (cause != nullptr && property != Tavrine::SettingProperty::CurrentValue)
        {
            forced[Tavrine::PropertyWord(property)] = Tavrine::ConditionText(*cause);
        }
    }
    return forced;
}

/// Lays values over others; both maps are in one order, so they are walked side by side.
/// @return the names of those that are other than before.
std::vector<std::string> MergeValues(const Tavrine::SettingValueMap& values, Tavrine::SettingValueMap& into)
{
    const auto less = into.key_comp();
    std::vector<std::string> moved;
    const bool few = values.size() < into.size() / FewOf;
    auto place = into.begin();
    for (const auto& [name, value] : values)
    {
        place = few ? into.lower_bound(name) : place;
        bool there = false;
        for (; place != into.end(); ++place)
        {
            there = place->first == name;
            if (there || !less(place->first, name))
            {
                break;
            }
        }
        if (place == into.end() || (!there && less(name, place->first)))
        {
            into.emplace_hint(place, name, value);
            moved.push_back(name);
        }
        else
        {
            if (place->second != value)
            {
                place->second = value;
                moved.push_back(name);
            }
            ++place; // the next name is at this one, in most cases
        }
    }
    return moved;
}

/// The numbers of `all` that `values` does not name, in order and by their names alone: of anything else
/// nobody asks whether the caller has it. `all` has all of `values`.
std::vector<RedfishConfigSettingInfoStru> LeftOut(const Tavrine::SettingValueMap& values,
                                                  const Tavrine::SettingValueMap& all)
{
    std::vector<RedfishConfigSettingInfoStru> leftOut;
    if (values.size() == all.size())
    {
        return leftOut;
    }
    for (const auto& [name, value] : all)
    {
        if (value && std::holds_alternative<std::int64_t>(*value) && !values.contains(name))
        {
            leftOut.emplace_back().AttributeKey = name;
        }
    }
    return leftOut;
}

} // namespace

RedfishConfigSettingManager::~RedfishConfigSettingManager() = default;

RedfishConfigResult RedfishConfigSettingManager::ReadModel()
{
    if (!m_Settings.empty())
    {
        return {0, "", ""};
    }
    Tavrine::AttributeRegistry registry;
    Tavrine::RegistryNotes notes;
    std::string error;
    if (!Tavrine::ReadAttributeRegistry(m_Schema, registry, notes, error))
    {
        return {CodeUnreadable, "The attribute registry cannot be read: " + error, ""};
    }
    LogNotes(notes);
    TakeModel(std::make_shared<const Tavrine::SettingModel>(std::move(registry)));
    // It may be megabytes, and the model has all of it; a model that could not be made is made from it another time.
    std::string(EmptyRegistry).swap(m_Schema);
    return {0, "", ""};
}

void RedfishConfigSettingManager::TakeModel(const std::shared_ptr<const Tavrine::SettingModel>& model)
{
    // A handful of words, nearly all of other lengths: for thousands of attributes less than searches in the map.
    std::vector<std::string_view> types;
    for (const auto& creator : m_SettingTypeCreators)
    {
        types.emplace_back(creator.first);
    }
    for (const Tavrine::RegistryAttribute& attribute : model->Registry().Attributes)
    {
        if (!attribute.Type || std::find(types.begin(), types.end(), *attribute.Type) == types.end())
        {
            Log(4, __FILE__, __LINE__).Stream() << "Setting " << attribute.Name() << " has no known type.";
        }
    }
    if (!model->Registry().Attributes.empty())
    {
        KeepSetting(std::make_shared<Tavrine::EvaluatedModel>(model, m_Values), 0);
    }
}

const RedfishConfigSetting*
RedfishConfigSettingManager::KeepSetting(const std::shared_ptr<Tavrine::EvaluatedModel>& model, std::size_t index)
{
    // Settings are asked about in the order of their names, mostly.
    const auto kept =
        m_Settings.emplace_hint(m_Settings.end(), model->Model()->Attribute(index).Name(), MakeSetting(model, index));
    model->Keep(index, *kept->second);
    return kept->second.get();
}

std::shared_ptr<RedfishConfigSetting>
RedfishConfigSettingManager::MakeSetting(const std::shared_ptr<Tavrine::EvaluatedModel>& model, std::size_t index)
{
    const Tavrine::RegistryAttribute& attribute = model->Model()->Attribute(index);
    RedfishConfigSettingInfoStru info;
    info.AttributeKey = attribute.Name();
    info.SettingType = attribute.Type;
    const auto creator = m_SettingTypeCreators.find(info.SettingType.value_or(""));
    std::shared_ptr<RedfishConfigSetting> setting(creator != m_SettingTypeCreators.end()
                                                      ? (this->*creator->second)(info, m_Options)
                                                      : new RedfishConfigSetting(SettingKind::Unknown, m_Options));
    setting->Attach(model, index);
    return setting;
}

const std::shared_ptr<Tavrine::EvaluatedModel>& RedfishConfigSettingManager::Evaluated() const
{
    static const std::shared_ptr<Tavrine::EvaluatedModel> none;
    return m_Settings.empty() ? none : m_Settings.begin()->second->Evaluated();
}

const Tavrine::SettingModel& RedfishConfigSettingManager::Model() const { return *Evaluated()->Model(); }

const Tavrine::DependencyEvaluation& RedfishConfigSettingManager::Now() const { return Evaluated()->Now(); }

const RedfishConfigSetting* RedfishConfigSettingManager::SettingNamed(const std::string& name)
{
    const std::shared_ptr<Tavrine::EvaluatedModel>& model = Evaluated();
    if (model == nullptr)
    {
        return nullptr;
    }
    const auto& index = model->Model()->Registry().AttributeIndex;
    const auto found = index.find(name);
    if (found == index.end())
    {
        return nullptr;
    }
    const RedfishConfigSetting* const kept = model->Kept(found->second);
    return kept != nullptr ? kept : KeepSetting(model, found->second);
}

void RedfishConfigSettingManager::UpdateSettingValue(const Tavrine::SettingValueMap& values)
try
{
    // Before the first operation there is no model yet; it starts with these values.
    std::vector<std::string> moved;
    if (m_Values.empty() && m_Settings.empty())
    {
        m_Values = values; // no name is searched for
    }
    else
    {
        moved = MergeValues(values, m_Values);
    }
    if (m_Options.HexValueMode)
    {
        m_NotTold = LeftOut(values, m_Values);
    }
    if (!moved.empty())
    {
        m_ForcedProperties.clear();
        if (Evaluated() != nullptr)
        {
            Evaluated()->ValuesMoved(std::move(moved));
        }
    }
}
// GCOV_EXCL_START
// Memory alone can do this, with some of the values taken over.
catch (...)
{
    m_ForcedProperties.clear();
    if (Evaluated() != nullptr)
    {
        Evaluated()->AllMoved();
    }
    throw;
}
// GCOV_EXCL_STOP

RedfishConfigResult RedfishConfigSettingManager::FindSetting(const std::string& name,
                                                             const RedfishConfigSetting*& setting)
{
    const RedfishConfigResult result = ReadModel();
    if (result != 0)
    {
        return result;
    }
    const RedfishConfigSetting* const found = SettingNamed(name);
    if (found == nullptr)
    {
        return UnknownSetting(name);
    }
    setting = found;
    return result;
}

RedfishConfigResult RedfishConfigSettingManager::GetSettingProperties(const std::string name,
                                                                      RedfishConfigSettingInfoStru& info)
{
    const RedfishConfigSetting* known = nullptr;
    const RedfishConfigResult result = FindSetting(name, known);
    if (result != 0)
    {
        return result;
    }
    const RedfishConfigSetting& setting = *known;
    info = InfoOf(setting.Attribute());
    TypeAndValue(setting, info);
    ApplyDependencies(setting, Now(), info);
    info.DependencyNames = setting.Model().RelatedSettings(setting.Index());
    if (Now().MayForce(setting.Index()))
    {
        info.ForcedBy = ForcedOn(setting);
    }
    return result;
}

RedfishConfigResult RedfishConfigSettingManager::GetSettingOutline(const std::string& name,
                                                                   RedfishConfigSettingInfoStru& info)
{
    const RedfishConfigSetting* known = nullptr;
    const RedfishConfigResult result = FindSetting(name, known);
    if (result != 0)
    {
        return result;
    }
    const Tavrine::RegistryAttribute& attribute = known->Attribute();
    info = {};
    info.AttributeKey = attribute.Name();
    info.SettingType = attribute.Type;
    info.IsProtected = attribute.IsProtected;
    constexpr auto value = Tavrine::SettingProperty::CurrentValue;
    SetProperty(info, value, PropertyOfRegistry(attribute, value));
    TypeAndValue(*known, info);
    return result;
}

void RedfishConfigSettingManager::TypeAndValue(const RedfishConfigSetting& setting,
                                               RedfishConfigSettingInfoStru& info) const
{
    if (setting.Kind() == SettingKind::Unknown)
    {
        info.SettingType.reset();
    }
    if (const OptionalVar* const value = setting.Evaluated()->ValueOf(setting.Attribute().Name()))
    {
        info.CurrentValue = *value;
    }
}

const Tavrine::SettingStringMap& RedfishConfigSettingManager::ForcedOn(const RedfishConfigSetting& setting)
{
    const std::string& name = setting.Attribute().Name();
    const auto known = m_ForcedProperties.find(name);
    return known != m_ForcedProperties.end()
               ? known->second
               : m_ForcedProperties.emplace(name, ForcedProperties(setting.Index(), Now())).first->second;
}

void RedfishConfigSettingManager::TakeRegistryOf(RedfishConfigSettingManager& other)
{
    if (&other == this)
    {
        return;
    }
    other.ReadModel(); // what fails there fails here as well
    m_Settings.clear();
    m_Groups.clear();
    m_ForcedProperties.clear();
    if (other.Evaluated() != nullptr)
    {
        TakeModel(other.Evaluated()->Model());
    }
    m_Schema = other.m_Schema;
}

RedfishConfigResult RedfishConfigSettingManager::UnknownSetting(const std::string& name) const
{
    std::string message = "Unable to find the setting " + name;
    const std::optional<std::string> other = m_Settings.empty() ? std::nullopt : Model().NameDifferingInCase(name);
    if (other)
    {
        message += ". Did you mean " + *other + "?";
    }
    return {CodeUnknownSetting, message, name};
}

void RedfishConfigSettingManager::GetGroupList(Tavrine::SettingGroupMap& groups)
{
    groups.clear();
    m_ErrorList.clear();
    const RedfishConfigResult result = ReadModel();
    if (result != 0)
    {
        m_ErrorList.push_back(result);
        return;
    }
    if (m_Groups.empty() && !m_Settings.empty())
    {
        m_Groups = Tavrine::GroupSettings(Model().Registry());
    }
    groups = m_Groups;
}

std::vector<RedfishConfigResult> RedfishConfigSettingManager::GetError() const { return m_ErrorList; }

RedfishConfigSetting* RedfishConfigSettingManager::createNumericSetting(RedfishConfigSettingInfoStru&,
                                                                        const Config_Options& options)
{
    return new RedfishConfigSetting(SettingKind::Numeric, options);
}

RedfishConfigSetting* RedfishConfigSettingManager::createTextSetting(RedfishConfigSettingInfoStru&,
                                                                     const Config_Options& options)
{
    return new RedfishConfigSetting(SettingKind::Text, options);
}

RedfishConfigSetting* RedfishConfigSettingManager::createEnumerateSetting(RedfishConfigSettingInfoStru&,
                                                                          const Config_Options& options)
{
    return new RedfishConfigSetting(SettingKind::Enumerate, options);
}

RedfishConfigSetting* RedfishConfigSettingManager::createBooleanSetting(RedfishConfigSettingInfoStru&,
                                                                        const Config_Options& options)
{
    return new RedfishConfigSetting(SettingKind::Boolean, options);
}

RedfishConfigSetting* RedfishConfigSettingManager::createPasswordSetting(RedfishConfigSettingInfoStru&,
                                                                         const Config_Options& options)
{
    return new RedfishConfigSetting(SettingKind::Password, options);
}
