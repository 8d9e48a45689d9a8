#pragma once

#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "RedfishConfigResult.h"

namespace Tavrine::Tool
{

/// Exit status of a command line that cannot be understood.
inline constexpr int StatusUsage = 64;

/// Codes of ResultMessageTable that the tool builds itself or asks for. 1 has two meanings: a change that was taken
/// waits for a reboot, and one that was to join others is not needed.
inline constexpr int CodeSucceed = 0;
inline constexpr int CodeReboot = 1;
inline constexpr int CodeAlready = 1;
inline constexpr int CodeNothingPending = 2;
inline constexpr int CodePassword = 4;
inline constexpr int CodePartly = 7;
inline constexpr int CodeNoValue = 8;
inline constexpr int CodeInvalidValue = 10;
inline constexpr int CodeNotSupported = 11;
inline constexpr int CodeInternal = 13;
inline constexpr int CodeExternal = 15;
inline constexpr int CodeParameter = 16;
inline constexpr int CodeConfiguration = 17;
inline constexpr int CodeRefused = 18;
inline constexpr int CodeNotFound = 20;
inline constexpr int CodeNoDefault = 21;
inline constexpr int CodeConnection = 24;
inline constexpr int CodeQuery = 26;
inline constexpr int CodeUnusable = 27;
inline constexpr int CodeActionFailed = 28;
inline constexpr int CodeBmcFailed = 32;
inline constexpr int CodeNotReady = 33;
inline constexpr int CodeHidden = 34;
inline constexpr int CodeOpenFile = 38;

/// One thing that went wrong.
struct Failure
{
    int Code = CodeSucceed;
    std::string Message;
    /// Shown name of the setting; empty where the failure is about no single one.
    std::string Setting = {};
    /// What is known beyond the message; often empty.
    std::string Cause = {};
};

/// What a command has to say, before it is written anywhere.
struct Answer
{
    int Code = CodeSucceed;
    std::string Message;
    std::vector<Failure> Errors;
    /// Lines for standard error that are no failures: warnings and hints.
    std::vector<std::string> Notes;
    /// The text form. A command fills this or Data, as Options::Json asks.
    std::string Text;
    /// The value of the command's own member in the JSON document.
    boost::json::object Data;
    /// Further members of that document.
    boost::json::object More;
    /// It tells what became of changes: where standard output is lost, standard error gets it.
    bool OfChanges = false;
};

/// The codes that count as success: 0, 1, 3, 4 and 5.
bool IsSuccess(int code);

/// Whether nobody needs to be asked after a failure of this code.
bool IsUnreachable(int code);

/// The same, or the BMC itself has failed: no failure is about single settings alone.
bool IsOfTheBmc(int code);

/// Exit status for a result's code: 0 for success, else the code.
int ExitStatus(int code);

/// The standard text of a code, or a plain word where it has none.
std::string StandardText(int code);

/// A failure from a library result; a bare one gets the standard text of its code,
/// with the setting's name in front where there is one.
Failure FailureOf(RedfishConfigResult result, const std::string& setting = {});

/// Adds a failure. The first one with a code that is no success gives the answer its
/// code and message, unless a later one tells that the BMC cannot be used, fails or is not ready
/// where that one is about less.
void AddFailure(Answer& answer, Failure failure);

/// "CODE text" of each failure, with "cause: text" behind it where it has a cause, then the notes of the answer, each
/// behind "tavrine: " on a line of its own; a line that was there already is left out.
std::string StderrLines(const Answer& answer);

} // namespace Tavrine::Tool
