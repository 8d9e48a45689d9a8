#include "FaultRule.h"

#include "BmcSimulator.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <fnmatch.h>
#include <iterator>

namespace bmcsim
{
namespace
{

/// What stands behind an effect's name.
enum class Argument
{
    None,
    Number,
    /// A number that cannot be left out, and headers.
    Status,
    Text,
};

struct Effect
{
    std::string_view Name;
    FaultKind Kind;
    Argument Takes;
    std::string_view ArgumentName;
    std::int64_t Low;
    std::int64_t High;
    std::int64_t Usual;
    /// The request is carried out unless "undone" is written.
    bool Done;
    /// "done" and "undone" may be written. An effect that is done to the real answer needs one.
    bool Free;
    std::string_view Help;
};

constexpr std::int64_t Anything = 1'000'000'000;

constexpr Effect Effects[] = {
    {"status", FaultKind::Status, Argument::Status, "CODE [NAME=VALUE ...]", 200, 599, 500, false, true,
     "answers with that status and these headers"},
    {"busy", FaultKind::Busy, Argument::Number, "[SECONDS]", 0, Anything, 1, false, true,
     "answers 503 with Retry-After: SECONDS (1)"},
    {"redirect-loop", FaultKind::RedirectLoop, Argument::None, "", 0, 0, 0, false, true,
     "answers 307 with a Location that leads to the same path, each time by another query"},
    {"close-before", FaultKind::CloseBefore, Argument::None, "", 0, 0, 0, true, true,
     "closes the connection instead of answering"},
    {"close-within", FaultKind::CloseWithin, Argument::Number, "[BYTES]", 0, Anything, -1, true, false,
     "closes after so many bytes of the answer (its head and half of its body)"},
    {"close-after", FaultKind::CloseAfter, Argument::None, "", 0, 0, 0, true, false,
     "answers as if the connection stayed open, and closes it"},
    {"tls-cut", FaultKind::TlsCut, Argument::None, "", 0, 0, 0, true, false,
     "half of an answer whose end only the end of the connection tells, cut without TLS's good-bye (https)"},
    {"stall", FaultKind::Stall, Argument::Number, "[SECONDS]", 0, Anything, 0, true, true,
     "is silent for so long before it answers; without a number until the client goes"},
    {"slow", FaultKind::Slow, Argument::Number, "[MILLISECONDS]", 0, Anything, 10, true, false,
     "sends the answer byte by byte with this pause (10) after each"},
    {"truncated", FaultKind::Truncated, Argument::Number, "[BYTES]", 0, Anything, -1, true, false,
     "cuts the body after so many bytes (half of it), with a Content-Length to match"},
    {"wrong-length", FaultKind::WrongLength, Argument::Number, "[BYTES]", -Anything, Anything, -10, true, false,
     "tells a Content-Length that is wrong by so many bytes (-10); the connection stays open"},
    {"content-type", FaultKind::ContentType, Argument::Text, "[TYPE]", 0, 0, 0, true, false,
     "gives the body another type (text/html)"},
    {"garbage", FaultKind::Garbage, Argument::Number, "[BYTES]", 1, Anything, 1000, true, true,
     "sends so many bytes (1000) that are no HTTP, and closes"},
    {"garbage-json", FaultKind::GarbageJson, Argument::None, "", 0, 0, 0, true, true,
     "answers 200 with a body that is no JSON"},
    {"huge", FaultKind::Huge, Argument::Number, "[MEBIBYTES]", 1, 65536, 100, true, true,
     "answers 200 with a JSON object so large (100), and says so in Content-Length"},
    {"endless", FaultKind::Endless, Argument::None, "", 0, 0, 0, true, true,
     "answers 200 with a JSON text that never ends"},
    {"huge-head", FaultKind::HugeHead, Argument::Number, "[KIBIBYTES]", 1, 65536, 200, true, false,
     "puts headers of so many KiB (200) in front of the answer"},
};

/// Words are parted by blanks; between double quotes blanks are part of the word.
bool SplitWords(const std::string& text, std::vector<std::string>& words)
{
    bool quoted = false;
    bool within = false;
    for (const char c : text)
    {
        const bool blank = (c == ' ' || c == '\t') && !quoted;
        if (!blank && !within)
        {
            words.emplace_back();
        }
        within = !blank;
        quoted = quoted != (c == '"');
        if (within && c != '"')
        {
            words.back() += c;
        }
    }
    return !quoted;
}

bool IsToken(std::string_view text)
{
    constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::all_of(text.begin(), text.end(),
                                        [&](char c)
                                        {
                                            return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') ||
                                                   (c >= 'A' && c <= 'Z') || marks.find(c) != std::string_view::npos;
                                        });
}

template <typename Number> bool ReadNumber(std::string_view text, Number& value)
{
    const auto [stop, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    return failure == std::errc() && stop == text.data() + text.size();
}

std::string TakeMethods(std::string_view text, FaultRule& rule)
{
    if (text == "*")
    {
        return {};
    }
    for (;;)
    {
        const auto comma = text.find(',');
        const std::string_view method = text.substr(0, comma);
        const bool capitals =
            !method.empty() && std::all_of(method.begin(), method.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
        if (!capitals)
        {
            return fmt::format("'{}' is no method: GET, PATCH,POST or * for all", method);
        }
        rule.Methods.emplace_back(method);
        if (comma == std::string_view::npos)
        {
            return {};
        }
        text.remove_prefix(comma + 1);
    }
}

/// "#3", "#3+", "#3-5".
std::string TakeCount(std::string_view text, FaultRule& rule)
{
    const std::string_view count = text.substr(1);
    const auto mark = count.find_first_of("+-");
    bool good = ReadNumber(count.substr(0, mark), rule.First) && rule.First > 0;
    if (mark == std::string_view::npos)
    {
        rule.Last = rule.First;
    }
    else if (count[mark] == '-')
    {
        good = good && ReadNumber(count.substr(mark + 1), rule.Last) && rule.Last >= rule.First;
    }
    else
    {
        good = good && mark + 1 == count.size();
    }
    return good ? ""
                : fmt::format("'{}' is no count: #3 for the third, #3-5, #3+ for the third and all after it", text);
}

std::string TakeHeader(const std::string& word, Fault& fault)
{
    const auto sign = word.find('=');
    const std::string name = word.substr(0, sign);
    const std::string value = sign == std::string::npos ? "" : word.substr(sign + 1);
    const bool plain = std::none_of(value.begin(), value.end(),
                                    [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; });
    if (sign == std::string::npos || !IsToken(name) || !plain)
    {
        return fmt::format("'{}' is no header: NAME=VALUE", word);
    }
    fault.Headers[name] = value;
    return {};
}

std::string TakeNumber(const std::string& word, const Effect& effect, Fault& fault)
{
    std::string_view digits = word;
    digits.remove_prefix(digits.starts_with('+') ? 1 : 0);
    if (!ReadNumber(digits, fault.Amount) || fault.Amount < effect.Low || fault.Amount > effect.High)
    {
        return fmt::format("'{}' behind {} must be a whole number from {} to {}", word, effect.Name, effect.Low,
                           effect.High);
    }
    return {};
}

std::string TakeArguments(const std::vector<std::string>& words, const Effect& effect, Fault& fault)
{
    constexpr std::size_t most[] = {0, 1, std::numeric_limits<std::size_t>::max(), 1};
    if (words.size() > most[static_cast<std::size_t>(effect.Takes)])
    {
        return fmt::format("'{}' is too much behind {}", words[most[static_cast<std::size_t>(effect.Takes)]],
                           effect.Name);
    }
    if (words.empty())
    {
        return effect.Takes == Argument::Status ? fmt::format("{} needs a status code", effect.Name) : "";
    }
    if (effect.Takes == Argument::Text)
    {
        fault.Text = words.front();
        return {};
    }
    std::string error = TakeNumber(words.front(), effect, fault);
    for (std::size_t i = 1; error.empty() && i < words.size(); ++i)
    {
        error = TakeHeader(words[i], fault);
    }
    return error;
}

std::string TakeEffect(std::vector<std::string> words, Fault& fault)
{
    const bool told = !words.empty() && (words.front() == "done" || words.front() == "undone");
    const bool done = told && words.front() == "done";
    if (told)
    {
        words.erase(words.begin());
    }
    if (words.empty())
    {
        return "what happens is missing";
    }
    const auto* effect = std::find_if(std::begin(Effects), std::end(Effects),
                                      [&](const Effect& row) { return row.Name == words.front(); });
    if (effect == std::end(Effects))
    {
        return fmt::format("'{}' is none of {}", words.front(), fmt::join(FaultNames(), ", "));
    }
    if (told && !effect->Free && !done)
    {
        return fmt::format("{} is done to the answer, so the request cannot stay undone", effect->Name);
    }
    fault.Kind = effect->Kind;
    fault.Done = told ? done : effect->Done;
    fault.Amount = effect->Usual;
    words.erase(words.begin());
    return TakeArguments(words, *effect, fault);
}

} // namespace

bool FaultRule::Names(const std::string& method, const std::string& path) const
{
    return (Methods.empty() || std::find(Methods.begin(), Methods.end(), method) != Methods.end()) &&
           fnmatch(Path.c_str(), path.c_str(), 0) == 0;
}

std::optional<FaultRule> ParseFaultRule(const std::string& text, std::string& error)
{
    FaultRule rule;
    std::vector<std::string> words;
    std::string fault = SplitWords(text, words) ? "" : "a quotation mark is not closed";
    if (fault.empty() && words.size() < 3)
    {
        fault = "a rule is METHOD PATH [#COUNT] [done|undone] EFFECT [...]";
    }
    if (fault.empty())
    {
        fault = TakeMethods(words[0], rule);
        rule.Path = words[1];
        words.erase(words.begin(), words.begin() + 2);
    }
    if (fault.empty() && !rule.Path.starts_with('/') && !rule.Path.starts_with('*'))
    {
        fault = fmt::format("the path '{}' begins with neither / nor *", rule.Path);
    }
    if (fault.empty() && words.front().starts_with('#'))
    {
        fault = TakeCount(words.front(), rule);
        words.erase(words.begin());
    }
    if (fault.empty())
    {
        fault = TakeEffect(std::move(words), rule.What);
    }
    if (!fault.empty())
    {
        error = fmt::format("fault rule '{}': {}", text, fault);
        return std::nullopt;
    }
    return rule;
}

std::string FaultRuleError(const std::string& rule)
{
    std::string error;
    ParseFaultRule(rule, error);
    return error;
}

std::vector<std::string_view> FaultNames()
{
    std::vector<std::string_view> names;
    std::transform(std::begin(Effects), std::end(Effects), std::back_inserter(names),
                   [](const Effect& effect) { return effect.Name; });
    return names;
}

std::string FaultHelp()
{
    std::string text = "A fault RULE is METHOD PATH [#COUNT] [done|undone] EFFECT [...], for example\n"
                       "  'GET */Bios #2 status 503 Retry-After=5'   'PATCH,POST * close-before'\n"
                       "METHOD  one, several with commas, * for all    PATH  a shell pattern, * for all\n"
                       "#COUNT  #3 the third such request, #3-5, #3+; all without it\n"
                       "The first rule that fits acts. Effects (- the request is not carried out unless \"done\" is\n"
                       "written, + it is unless \"undone\" is written, = it always is):\n";
    for (const Effect& effect : Effects)
    {
        const char mark = !effect.Free ? '=' : effect.Done ? '+' : '-';
        text +=
            fmt::format("  {} {:<32} {}\n", mark,
                        fmt::format("{}{}{}", effect.Name, effect.ArgumentName.empty() ? "" : " ", effect.ArgumentName),
                        effect.Help);
    }
    return text;
}

} // namespace bmcsim
