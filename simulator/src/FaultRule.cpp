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

/// Whether the request is carried out.
enum class CarriedOut
{
    /// Where "done" is written.
    IfDone,
    UnlessUndone,
    /// The effect is done to the real answer, which needs one.
    Always,
};

constexpr std::int64_t Anything = 1'000'000'000;

struct Effect
{
    std::string_view Name;
    FaultKind Kind;
    Argument Takes = Argument::None;
    std::string_view ArgumentName = {};
    /// Of a number.
    std::int64_t Low = 0;
    std::int64_t High = Anything;
    /// The number where none is written; empty where none has a meaning of its own.
    std::optional<std::int64_t> Usual = std::nullopt;
    CarriedOut Carried;
    std::string_view Help;
};

constexpr Effect Effects[] = {
    {.Name = "status",
     .Kind = FaultKind::Status,
     .Takes = Argument::Status,
     .ArgumentName = "CODE [NAME=VALUE ...]",
     .Low = 200,
     .High = 599,
     .Carried = CarriedOut::IfDone,
     .Help = "answers with that status and these headers"},
    {.Name = "busy",
     .Kind = FaultKind::Busy,
     .Takes = Argument::Number,
     .ArgumentName = "[SECONDS]",
     .Usual = 1,
     .Carried = CarriedOut::IfDone,
     .Help = "answers 503 with Retry-After: SECONDS (1)"},
    {.Name = "redirect-loop",
     .Kind = FaultKind::RedirectLoop,
     .Carried = CarriedOut::IfDone,
     .Help = "answers 307 with a Location that leads to the same path, each time by another query"},
    {.Name = "close-before",
     .Kind = FaultKind::CloseBefore,
     .Carried = CarriedOut::UnlessUndone,
     .Help = "closes the connection instead of answering"},
    {.Name = "close-within",
     .Kind = FaultKind::CloseWithin,
     .Takes = Argument::Number,
     .ArgumentName = "[BYTES]",
     .Carried = CarriedOut::Always,
     .Help = "closes after so many bytes of the answer (its head and half of its body)"},
    {.Name = "close-after",
     .Kind = FaultKind::CloseAfter,
     .Carried = CarriedOut::Always,
     .Help = "answers as if the connection stayed open, and closes it"},
    {.Name = "tls-cut",
     .Kind = FaultKind::TlsCut,
     .Carried = CarriedOut::Always,
     .Help = "half of an answer whose end only the end of the connection tells, cut without TLS's good-bye (https)"},
    {.Name = "stall",
     .Kind = FaultKind::Stall,
     .Takes = Argument::Number,
     .ArgumentName = "[SECONDS]",
     .Carried = CarriedOut::UnlessUndone,
     .Help = "is silent for so long before it answers; without a number until the client goes"},
    {.Name = "slow",
     .Kind = FaultKind::Slow,
     .Takes = Argument::Number,
     .ArgumentName = "[MILLISECONDS]",
     .Usual = 10,
     .Carried = CarriedOut::Always,
     .Help = "sends the answer byte by byte with this pause (10) after each"},
    {.Name = "truncated",
     .Kind = FaultKind::Truncated,
     .Takes = Argument::Number,
     .ArgumentName = "[BYTES]",
     .Carried = CarriedOut::Always,
     .Help = "cuts the body after so many bytes (half of it), with a Content-Length to match"},
    {.Name = "wrong-length",
     .Kind = FaultKind::WrongLength,
     .Takes = Argument::Number,
     .ArgumentName = "[BYTES]",
     .Low = -Anything,
     .Usual = -10,
     .Carried = CarriedOut::Always,
     .Help = "tells a Content-Length that is wrong by so many bytes (-10); the connection stays open"},
    {.Name = "content-type",
     .Kind = FaultKind::ContentType,
     .Takes = Argument::Text,
     .ArgumentName = "[TYPE]",
     .Carried = CarriedOut::Always,
     .Help = "gives the body another type (text/html)"},
    {.Name = "garbage",
     .Kind = FaultKind::Garbage,
     .Takes = Argument::Number,
     .ArgumentName = "[BYTES]",
     .Low = 1,
     .Usual = 1000,
     .Carried = CarriedOut::UnlessUndone,
     .Help = "sends so many bytes (1000) that are no HTTP, and closes"},
    {.Name = "garbage-json",
     .Kind = FaultKind::GarbageJson,
     .Carried = CarriedOut::UnlessUndone,
     .Help = "answers 200 with a body that is no JSON"},
    {.Name = "huge",
     .Kind = FaultKind::Huge,
     .Takes = Argument::Number,
     .ArgumentName = "[MEBIBYTES]",
     .Low = 1,
     .High = 65536,
     .Usual = 100,
     .Carried = CarriedOut::UnlessUndone,
     .Help = "answers 200 with a JSON object so large (100), and says so in Content-Length"},
    {.Name = "endless",
     .Kind = FaultKind::Endless,
     .Carried = CarriedOut::UnlessUndone,
     .Help = "answers 200 with a JSON text that never ends"},
    {.Name = "huge-head",
     .Kind = FaultKind::HugeHead,
     .Takes = Argument::Number,
     .ArgumentName = "[KIBIBYTES]",
     .Low = 1,
     .High = 65536,
     .Usual = 200,
     .Carried = CarriedOut::Always,
     .Help = "puts headers of so many KiB (200) in front of the answer"},
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
    std::int64_t number = 0;
    if (!ReadNumber(digits, number) || number < effect.Low || number > effect.High)
    {
        return fmt::format("'{}' behind {} must be a whole number from {} to {}", word, effect.Name, effect.Low,
                           effect.High);
    }
    fault.Amount = number;
    return {};
}

std::size_t MostWords(Argument takes)
{
    switch (takes)
    {
    case Argument::None:
        return 0;
    case Argument::Status:
        return std::numeric_limits<std::size_t>::max();
    default:
        return 1;
    }
}

std::string TakeArguments(const std::vector<std::string>& words, const Effect& effect, Fault& fault)
{
    const std::size_t most = MostWords(effect.Takes);
    if (words.size() > most)
    {
        return fmt::format("'{}' is too much behind {}", words[most], effect.Name);
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
    if (told && !done && effect->Carried == CarriedOut::Always)
    {
        return fmt::format("{} is done to the answer, so the request cannot stay undone", effect->Name);
    }
    fault.Kind = effect->Kind;
    fault.Done = told ? done : effect->Carried != CarriedOut::IfDone;
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
    // In the order of CarriedOut.
    constexpr std::string_view marks = "-+=";
    for (const Effect& effect : Effects)
    {
        const char mark = marks[static_cast<std::size_t>(effect.Carried)];
        text +=
            fmt::format("  {} {:<32} {}\n", mark,
                        fmt::format("{}{}{}", effect.Name, effect.ArgumentName.empty() ? "" : " ", effect.ArgumentName),
                        effect.Help);
    }
    return text;
}

} // namespace bmcsim
