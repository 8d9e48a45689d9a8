#include "SettingPairs.h"

#include <cstddef>
#include <set>
#include <unistd.h>
#include <utility>

#include <fmt/format.h>

#include "InputFile.h"
#include "Options.h"
#include "Password.h"
#include "Secret.h"

namespace Tavrine::Tool
{
namespace
{

constexpr std::size_t ReadStep = 65536;
constexpr const char* FromInput = "-";

std::string ReadAll(int input, std::string& text)
{
    // One allocation, so that growth leaves no copies of the value behind.
    Secret collected(LargestInputValue + 2 + ReadStep);
    for (;;)
    {
        const std::size_t size = collected.Text().size();
        collected.Text().resize(size + ReadStep);
        std::string error;
        const std::optional<std::size_t> count = ReadSome(input, collected.Text().data() + size, ReadStep, error);
        collected.Text().resize(size + count.value_or(0));
        if (!count)
        {
            return error;
        }
        if (*count == 0)
        {
            break;
        }
        if (collected.Text().size() > LargestInputValue + 1)
        {
            break;
        }
    }
    if (collected.Text().ends_with('\n'))
    {
        collected.Text().pop_back();
    }
    if (collected.Text().empty())
    {
        return "nothing came; NAME= sets an empty value"; // a command in front of a pipe has failed, for example
    }
    if (collected.Text().size() > LargestInputValue)
    {
        return fmt::format("it is longer than {} bytes", LargestInputValue);
    }
    text = collected.Text();
    return {};
}

/// From a terminal a line, which nobody sees and which is asked for twice: a slip in a password would lock the
/// machine's owner out. Else all that comes.
std::string ReadValue(int input, const std::string& shownName, std::string& text)
{
    if (isatty(input) != 1)
    {
        return ReadAll(input, text);
    }
    PasswordText line;
    PasswordText again;
    std::string error = AskHidden("New value of " + shownName + ": ", line);
    if (error.empty())
    {
        error = AskHidden("The same again: ", again);
    }
    if (error.empty() && line.Text() != again.Text())
    {
        error = "the two lines are not the same";
    }
    if (error.empty())
    {
        text = line.Text();
    }
    return error;
}

} // namespace

SettingPair::~SettingPair() { Wipe(Value); }

std::string PairsFault(const Options& options)
{
    const Prefixes prefixes = PrefixesOf(options);
    std::set<std::string> seen;
    bool input = false;
    for (std::size_t index = 0; index < options.Names.size(); ++index)
    {
        const std::string& text = options.Names[index];
        const std::size_t sign = text.find('=');
        const std::string name = BareName(text.substr(0, sign), prefixes);
        if (sign == std::string::npos || name.empty())
        {
            return fmt::format("Argument {} is no NAME=VALUE", index + 1);
        }
        if (!seen.insert(name).second)
        {
            return "The setting " + name + " is given twice";
        }
        if (text.substr(sign + 1) == FromInput && std::exchange(input, true))
        {
            return "Only one value can come from standard input";
        }
    }
    return input && options.PasswordFile == FromInput ? "--password-file - and NAME=- cannot both read standard input"
                                                      : std::string();
}

std::optional<Failure> ReadPairs(const Options& options, int input, std::vector<SettingPair>& pairs)
{
    const Prefixes prefixes = PrefixesOf(options);
    for (const std::string& text : options.Names)
    {
        const std::size_t sign = text.find('=');
        SettingPair& pair = pairs.emplace_back(BareName(text.substr(0, sign), prefixes), text.substr(sign + 1));
        if (pair.Value != FromInput)
        {
            continue;
        }
        const std::string shownName = prefixes.First + "." + pair.Name;
        if (const std::string error = ReadValue(input, shownName, pair.Value); !error.empty())
        {
            return Failure{CodeParameter,
                           "Unable to read the value of " + shownName +
                               (isatty(input) == 1 ? " from the terminal: " : " from standard input: ") + error,
                           shownName};
        }
    }
    return std::nullopt;
}

} // namespace Tavrine::Tool
