#pragma once

#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ConfigOptions.h"
#include "ConnectionInfo.h"
#include "RedfishConfigResult.h"
#include "RedfishConfigSettingInfo.h"
#include "ValueTypes.h"

/// Recording neighbours: they are linked in place of the real libraries, keep every
/// request, log record and call, and answer as the test has told them.
namespace doubles
{

/// One request to the BMC, everything that was handed over.
struct RestCall
{
    /// "GET", "POST", "POST+errors", "PATCH", "DELETE", or "SCHEMA" for a registry read
    /// (Url is then the URL of the value resource).
    std::string Verb;
    std::string Url;
    std::string Body;
    bool Flag = false;
    int Timeout = 0;
    Tavrine::SettingStringMap Headers;

    bool operator==(const RestCall&) const = default;
};

struct LogLine
{
    unsigned int Level = 0;
    std::string Text;

    bool operator==(const LogLine&) const = default;
};

/// What the BMC answers to one request.
struct Answer
{
    RedfishConfigResult Result{0, "", ""};
    /// Handed over by POST always, by the other verbs only with code 0.
    std::string Body;
    std::vector<RedfishConfigResult> Errors;
};

/// What a setting manager answers to one operation.
struct ManagerAnswer
{
    RedfishConfigResult Result{0, "", ""};
    /// For operations on one setting; written also when the result is a failure.
    std::string Text;
    /// For operations on many.
    Tavrine::SettingStringMap Map;
    /// Added to the manager's error list.
    std::vector<RedfishConfigResult> Errors;
};

/// Everything that the neighbours saw and what they are to answer. One for the whole test
/// program; the fixture empties it before each test.
struct World
{
    std::vector<RestCall> Calls;
    std::vector<LogLine> Logs;
    /// Answers by verb and URL, used up in order; the last one stays.
    std::map<std::pair<std::string, std::string>, std::deque<Answer>> Answers;

    /// What GlobalConfig holds.
    std::map<std::string, std::string> Config;
    std::vector<std::string> ConfigAsked;

    /// Old name to new name, and the old names that were asked for.
    std::map<std::string, std::string> NewNames;
    std::vector<std::string> NamesAsked;

    /// What the setting manager knows; every other name is unknown (20).
    std::map<std::string, Tavrine::RedfishConfigSettingInfoStru> Settings;
    Tavrine::SettingGroupMap Groups;
    /// Answers of the operations below by "OPERATION NAME", or "OPERATION" for those on many
    /// settings: "QuerySettingDefaultValue BootMode", "PreparePatchContext". What is not told
    /// answers 99.
    std::map<std::string, ManagerAnswer> ManagerAnswers;
    /// Operations of setting managers, in order: "UpdateSettingValue", "GetSettingProperties
    /// NAME", "PreparePatchContext NAME=VALUE 8", "PreparePatchContext {A=1,B=2} 15",
    /// "FetchSaveSettingValues 14", "TakeErrors" for example.
    std::vector<std::string> ManagerCalls;
    std::vector<Tavrine::SettingValueMap> UpdatedValues;

    /// What ends in a std::runtime_error of the same text: "VERB URL" of a request, an entry of
    /// ManagerCalls, or "ConvertNameFromOldToNew NAME".
    std::set<std::string> Throws;

    /// Connections and system types that REST clients were made with.
    std::vector<std::pair<std::string, int>> Clients;

    /// Scripts an answer.
    void Tell(const std::string& verb, const std::string& url, Answer answer);
    void Tell(const std::string& verb, const std::string& url, const std::string& body);
    void Fail(const std::string& verb, const std::string& url, int code, const std::string& message);

    /// "VERB URL" of every call, in order.
    std::vector<std::string> Requests() const;
    /// The log records of one level, in order.
    std::vector<std::string> LogsAt(unsigned int level) const;
};

World& TheWorld();
/// Forgets everything.
void ResetWorld();

/// A Bios resource, its settings object URL and etag as a BMC would send them; an empty
/// url or etag leaves the member out.
std::string BiosResource(const std::string& attributes, const std::string& settingsUrl, const std::string& etag);

} // namespace doubles
