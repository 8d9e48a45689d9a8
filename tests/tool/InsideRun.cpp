#include "InsideRun.h"

#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

#include "Answer.h"
#include "Bmc.h"
#include "Command.h"
#include "JsonOutput.h"
#include "Options.h"
#include "Program.h"

namespace tooltest
{
namespace
{

using namespace Tavrine::Tool;

/// Standard input for as long as this lives.
class ScopedInput
{
  public:
    explicit ScopedInput(const std::string& text) : m_Former(dup(STDIN_FILENO))
    {
        const int memory = memfd_create("input", MFD_CLOEXEC);
        const bool written = write(memory, text.data(), text.size()) == static_cast<ssize_t>(text.size());
        if (m_Former < 0 || !written || lseek(memory, 0, SEEK_SET) != 0 || dup2(memory, STDIN_FILENO) < 0)
        {
            throw std::runtime_error("standard input cannot be replaced");
        }
        close(memory);
    }
    ScopedInput(const ScopedInput&) = delete;
    ScopedInput& operator=(const ScopedInput&) = delete;
    ~ScopedInput()
    {
        dup2(m_Former, STDIN_FILENO);
        close(m_Former);
    }

  private:
    int m_Former;
};

} // namespace

Finished InsideRun::operator()(const std::vector<std::string>& arguments, const std::string& input) const
{
    std::vector<std::string> words = {"--bmc", m_Url, "--user", "admin", "--retries", "0", "--no-cache"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const ScopedInput standardInput(input);
    // For each run anew, since the tool takes it out of its environment.
    const testdata::ScopedEnvironment password("TAVRINE_PASSWORD", "password");
    const ParsedCommandLine parsed =
        ParseCommandLine(words, Commands(), [](const char* name) { return std::getenv(name); });
    Finished finished;
    if (!parsed.Request)
    {
        finished.Status = parsed.Status;
        finished.Errors = parsed.Text;
        return finished;
    }
    std::unique_ptr<Bmc> bmc;
    const Answer answer = Perform(
        *parsed.Request, [&](const std::string& lines) { finished.Errors += lines; }, bmc);
    finished.Status = ExitStatus(answer.Code);
    finished.Output = parsed.Request->Json ? JsonDocument(answer, parsed.Request->Chosen->JsonMember) : answer.Text;
    finished.Errors += StderrLines(answer);
    return finished;
}

InsideBmc::InsideBmc(const std::string& machineDir)
{
    bmcsim::SimulatorOptions options;
    options.MachineDir = machineDir;
    Start(std::move(options));
}

InsideBmc::InsideBmc(unsigned int attributes)
{
    bmcsim::SimulatorOptions options;
    options.Attributes = attributes;
    Start(std::move(options));
}

void InsideBmc::Start(bmcsim::SimulatorOptions options)
{
    options.PlainHttp = true;
    std::string error;
    m_Simulator = bmcsim::BmcSimulator::Start(options, error);
    if (m_Simulator == nullptr)
    {
        throw std::runtime_error("the simulated BMC did not start: " + error);
    }
}

} // namespace tooltest
