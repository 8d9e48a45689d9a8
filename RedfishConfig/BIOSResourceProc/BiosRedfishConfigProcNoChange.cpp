// Whether a wanted value is in place already.
#include "BiosRedfishConfigProc.h"

#include "OrderedLookup.h"
#include "Results.h"
#include "Trace.h"
#include "ValueConversions.h"

namespace Tavrine
{

namespace
{

enum class Verdict
{
    Unchanged,
    Changed,
    /// A number that must be hexadecimal and is not.
    BadNumber,
};

/// Judges one wanted text against the current value.
/// @param workText     the text to use: decimal where the wanted one is hexadecimal.
/// @param currentText  the current value's text, where there is one.
Verdict Judge(const OptionalVar& current, bool hexMode, const std::string& wanted, std::string& workText,
              std::string& currentText)
{
    workText = wanted;
    if (hexMode && IsNumSetting(current))
    {
        if (!isHexString(wanted))
        {
            return Verdict::BadNumber;
        }
        workText = HexToDec(wanted);
    }
    const bool same = GetOptionalVarAsString(current, currentText) && currentText == workText;
    return same ? Verdict::Unchanged : Verdict::Changed;
}

} // namespace

bool BiosRedfishConfigProc::CheckSettingValueChange(const SettingValueMap& current, const std::string& name,
                                                    std::string& value)
{
    const auto entry = current.find(name);
    if (entry == current.end())
    {
        TAVRINE_LOG(LogFailure) << "Not find setting " << m_Prefix << "." << name << "in value list.";
        return true;
    }
    std::string workText;
    std::string currentText;
    switch (Judge(entry->second, m_Options.HexValueMode, value, workText, currentText))
    {
    case Verdict::BadNumber:
        TAVRINE_LOG(LogDetail) << "The setting new value " << value << " is invalid.";
        return true;
    case Verdict::Unchanged:
        TAVRINE_LOG(LogDetail) << "no need to change setting " << m_Prefix << "." << name;
        return false;
    case Verdict::Changed:
        break;
    }
    value = workText;
    return true;
}

RedfishConfigResult BiosRedfishConfigProc::FilterSettingValueNotChange(const SettingValueMap& current,
                                                                       SettingStringMap& newValues,
                                                                       SettingStringMap& unchanged,
                                                                       SettingStringMap& notFound)
{
    OrderedLookup lookup(current);
    for (auto wanted = newValues.begin(); wanted != newValues.end();)
    {
        const std::string fullName = m_Prefix + "." + wanted->first;
        const auto entry = lookup.Find(wanted->first);
        if (entry == current.end())
        {
            TAVRINE_LOG(LogFailure) << "Not find setting " << fullName << " in value list.";
            notFound[fullName] = "Unable to find the setting " + fullName;
            ++wanted;
            continue;
        }
        std::string workText;
        std::string currentText;
        switch (Judge(entry->second, m_Options.HexValueMode, wanted->second, workText, currentText))
        {
        case Verdict::BadNumber:
            return {ResultInvalidNewValue, "Setting new value is invalid.", ""};
        case Verdict::Unchanged:
            TAVRINE_LOG(LogDetail) << "no need to change setting " << fullName;
            unchanged[fullName] = currentText;
            wanted = newValues.erase(wanted);
            break;
        case Verdict::Changed:
            wanted->second = workText;
            ++wanted;
            break;
        }
    }
    return BareResult(ResultSuccess);
}

} // namespace Tavrine
