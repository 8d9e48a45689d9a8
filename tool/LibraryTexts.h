#pragma once

#include <array>
#include <string_view>

/// Texts of the library by which the tool recognises what no code tells. How far a change came has words of its own
/// (ChangeDelivery.h).
namespace Tavrine::Tool::LibraryTexts
{

/// The level of the lines of its log below.
inline constexpr unsigned int FailureLevel = 1;
/// Behind these a line quotes what has happened.
inline constexpr std::array<std::string_view, 2> Introductions = {"though: ", "error: "};
/// Begins a line that tells of no failure: a machine's configuration hides no settings.
inline constexpr std::string_view NoKeywordsLine = "Failed to get the all keywords";
/// Begins the line of pending values that could not be read. A BMC that has none gives no such line.
inline constexpr std::string_view UnreadLine = "Failed to get pending values map";
/// In that line, in front of the result code.
inline constexpr std::string_view UnreadCode = "with ret=";
/// Begins the line that follows where the values in force stand in for them.
inline constexpr std::string_view TakenLine = "Query pending value error, use effective value directly.";

/// Stands in a refusal by the BMC, whether the library words it or the tool, and in none that was judged before.
inline constexpr std::string_view OfBmc = "the BMC";

/// Stands in a refusal of a protected setting that must not be reached.
inline constexpr std::string_view WithheldWords = "fails since it is hidden";

/// A message about the answer to a change begins with its request.
inline constexpr std::array<std::string_view, 2> ChangeCalls = {"PATCH ", "POST "};
/// Ends the path of the action that reads protected settings, which is no change.
inline constexpr std::string_view ReadAction = ".GetProtectedAttributes ";
/// A part of the path of the OEM actions for protected settings.
inline constexpr std::string_view OemAction = "/ZorvanBios.";
/// Statuses of an answer, as messages have them, by which a service does not know an action.
inline constexpr std::array<std::string_view, 3> UnknownAction = {"(404 ", "(405 ", "(501 "};
/// Of its failures those that tell that it does not know how to do what it was asked for, and has done nothing. The
/// second has no words behind it.
inline constexpr std::array<std::string_view, 2> CannotDo = {"(501 ", "(505)"};

} // namespace Tavrine::Tool::LibraryTexts
