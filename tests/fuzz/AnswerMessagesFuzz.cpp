// What a BMC says in its answers, and in the message registries that it serves: the code
// is that of the status, whatever the body; the words are fit for one line and no secret
// stands in them; nothing is made up that the body does not hold.
#include <algorithm>

#include <boost/json/serialize.hpp>

#include "AnswerResults.h"
#include "ChangeDelivery.h"
#include "JsonParts.h"
#include "JsonText.h"
#include "MessageRegistries.h"
#include "MessageTable.h"
#include "Oracle.h"
#include "PlainJson.h"
#include "PlainText.h"

using namespace fuzztest;
using namespace Tavrine;

namespace
{

constexpr std::string_view Secret = "hunter2secret";
constexpr std::size_t MostMessages = 500;
constexpr std::size_t MostArguments = 20;
constexpr std::size_t LongestName = 256;
constexpr std::size_t LongestWords = 1003;
/// Around what would be taken for the client's own words.
constexpr std::size_t Marks = 4;
constexpr std::size_t LongestMessage = 4003 + 1000 + 2 * Marks;
constexpr std::string_view ExtendedInfo = "@Message.ExtendedInfo";

struct Case
{
    HttpVerb Verb;
    int Status;
    bool WithErrorList;
};

constexpr Case cases[] = {
    {HttpVerb::Get, 200, false},   {HttpVerb::Get, 404, false},  {HttpVerb::Patch, 200, true},
    {HttpVerb::Patch, 400, true},  {HttpVerb::Post, 202, false}, {HttpVerb::Post, 400, true},
    {HttpVerb::Delete, 409, true}, {HttpVerb::Patch, 503, true}, {HttpVerb::Patch, 401, true},
    {HttpVerb::Post, 403, false},  {HttpVerb::Patch, 500, true}, {HttpVerb::Patch, 302, true},
};

bool IsOneOf(int code, std::initializer_list<int> codes)
{
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

/// By the status alone, but for a busy BMC and what a body can add to a success.
bool CodeSuits(const Case& one, int code, bool broken)
{
    if (IsOneOf(one.Status, {401, 403}))
    {
        return code == 24;
    }
    if (code == 33 || one.Status == 503)
    {
        return code == 33;
    }
    if (one.Status >= 500)
    {
        return code == 32;
    }
    const bool success = one.Status < 300;
    return code == RefusalCode(one.Verb, one.WithErrorList) ||
           (success && (code == (broken ? 27 : 0) || (code == 1 && one.Verb != HttpVerb::Get)));
}

void CheckWords(const std::string& words, std::size_t longest)
{
    FUZZ_REQUIRE(OnOneLine(words), words);
    FUZZ_REQUIRE(IsUtf8(words), words);
    FUZZ_REQUIRE(words.size() <= longest, words);
}

bool HasMessages(const PlainJson& object)
{
    return std::any_of(object.Members.begin(), object.Members.end(),
                       [](const auto& member)
                       { return std::string_view(member.Name).ends_with(ExtendedInfo) || member.Name == "Messages"; });
}

/// It begins as an object, perhaps behind a byte order mark, and is no JSON: what it was to say is not known.
bool IsBroken(std::string_view body, const std::optional<PlainJson>& plain)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    body.remove_prefix(body.starts_with(byteOrderMark) ? byteOrderMark.size() : 0);
    const std::size_t begin = body.find_first_not_of(" \t\r\n");
    return !plain && begin != std::string_view::npos && body[begin] == '{';
}

/// Nothing in the document is a place where messages stand.
bool IsSilent(const std::optional<PlainJson>& plain)
{
    const PlainJson* const attributes = plain ? plain->Find("Attributes") : nullptr;
    return !plain || (plain->Find("error") == nullptr && !HasMessages(*plain) &&
                      (attributes == nullptr || !HasMessages(*attributes)));
}

/// By the length of the name alone.
Keep ByLength(std::string_view, std::string_view name)
{
    return name.size() == 1 ? Keep::Members : name.size() == 2 ? Keep::All : Keep::Nothing;
}

/// What ByLength keeps of an object.
boost::json::object KeptOf(const boost::json::object& object)
{
    boost::json::object kept;
    for (const auto& member : object)
    {
        const Keep keep = ByLength({}, {member.key().data(), member.key().size()});
        const boost::json::object* const inner = member.value().if_object();
        if (keep == Keep::All)
        {
            kept[member.key()] = member.value();
        }
        else if (keep == Keep::Members)
        {
            kept[member.key()] = inner != nullptr ? boost::json::value(KeptOf(*inner)) : boost::json::value();
        }
    }
    return kept;
}

/// What is read in parts is what is read at one stroke.
void CheckParts(std::string_view body)
{
    const auto everything = [](std::string_view, std::string_view) { return Keep::All; };
    const JsonParts parts = ParseParts(body, everything);
    const std::optional<boost::json::value> document = ParseJson(body);
    FUZZ_REQUIRE(!parts.Document || parts.Fault.empty(), body);
    FUZZ_REQUIRE(parts.Document.has_value() == (document && document->is_object()), body);
    FUZZ_REQUIRE(!parts.Document || boost::json::serialize(*parts.Document) == boost::json::serialize(*document), body);
    const JsonParts some = ParseParts(body, ByLength);
    FUZZ_REQUIRE(!parts.Document || *some.Document == KeptOf(document->get_object()), body);
}

std::vector<BmcMessage> CheckMessages(std::string_view body, const std::optional<PlainJson>& plain)
{
    std::vector<BmcMessage> messages = ReadMessages(body, true).Messages;
    FUZZ_REQUIRE(messages.size() <= MostMessages, body);
    FUZZ_REQUIRE(messages.empty() || !IsSilent(plain), body);
    FUZZ_REQUIRE(ReadMessages(body, false).Messages.size() <= messages.size(), body);
    for (const BmcMessage& message : messages)
    {
        CheckWords(message.Text, LongestWords);
        CheckWords(message.Id, LongestName + 3);
        CheckWords(message.Key, LongestName + 3);
        FUZZ_REQUIRE(!message.Wordless || !message.Id.empty(), body);
        FUZZ_REQUIRE(message.Arguments.size() <= MostArguments, body);
        std::for_each(message.Arguments.begin(), message.Arguments.end(),
                      [](const std::string& argument) { CheckWords(argument, LongestWords); });
        for (const std::string& setting : message.Settings)
        {
            CheckWords(setting, LongestName);
            FUZZ_REQUIRE(!setting.empty(), body);
        }
    }
    return messages;
}

/// How far a change came is told by the client alone: what the BMC says in the same words changes nothing of it.
void CheckDelivery(const AnsweredRequest& request, int status, RedfishConfigResult& result,
                   std::vector<RedfishConfigResult>& errors)
{
    AnsweredRequest plain = request;
    plain.FailedTask = request.FailedTask.empty() ? "" : "Exception";
    HttpAnswer silent;
    silent.Status = result == 33 ? 503 : status;
    std::vector<RedfishConfigResult> none;
    RedfishConfigResult expected = JudgeAnswer(plain, silent, none);
    FUZZ_REQUIRE(DeliveryIn(result.ErrorMsg()) == DeliveryIn(expected.ErrorMsg()), result.ErrorMsg());
    for (RedfishConfigResult& error : errors)
    {
        FUZZ_REQUIRE(!DeliveryIn(error.ErrorMsg()), error.ErrorMsg());
    }
}

void CheckJudgement(const Case& one, const HttpAnswer& answer, bool silent, bool broken)
{
    AnsweredRequest request{one.Verb, one.WithErrorList, "/redfish/v1/Systems/1/Bios/Settings", "bmc:443", true};
    request.Secrets = {Secret};
    std::vector<RedfishConfigResult> errors;
    RedfishConfigResult result = JudgeAnswer(request, answer, errors);
    FUZZ_REQUIRE(CodeSuits(one, result, broken), std::to_string(result) + " for " + std::to_string(one.Status));
    FUZZ_REQUIRE(result > 1 || (result.ErrorMsg().empty() && errors.empty()), result.ErrorMsg());
    FUZZ_REQUIRE(result <= 1 || result.ErrorMsg().find("bmc:443") != std::string::npos, result.ErrorMsg());
    FUZZ_REQUIRE(!silent || broken || one.Status >= 300 || result == 0, answer.Body);
    CheckWords(result.ErrorMsg(), LongestMessage);
    FUZZ_REQUIRE(result.ErrorMsg().find(Secret) == std::string::npos, result.ErrorMsg());
    for (RedfishConfigResult& error : errors)
    {
        FUZZ_REQUIRE(IsOneOf(error, {9, 10, 18}) && !error.ErrorSetting().empty(), answer.Body);
        CheckWords(error.ErrorMsg(), LongestWords + Marks);
        FUZZ_REQUIRE(error.ErrorMsg().find(Secret) == std::string::npos, error.ErrorMsg());
    }
    FUZZ_REQUIRE(IsBusy(answer) == (result == 33) || one.Status == 401 || one.Status == 403, answer.Body);
    CheckDelivery(request, one.Status, result, errors);
    request.FailedTask = answer.Header("location");
    if (!request.FailedTask.empty())
    {
        errors.clear();
        result = JudgeAnswer(request, answer, errors);
        CheckDelivery(request, one.Status, result, errors);
    }
}

/// The words that the registry itself has for the key.
std::string WordsIn(const std::optional<PlainJson>& registry, const BmcMessage& message)
{
    const PlainJson* const messages = registry ? registry->Find("Messages") : nullptr;
    const PlainJson* const entry = messages != nullptr ? messages->Find(message.Key) : nullptr;
    const std::string words = entry != nullptr ? entry->TextOf("Message") : std::string();
    return words.size() > 1000 ? std::string() : FilledText(words, message.Arguments);
}

void CheckRegistry(const std::vector<BmcMessage>& messages, std::string_view text)
{
    bool doubtful = false;
    const std::optional<PlainJson> registry = ReadPlainJson(text, doubtful);
    std::size_t reads = 0;
    const ResourceReader read = [&](const std::string&, std::string& answer)
    {
        // The collection, one file, the registry itself.
        ++reads;
        answer = reads % 3 == 1   ? R"({"Members":[{"@odata.id":"/redfish/v1/Registries/Base"}]})"
                 : reads % 3 == 2 ? R"({"Id":"Base.1.8","Location":[{"Language":"en","Uri":"/base.json"}]})"
                                  : std::string(text);
        return RedfishConfigResult(0, "", "");
    };
    MessageRegistries registries;
    BmcMessage message;
    message.Id = "Base.1.8.Probe";
    message.Key = "Probe";
    message.Arguments = {"one", "two"};
    const std::string words = registries.WordsOf(message, read, "en");
    FUZZ_REQUIRE(doubtful || words == WordsIn(registry, message), text);
    FUZZ_REQUIRE(reads == 3 && registries.WordsOf(message, read, "en") == words && reads == 3, text);
    for (const BmcMessage& one : messages)
    {
        registries.WordsOf(one, read, "en");
    }
    FUZZ_REQUIRE(reads <= 8 * 3, text); // eight registries, each looked for once
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // The body, a message registry, and the head's "Retry-After", "Date" and "Location".
    const std::vector<std::string_view> parts = Parts(Text(data, size), 5);
    bool doubtful = false;
    const std::optional<PlainJson> plain = ReadPlainJson(parts[0], doubtful);
    if (doubtful)
    {
        return 0;
    }
    CheckParts(parts[0]);
    const std::vector<BmcMessage> messages = CheckMessages(parts[0], plain);
    HttpAnswer answer;
    answer.Body = parts[0];
    answer.Headers = {{"retry-after", std::string(parts[2].substr(0, parts[2].find('\0')))},
                      {"date", std::string(parts[3].substr(0, parts[3].find('\0')))}};
    if (IsUtf8(parts[4]) && parts[4].find(Secret) == std::string_view::npos)
    {
        answer.Headers["location"] = parts[4];
    }
    for (const Case& one : cases)
    {
        answer.Status = one.Status;
        CheckJudgement(one, answer, IsSilent(plain), IsBroken(parts[0], plain));
    }
    const auto seconds = RetryAfterSeconds(answer);
    const std::string& head = answer.Headers["retry-after"];
    const bool digits = !head.empty() && head.size() < 10 && head.find_first_not_of("0123456789") == std::string::npos;
    FUZZ_REQUIRE(!digits || seconds == static_cast<std::uint32_t>(std::stoul(head)), head);
    CheckRegistry(messages, parts[1]);
    return 0;
}
