// What a run of the tool keeps to, whatever goes wrong on the BMC.
#include "FaultPromises.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <mutex>
#include <regex>
#include <sstream>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

namespace json = boost::json;

namespace tooltest
{
namespace
{

/// What a run may take beyond the time-out of its one silent request, on a machine at work.
constexpr std::chrono::seconds HangSlack{20};
constexpr const char* PendingUnread =
    "values that wait for a reboot could not be read|the pending values could not be read back";

constexpr const char* NoClaims =
    "unknown|not known|not sent|not changed|not restarted|\"refused\"|refused: |/reason: |[*]{8}|"
    "/defaultsPending: null|/reboot/outcome: \"(not requested|restart requested)\"";
constexpr const char* ClaimsOfChanges = "in place|already|sent, takes effect|changed, |\"changed\"|in force";

/// Patterns are made once, which takes longer than to look for one.
bool Matches(const std::string& text, const std::string& pattern)
{
    static std::mutex mutex;
    static std::map<std::string, std::regex> made;
    const std::regex* expression = nullptr;
    {
        // One at a time: the facet that a locale makes them with remembers letters without a lock.
        const std::lock_guard lock(mutex);
        expression = &made.try_emplace(pattern, pattern).first->second;
    }
    return std::regex_search(text, *expression);
}

std::multiset<std::string> Lines(const std::string& text)
{
    std::istringstream stream(text);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(stream, line);)
    {
        lines.insert(line);
    }
    return lines;
}

/// "path: value" of every value in a document's members, but for those of every document.
void AddLeaves(const json::value& value, const std::string& path, std::multiset<std::string>& leaves)
{
    if (const json::array* array = value.if_array())
    {
        for (const json::value& element : *array)
        {
            AddLeaves(element, path, leaves);
        }
        return;
    }
    const json::object* object = value.if_object();
    if (object == nullptr)
    {
        leaves.insert(path + ": " + json::serialize(value));
        return;
    }
    static const std::set<std::string> common = {"/code", "/message", "/errors"};
    for (const auto& member : *object)
    {
        const std::string place = path + "/" + std::string(member.key());
        if (!common.contains(place))
        {
            AddLeaves(member.value(), place, leaves);
        }
    }
}

/// What a run shows: lines of text, or values of JSON.
std::multiset<std::string> Shown(const FaultOutcome& outcome, bool asJson)
{
    json::error_code unreadable;
    std::multiset<std::string> leaves;
    if (!asJson)
    {
        return Lines(outcome.Tool.Output);
    }
    AddLeaves(json::parse(outcome.Tool.Output, unreadable), "", leaves);
    return leaves;
}

std::string Crash(const Case& of)
{
    return of.Ran.Tool.Killed || of.Ran.Tool.Status >= 64 ? "it crashed, hung or refused its command line" : "";
}

std::string Hang(const Case& of)
{
    return of.Fault.Stalls && of.Ran.Took > HangSlack ? "it waited much longer than its time-out" : "";
}

/// Standard output is one document, whatever happens.
std::string Document(const Case& of)
{
    if (!of.Json)
    {
        return "";
    }
    json::error_code unreadable;
    const json::value document = json::parse(of.Ran.Tool.Output, unreadable);
    const json::object* object = unreadable ? nullptr : document.if_object();
    if (object == nullptr || !of.Ran.Tool.Output.ends_with("}\n"))
    {
        return "standard output is not one JSON document";
    }
    const json::value* code = object->if_contains("code");
    const json::value* errors = object->if_contains("errors");
    if (code == nullptr || errors == nullptr || !errors->is_array() || !object->contains("message"))
    {
        return "the JSON document has not its members";
    }
    // 1: done, and a restart brings it into force.
    if (*code != of.Ran.Tool.Status && !(of.Succeeded() && *code == 1))
    {
        return "the JSON document has another code";
    }
    return of.Succeeded() == errors->get_array().empty() ? "" : "the JSON document's errors are not those of the run";
}

std::string Secret(const Case& of)
{
    return HoldsASecret(of.Texts()) || HoldsASecret(of.Ran.Log) ? "a secret is told" : "";
}

std::string Code(const Case& of)
{
    const int status = of.Ran.Tool.Status;
    if (of.Succeeded())
    {
        return "";
    }
    if (status != of.Command.FixedCode && !of.Fault.Codes.contains(status))
    {
        return "the code is wrong";
    }
    return of.Ran.Tool.Errors.find("tavrine: " + std::to_string(status) + " ") == std::string::npos
               ? "standard error has no line with the code"
               : "";
}

std::string NameAndCause(const Case& of)
{
    if (of.Succeeded())
    {
        return "";
    }
    if (of.Ran.Tool.Errors.find("[bmc]") == std::string::npos)
    {
        return "the BMC is not named";
    }
    return Matches(of.Ran.Tool.Errors, of.Fault.Cause) ? "" : "the cause is not told";
}

/// What is shown is what a run without faults shows, or said to be unknown. Where it is told that what waits for a
/// reboot could not be read, values may be others and fewer, but no more may be claimed of changes.
std::string ShownValues(const Case& of)
{
    const auto good = Shown(of.Good, of.Json);
    const auto shown = Shown(of.Ran, of.Json);
    const bool unread = Matches(of.Ran.Tool.Errors, PendingUnread);
    for (const std::string& line : shown)
    {
        const bool known = good.contains(line) || (unread ? !Matches(line, ClaimsOfChanges) : Matches(line, NoClaims));
        if (!known)
        {
            return "shown without being known: " + line;
        }
    }
    return of.Succeeded() && !unread && shown.size() != good.size() ? "a successful run shows less" : "";
}

std::string Claims(const Case& of)
{
    static const std::string before = StateBefore();
    const bool untouched = of.Ran.State == before;
    const bool done = of.Ran.State == of.Good.State;
    const std::string texts = of.Texts();
    if (of.Succeeded())
    {
        return done ? "" : "it claims success, but the BMC is in another state";
    }
    if (!untouched && Matches(texts, "nothing was sent|was not done") && !Matches(texts, "not known"))
    {
        return "something was done, and it denies that";
    }
    // By its answer a busy BMC has done nothing; the tool cannot know that it errs.
    const bool misled = Matches(of.Fault.Effect, "done busy");
    const auto good = Shown(of.Good, of.Json);
    const auto shown = Shown(of.Ran, of.Json);
    const bool tells = std::ranges::any_of(shown, [&](const std::string& line) { return good.contains(line); });
    if (!untouched && !misled && !tells && Matches(texts, "refused: |\"refused\""))
    {
        return "something was done, and it calls that refused";
    }
    if (!untouched && !misled && !tells && !Matches(texts, "not known|unknown|BMC shows|restart requested"))
    {
        return "something was done, and it does not tell";
    }
    return "";
}

std::string Repetition(const Case& of)
{
    // It says that nothing was done, and a new login is the remedy.
    if (Matches(of.Fault.Effect, "401"))
    {
        return "";
    }
    const auto changes = [](const FaultOutcome& outcome)
    { return std::count_if(outcome.Requests.begin(), outcome.Requests.end(), IsChange); };
    return changes(of.Ran) > changes(of.Good) ? "a change was sent twice" : "";
}

/// Whether a file is the good one but for the value of the setting that waits for a reboot: for that it has the one in
/// force.
bool HasValueInForce(const std::string& content, const std::string& good)
{
    const std::string waiting = WaitingValue;
    for (std::size_t at = good.find(waiting); at != std::string::npos; at = good.find(waiting, at + 1))
    {
        if (good.substr(0, at) + ValueInForce + good.substr(at + waiting.size()) == content)
        {
            return true;
        }
    }
    return false;
}

std::string FilesOnDisk(const Case& of)
{
    for (const auto& [name, content] : of.Ran.Files)
    {
        const auto good = of.Good.Files.find(name);
        const bool known = good != of.Good.Files.end();
        const bool unread = Matches(of.Ran.Tool.Errors, PendingUnread);
        const bool whole = known && (good->second == content || (unread && HasValueInForce(content, good->second)));
        const bool old = name == "out" && content == OldOutput;
        if (!whole && (!old || of.Succeeded()))
        {
            return "the file " + name + " is half-written, old or left over";
        }
    }
    return of.Ran.Files.size() == of.Good.Files.size() ? "" : "a file is missing";
}

constexpr std::array Promises = {Crash,        Hang,        Document, Secret,     Code,
                                 NameAndCause, ShownValues, Claims,   Repetition, FilesOnDisk};

} // namespace

bool IsChange(const bmcsim::AccessRecord& request)
{
    return request.Method != "GET" && request.Path.find("/Sessions") == std::string::npos;
}

bool OnlyReads(const bmcsim::AccessRecord& request) { return request.Path.ends_with(".DSReadFile"); }

std::string Broken(const Case& of)
{
    for (const auto promise : Promises)
    {
        if (std::string words = promise(of); !words.empty())
        {
            return words;
        }
    }
    return {};
}

} // namespace tooltest
