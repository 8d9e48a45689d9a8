#include "Program.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Bmc.h"
#include "ChangeDelivery.h"
#include "Command.h"
#include "GlobalConfig.h"
#include "Heap.h"
#include "JsonOutput.h"
#include "LibraryTexts.h"
#include "Logging.h"
#include "Options.h"
#include "PendingFallback.h"
#include "Progress.h"
#include "SettingNames.h"
#include "Signals.h"
#include "StandardStreams.h"

namespace Tavrine::Tool
{
namespace
{

constexpr int SignalStatus = 128;

/// The file that the log goes to, for as long as this lives.
class LogFile
{
  public:
    LogFile() = default;
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;
    ~LogFile()
    {
        if (m_Sink != 0)
        {
            Logging::RemoveSink(m_Sink);
        }
    }

    std::optional<Failure> Open(const std::string& path, unsigned int level)
    {
        std::string error;
        m_Sink = Logging::AddFileSink(path, level, error);
        return m_Sink != 0 ? std::nullopt
                           : std::optional(Failure{CodeOpenFile, "Unable to open the log file: " + error});
    }

    /// Empty, or what it lacks.
    std::string Trouble() const { return Logging::Trouble(m_Sink); }

  private:
    Logging::SinkId m_Sink = 0;
};

Answer AnswerWith(Failure failure)
{
    Answer answer;
    AddFailure(answer, std::move(failure));
    return answer;
}

/// A code of failures that come of what the BMC has answered.
struct AnsweredCode
{
    int Code;
    /// A file may have stood in for the answer.
    bool MayBeFile;
    /// What was judged here has the code, too: only the words tell what the BMC did.
    bool NeedsWords;
};

constexpr std::array AnsweredCodes = {
    AnsweredCode{CodeQuery, true, false},         AnsweredCode{CodeUnusable, true, false},
    AnsweredCode{CodeActionFailed, false, false}, AnsweredCode{CodeBmcFailed, false, false},
    AnsweredCode{CodeRefused, false, true},
};

/// The library calls a protected setting hidden where it must not be reached.
void HintAtProtection(Answer& answer, const Options& options)
{
    const bool withheld = std::ranges::any_of(
        answer.Errors,
        [](const Failure& failure) {
            return failure.Code == CodeHidden && failure.Message.find(LibraryTexts::WithheldWords) != std::string::npos;
        });
    if (withheld && options.SystemType == SystemTypeUefi && !options.Protected)
    {
        answer.Notes.emplace_back("hint: protected settings need --protected");
    }
}

/// Failures of answers tell which resource was wrong, but not whose it was. One line is enough that names the
/// machine, and the file that stood in for answers. What was judged here (a setting that is read-only, a time that
/// has passed) came of no answer alone, and a connection that failed tells where.
void NameSource(Answer& answer, const Options& options, const std::string& bmc)
{
    const auto* const kind = std::ranges::find(AnsweredCodes, answer.Code, &AnsweredCode::Code);
    if (kind == AnsweredCodes.end())
    {
        return;
    }
    const std::string& file = options.DebugConfigFile;
    const bool mayBeFile = kind->MayBeFile && !file.empty();
    if (options.Simulate && !mayBeFile)
    {
        return;
    }
    const auto namesSource = [&](const Failure& failure)
    {
        const std::string text = failure.Message + failure.Cause;
        return text.find(bmc) != std::string::npos || (mayBeFile && text.find(file) != std::string::npos);
    };
    const auto tellsOfIt = [&](const Failure& failure)
    {
        return failure.Code == answer.Code &&
               (!kind->NeedsWords || failure.Message.find(LibraryTexts::OfBmc) != std::string::npos);
    };
    const auto first = std::ranges::find_if(answer.Errors, tellsOfIt);
    if (first == answer.Errors.end() || std::ranges::any_of(answer.Errors, namesSource))
    {
        return;
    }
    const std::string source = mayBeFile ? file + " stands in for answers of " + bmc : bmc;
    first->Cause = !first->Cause.empty() ? source + ": " + first->Cause
                   : mayBeFile           ? source
                                         : "this came of what " + bmc + " answered";
}

Answer AskBmc(const Options& options, const std::function<void(const std::string&)>& warn, Bmc& bmc)
{
    Answer before;
    for (const std::string& line : GlobalConfig::Unread({HiddenKeywordsItem}, {LegacyNamesTable}))
    {
        before.Notes.push_back("warning: " + line);
    }
    for (std::string& warning : bmc.Warnings())
    {
        before.Notes.push_back(std::move(warning));
    }
    // Before the password is asked for.
    warn(StderrLines(before));
    std::optional<Failure> failure = bmc.Prepare();
    Answer answer;
    if (!failure)
    {
        const Progress progress("reading from " + bmc.Name() + " …");
        failure = bmc.OpenSession(answer.Notes);
        if (!failure)
        {
            const PendingFallback fallback;
            answer = options.Chosen->Run(options, bmc);
            if (auto warning = fallback.Warning())
            {
                answer.Notes.push_back(std::move(*warning));
            }
        }
    }
    if (failure)
    {
        AddFailure(answer, std::move(*failure));
    }
    NameSource(answer, options, bmc.Name());
    HintAtProtection(answer, options);
    bmc.Close(answer.Notes);
    return answer;
}

/// A stopped run has one failure to tell, not those that the stop brought about.
void TellStop(Answer& answer)
{
    if (const int signal = StopSignal(); signal != 0)
    {
        std::string message = std::string("Stopped by a signal: ") + strsignal(signal);
        if (std::ranges::any_of(answer.Errors,
                                [](const Failure& failure) { return DeliveryIn(failure.Message) == Delivery::Sent; }))
        {
            message.append("; ").append(DeliveryWords::OutcomeUnknown);
        }
        answer.Code = CodeSucceed;
        answer.Errors.clear();
        AddFailure(answer, {CodeConnection, std::move(message)});
    }
}

int Tell(Answer answer, const Options& options)
{
    TellStop(answer);
    const std::string output = options.Json ? JsonDocument(answer, options.Chosen->JsonMember) : answer.Text;
    WriteError(StderrLines(answer));
    const std::string error = WriteOutput(output);
    const bool isStopped = StopSignal() != 0;
    if (!error.empty() && (answer.OfChanges || !isStopped))
    {
        WriteError(StderrLines(AnswerWith({CodeExternal, "Unable to write to standard output: " + error})));
        WriteError(answer.OfChanges ? output : "");
    }
    const int code = error.empty() || !IsSuccess(answer.Code) ? answer.Code : CodeExternal;
    return isStopped ? SignalStatus + StopSignal() : ExitStatus(code);
}

int TellWithoutRun(const ParsedCommandLine& parsed)
{
    if (parsed.Status != 0)
    {
        WriteError(parsed.Text);
        return parsed.Status;
    }
    const std::string error = WriteOutput(parsed.Text);
    if (error.empty())
    {
        return 0;
    }
    WriteError(StderrLines(AnswerWith({CodeExternal, "Unable to write to standard output: " + error})));
    return CodeExternal;
}

} // namespace

Answer Perform(const Options& options, const std::function<void(const std::string&)>& warn, std::unique_ptr<Bmc>& bmc)
{
    if (const std::string error = GlobalConfig::LoadError(); !error.empty())
    {
        return AnswerWith({CodeConfiguration, StandardText(CodeConfiguration) + ": " + error});
    }
    LogFile log;
    if (!options.LogFile.empty())
    {
        if (auto failure = log.Open(options.LogFile, options.LogLevel))
        {
            return AnswerWith(std::move(*failure));
        }
    }
    bmc = std::make_unique<Bmc>(options);
    try
    {
        Answer answer = AskBmc(options, warn, *bmc);
        if (const std::string trouble = log.Trouble(); !trouble.empty())
        {
            answer.Notes.push_back("warning: " + options.LogFile + ": " + trouble);
        }
        return answer;
    }
    catch (...)
    {
        bmc.reset(); // closed while the log is open
        throw;
    }
}

int RunProgram(int argc, char** argv)
{
    ReserveStandardStreams();
    InstallStopSignals();
    const ParsedCommandLine parsed = ParseCommandLine({argv + std::min(argc, 1), argv + argc}, Commands(),
                                                      [](const char* name) { return std::getenv(name); });
    if (!parsed.Request)
    {
        return TellWithoutRun(parsed);
    }
    ReserveHeap();
    // Not destroyed once it is closed, which has ended its connection and its simulator: to take a model of
    // thousands of settings apart costs some percent of a run, and with the process it all goes at once.
    static auto* const bmc = new std::unique_ptr<Bmc>();
    Answer answer;
    try
    {
        answer = Perform(*parsed.Request, WriteError, *bmc);
    }
    catch (const std::exception& error)
    {
        answer = AnswerWith({CodeInternal, std::string("Internal error: ") + error.what()});
    }
    return Tell(std::move(answer), *parsed.Request);
}

} // namespace Tavrine::Tool
