#include "Examples.h"

#include <regex>
#include <sstream>
#include <utility>

namespace docs
{
namespace
{

struct Block
{
    std::string Language;
    std::size_t FirstLine = 0;
    std::vector<std::string> Lines;
};

std::vector<Block> Blocks(std::string_view document)
{
    constexpr std::string_view Fence = "```";
    std::vector<Block> blocks;
    bool inside = false;
    std::istringstream lines{std::string(document)};
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);)
    {
        ++number;
        if (line.starts_with(Fence))
        {
            inside = !inside;
            if (inside)
            {
                blocks.push_back({line.substr(Fence.size()), number + 1, {}});
            }
        }
        else if (inside)
        {
            blocks.back().Lines.push_back(line);
        }
    }
    return blocks;
}

struct Varying
{
    const char* Pattern;
    const char* Word;
};

constexpr Varying VaryingTexts[] = {
    {R"([0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}(\.[0-9]+)?(Z|[+-][0-9]{2}:[0-9]{2}))", "TIME"},
};

} // namespace

std::vector<Example> ExamplesOf(std::string_view document)
{
    constexpr std::string_view Prompt = "$ ";
    std::vector<Example> examples;
    for (const Block& block : Blocks(document))
    {
        if (block.Lines.empty() || !block.Lines.front().starts_with(Prompt))
        {
            continue;
        }
        for (std::size_t index = 0; index < block.Lines.size(); ++index)
        {
            const std::string& line = block.Lines[index];
            if (line.starts_with(Prompt))
            {
                examples.push_back({block.FirstLine + index, line.substr(Prompt.size()), {}});
            }
            else
            {
                examples.back().Output += line + "\n";
            }
        }
    }
    return examples;
}

std::vector<std::string> BlocksOf(std::string_view document, std::string_view language)
{
    std::vector<std::string> texts;
    for (const Block& block : Blocks(document))
    {
        if (block.Language == language)
        {
            std::string& text = texts.emplace_back();
            for (const std::string& line : block.Lines)
            {
                text += line + "\n";
            }
        }
    }
    return texts;
}

std::string Normalised(const std::string& output)
{
    std::string text = output;
    for (const Varying& varying : VaryingTexts)
    {
        text = std::regex_replace(text, std::regex(varying.Pattern), varying.Word);
    }
    return text;
}

} // namespace docs
