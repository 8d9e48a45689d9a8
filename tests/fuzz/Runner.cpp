// Runs one target without libFuzzer, so that every build has it and every test run takes
// the same road: TARGET_fuzz RUNS FILE|FOLDER|DICTIONARY.dict ...
// All files named, all files of the folders named, then RUNS inputs made from them by
// changes that follow from a fixed seed. A name that leads to no file is a failure.
#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "Oracle.h"

extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace
{

namespace fs = std::filesystem;
using Inputs = std::vector<std::string>;

constexpr std::uint64_t Seed = 20240229;
constexpr std::size_t LargestInput = 8192;

/// What is being run, and where it is kept should it be the last.
std::string current;       // NOLINT: a signal handler has no other way to it
std::string crashFileName; // NOLINT

void KeepInput()
{
    const int file = open(crashFileName.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0 || write(file, current.data(), current.size()) != static_cast<ssize_t>(current.size()))
    {
        return;
    }
    close(file);
    constexpr char word[] = "The input is kept in the file ";
    if (write(STDERR_FILENO, word, sizeof word - 1) < 0 ||
        write(STDERR_FILENO, crashFileName.data(), crashFileName.size()) < 0 || write(STDERR_FILENO, "\n", 1) < 0)
    {
        return;
    }
}

void OnAbort(int)
{
    KeepInput();
    std::signal(SIGABRT, SIG_DFL);
    std::abort();
}

void WatchForTheEnd(const char* program)
{
    crashFileName = (fs::current_path() / ("crash-" + fs::path(program).filename().string())).string();
    std::signal(SIGABRT, OnAbort);
    if (__sanitizer_set_death_callback != nullptr)
    {
        __sanitizer_set_death_callback(KeepInput);
    }
}

void Run(const std::string& input)
{
    current = input;
    // A copy of the exact size, so that a sanitizer sees a read past its end.
    const std::vector<std::uint8_t> bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

std::string ReadFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file || !fs::is_regular_file(path))
    {
        throw std::runtime_error(path.string() + ": no such file");
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void AddFolder(const fs::path& folder, Inputs& inputs)
{
    std::set<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    {
        files.insert(entry.path());
    }
    if (files.empty())
    {
        throw std::runtime_error(folder.string() + ": no files");
    }
    std::transform(files.begin(), files.end(), std::back_inserter(inputs), ReadFile);
}

/// The words of a dictionary as libFuzzer writes it: one in double quotes a line, with
/// \", \\ and \xNN.
void AddWords(const fs::path& path, Inputs& words)
{
    std::ifstream file(path);
    if (!file)
    {
        throw std::runtime_error(path.string() + ": no such file");
    }
    for (std::string line; std::getline(file, line);)
    {
        if (line.empty() || line.front() != '"')
        {
            continue;
        }
        std::string word;
        for (std::size_t i = 1; i + 1 < line.size(); ++i)
        {
            if (line[i] == '\\' && line[i + 1] == 'x')
            {
                word += static_cast<char>(std::stoi(line.substr(i + 2, 2), nullptr, 16));
                i += 3;
                continue;
            }
            i += line[i] == '\\' ? 1U : 0U;
            word += line[i];
        }
        words.push_back(word);
    }
}

/// Makes inputs from others. std::mt19937_64 gives the same numbers everywhere; the
/// distributions of the standard library need not, so none is used.
class Changer
{
  public:
    Changer(const Inputs& inputs, const Inputs& words) : m_Inputs(inputs), m_Words(words) {}

    std::string Next()
    {
        std::string text = m_Inputs[Below(m_Inputs.size())];
        for (std::size_t left = 1 + Below(6); left > 0; --left)
        {
            ChangeOnce(text);
        }
        text.resize(std::min(text.size(), LargestInput));
        return text;
    }

  private:
    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(m_Random() % bound); }

    void ChangeOnce(std::string& text)
    {
        static constexpr void (Changer::*changes[])(std::string&, std::size_t) = {
            &Changer::FlipBit, &Changer::SetByte, &Changer::Erase,      &Changer::Repeat, &Changer::AddWord,
            &Changer::AddWord, &Changer::Splice,  &Changer::MoveNumber, &Changer::AddWord};
        (this->*changes[Below(std::size(changes))])(text, Below(text.size() + 1));
    }

    void FlipBit(std::string& text, std::size_t at)
    {
        if (at < text.size())
        {
            text[at] = static_cast<char>(static_cast<unsigned char>(text[at]) ^ (1U << Below(8)));
        }
    }
    void SetByte(std::string& text, std::size_t at)
    {
        if (at < text.size())
        {
            text[at] = static_cast<char>(Below(256));
        }
    }
    void Erase(std::string& text, std::size_t at) { text.erase(at, 1 + Below(16)); }
    void Repeat(std::string& text, std::size_t at)
    {
        const std::string piece = text.substr(at, 1 + Below(64));
        for (std::size_t times = 1 + Below(8); times > 0; --times)
        {
            text.insert(at, piece);
        }
    }
    void AddWord(std::string& text, std::size_t at)
    {
        if (!m_Words.empty())
        {
            text.replace(at, Below(3), m_Words[Below(m_Words.size())]);
        }
    }
    void Splice(std::string& text, std::size_t at)
    {
        const std::string& other = m_Inputs[Below(m_Inputs.size())];
        text.insert(at, other.substr(Below(other.size() + 1), 1 + Below(128)));
    }
    void MoveNumber(std::string& text, std::size_t at)
    {
        static constexpr const char* numbers[] = {"0",
                                                  "-1",
                                                  "9223372036854775807",
                                                  "-9223372036854775808",
                                                  "18446744073709551615",
                                                  "9223372036854775808",
                                                  "1e9",
                                                  "0.5",
                                                  "65536",
                                                  "-0"};
        const std::size_t digit = text.find_first_of("0123456789", at);
        if (digit != std::string::npos)
        {
            const std::size_t end = text.find_first_not_of("0123456789", digit);
            text.replace(digit, end == std::string::npos ? end : end - digit, numbers[Below(std::size(numbers))]);
        }
    }

    const Inputs& m_Inputs;
    const Inputs& m_Words;
    std::mt19937_64 m_Random{Seed};
};

int RunAll(int count, char** arguments)
{
    std::size_t runs = 0;
    const std::string number = count > 1 ? arguments[1] : "";
    const char* const end = number.data() + number.size();
    if (const auto [stop, fault] = std::from_chars(number.data(), end, runs);
        fault != std::errc() || stop != end || count < 3)
    {
        throw std::runtime_error("wanted: RUNS FILE|FOLDER|DICTIONARY.dict ...");
    }
    Inputs inputs;
    Inputs words;
    for (int i = 2; i < count; ++i)
    {
        const fs::path path = arguments[i];
        if (path.extension() == ".dict")
        {
            AddWords(path, words);
        }
        else if (fs::is_directory(path))
        {
            AddFolder(path, inputs);
        }
        else
        {
            inputs.push_back(ReadFile(path));
        }
    }
    if (inputs.empty())
    {
        throw std::runtime_error("no input is named");
    }
    Run("");
    std::for_each(inputs.begin(), inputs.end(), Run);
    Changer changer(inputs, words);
    for (std::size_t run = 0; run < runs; ++run)
    {
        Run(changer.Next());
    }
    std::printf("%zu files and %zu inputs made from them\n", inputs.size(), runs);
    return 0;
}

} // namespace

int main(int count, char** arguments)
{
    try
    {
        WatchForTheEnd(arguments[0]);
        return RunAll(count, arguments);
    }
    catch (const std::exception& fault)
    {
        KeepInput();
        std::fprintf(stderr, "%s: %s\n", arguments[0], fault.what());
        return 1;
    }
}
