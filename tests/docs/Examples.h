#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace docs
{

/// A command of a document and what it printed, on both streams.
struct Example
{
    /// Line of the document, from 1.
    std::size_t Line = 0;
    /// As it is typed into a shell.
    std::string Command;
    std::string Output;
};

/// The commands of all fenced blocks that begin with "$ "; what stands below a command is
/// its output, to the next "$ " or the end of the block.
std::vector<Example> ExamplesOf(std::string_view document);

/// The content of the fenced blocks of one language.
std::vector<std::string> BlocksOf(std::string_view document, std::string_view language);

/// Output without what is another one at each run.
std::string Normalised(const std::string& output);

} // namespace docs
