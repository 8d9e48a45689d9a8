// That the promises of the matrix of faults can be broken.
#include "FaultPromises.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

using namespace tooltest;

namespace
{

constexpr const char* Unread = "tavrine: warning: the pending values could not be read back: gone\n";

FaultOutcome Outcome(const std::string& output, const std::string& errors, const std::string& state)
{
    FaultOutcome outcome;
    outcome.Tool.Status = 0;
    outcome.Tool.Output = output;
    outcome.Tool.Errors = errors;
    outcome.State = state;
    return outcome;
}

/// A command that changes a setting and writes a file, and a fault that it met.
struct Parts
{
    CommandRow Command = {.Name = "any", .Arguments = {"any"}, .FixedCode = 26};
    FaultRow Fault = {"any", At::All, {24}, "gone"};
    FaultOutcome Good;
    FaultOutcome Ran;
    bool Json = false;

    std::string Words() const { return Broken({Command, Fault, Good, Ran, Json}); }
    void End(int status)
    {
        Ran.Tool.Status = status;
        Ran.Tool.Errors = "tavrine: " + std::to_string(status) + " [bmc]: gone\n";
    }
};

bmcsim::AccessRecord Request(const char* method, const char* path)
{
    bmcsim::AccessRecord request;
    request.Method = method;
    request.Path = path;
    return request;
}

/// A run that failed after its change was done, and says so: it breaks no promise.
Parts Failed()
{
    Parts parts;
    parts.Good = Outcome("A: sent, takes effect after a reboot\n", "", "after");
    parts.Good.Requests = {Request("GET", "/Bios"), Request("PATCH", "/Settings")};
    parts.Good.Files = {{"saved.conf", "A=1\n"}, {"out", "A=1\nB=2\n"}};
    parts.Ran = parts.Good;
    parts.Ran.Tool.Output = "A: unknown: gone\n";
    parts.End(24);
    return parts;
}

/// A run that succeeded in spite of its fault.
Parts Succeeded()
{
    Parts parts = Failed();
    parts.Ran = parts.Good;
    return parts;
}

/// A run that breaks one promise alone, and what is said of it; nothing where it keeps all.
struct PromiseRow
{
    const char* Name;
    Parts (*Begin)();
    void (*Change)(Parts&);
    const char* Words;
};

constexpr const char* Crashed = "it crashed, hung or refused its command line";
constexpr const char* Waited = "it waited much longer than its time-out";
constexpr const char* SecretTold = "a secret is told";
constexpr const char* Token = " 0123456789abcdef0123456789abcdef\n";
constexpr const char* OutIsBad = "the file out is half-written, old or left over";

const PromiseRow PromiseRows[] = {
    {"a failure that is told", Failed, [](Parts&) {}, ""},
    {"a success", Succeeded, [](Parts&) {}, ""},

    {"killed", Failed, [](Parts& of) { of.Ran.Tool.Killed = true; }, Crashed},
    {"refused its command line", Failed,
     [](Parts& of)
     {
         of.End(64);
         of.Fault.Codes = {64};
     },
     Crashed},
    {"the highest code", Failed,
     [](Parts& of)
     {
         of.End(63);
         of.Fault.Codes = {63};
     },
     ""},

    {"waited", Failed,
     [](Parts& of)
     {
         of.Fault.Stalls = true;
         of.Ran.Took = std::chrono::milliseconds(20001);
     },
     Waited},
    {"just in time", Failed,
     [](Parts& of)
     {
         of.Fault.Stalls = true;
         of.Ran.Took = std::chrono::seconds(20);
     },
     ""},
    {"many requests that are fast", Failed, [](Parts& of) { of.Ran.Took = std::chrono::seconds(21); }, ""},

    {"a token on standard output", Failed,
     [](Parts& of) { of.Ran.Tool.Output = of.Good.Tool.Output = std::string("A: unknown") + Token; }, SecretTold},
    {"a token on standard error", Failed, [](Parts& of) { of.Ran.Tool.Errors += Token; }, SecretTold},
    {"a token in the log", Failed, [](Parts& of) { of.Ran.Log = Token; }, SecretTold},
    {"a password in the log", Failed, [](Parts& of) { of.Ran.Log = "Quenya-77-secret"; }, SecretTold},
    {"a header in the log", Failed, [](Parts& of) { of.Ran.Log = "Basic YWRtaW46UXVlbnlhLTc3LXNlY3JldA=="; },
     SecretTold},

    {"a code of another fault", Failed, [](Parts& of) { of.End(25); }, "the code is wrong"},
    {"the code of the command", Failed, [](Parts& of) { of.End(26); }, ""},
    {"another code on standard error", Failed, [](Parts& of) { of.Ran.Tool.Errors = "tavrine: 26 [bmc]: gone\n"; },
     "standard error has no line with the code"},

    {"no name", Failed, [](Parts& of) { of.Ran.Tool.Errors = "tavrine: 24 gone\n"; }, "the BMC is not named"},
    {"no cause", Failed, [](Parts& of) { of.Ran.Tool.Errors = "tavrine: 24 [bmc]: failed\n"; },
     "the cause is not told"},

    {"a value that nobody knows", Failed, [](Parts& of) { of.Ran.Tool.Output += "B=1\n"; },
     "shown without being known: B=1"},
    {"less than all", Succeeded, [](Parts& of) { of.Ran.Tool.Output.clear(); }, "a successful run shows less"},

    {"claims success", Succeeded, [](Parts& of) { of.Ran.State = StateBefore(); },
     "it claims success, but the BMC is in another state"},
    {"denies a change", Failed,
     [](Parts& of)
     {
         of.Ran.Tool.Output = "A: not sent\n";
         of.Ran.Tool.Errors += "nothing was sent\n";
     },
     "something was done, and it denies that"},
    {"denies a restart", Failed,
     [](Parts& of)
     {
         of.Ran.Tool.Output = "A: not sent\n";
         of.Ran.Tool.Errors += "it was not done\n";
     },
     "something was done, and it denies that"},
    {"does not know about a part", Failed,
     [](Parts& of) { of.Ran.Tool.Errors += "nothing was sent; whether it was restarted is not known\n"; }, ""},
    {"denies what was not done", Failed,
     [](Parts& of)
     {
         of.Ran.State = StateBefore();
         of.Ran.Tool.Errors += "nothing was sent\n";
     },
     ""},
    {"calls a change refused", Failed, [](Parts& of) { of.Ran.Tool.Output = "A: refused: gone\n"; },
     "something was done, and it calls that refused"},
    {"calls refused what was", Failed,
     [](Parts& of)
     {
         of.Ran.State = StateBefore();
         of.Ran.Tool.Output = "A: refused: gone\n";
     },
     ""},
    {"tells nothing", Failed, [](Parts& of) { of.Ran.Tool.Output.clear(); },
     "something was done, and it does not tell"},
    {"tells nothing where nothing was done", Failed,
     [](Parts& of)
     {
         of.Ran.State = StateBefore();
         of.Ran.Tool.Output.clear();
     },
     ""},
    {"tells what was done", Failed, [](Parts& of) { of.Ran.Tool.Output = of.Good.Tool.Output; }, ""},
    {"is misled by a busy BMC", Failed,
     [](Parts& of)
     {
         of.Fault.Effect = "done busy 0";
         of.Ran.Tool.Output = "A: refused: gone\n";
     },
     ""},

    {"changes twice", Failed, [](Parts& of) { of.Ran.Requests.push_back(Request("PATCH", "/Settings")); },
     "a change was sent twice"},
    {"changes again after a login", Failed,
     [](Parts& of)
     {
         of.Fault.Effect = "status 401";
         of.Ran.Requests.push_back(Request("PATCH", "/Settings"));
     },
     ""},
    {"logs in and reads twice", Failed,
     [](Parts& of)
     {
         of.Ran.Requests.push_back(Request("POST", "/SessionService/Sessions"));
         of.Ran.Requests.push_back(Request("GET", "/Bios"));
     },
     ""},

    {"half of a file", Failed, [](Parts& of) { of.Ran.Files["out"] = "A=1\n"; }, OutIsBad},
    {"an old file after a failure", Failed, [](Parts& of) { of.Ran.Files["out"] = OldOutput; }, ""},
    {"an old file after a success", Succeeded, [](Parts& of) { of.Ran.Files["out"] = OldOutput; }, OutIsBad},
    {"a file too many", Failed, [](Parts& of) { of.Ran.Files["out.tmp"] = "A=1\n"; },
     "the file out.tmp is half-written, old or left over"},
    {"a file too few", Failed, [](Parts& of) { of.Ran.Files.erase("saved.conf"); }, "a file is missing"},
};

/// The same for what a run prints as JSON, but for the end of the line.
struct DocumentRow
{
    const char* Name;
    Parts (*Begin)();
    const char* Document;
    const char* Words;
};

constexpr const char* NoDocument = "standard output is not one JSON document";
constexpr const char* NoMembers = "the JSON document has not its members";
constexpr const char* OtherCode = "the JSON document has another code";
constexpr const char* OtherErrors = "the JSON document's errors are not those of the run";

const DocumentRow DocumentRows[] = {
    {"a failure that is told", Failed, R"({"code":24,"message":"gone","errors":["gone"],"A":"unknown"})", ""},
    {"a success", Succeeded, R"({"code":0,"message":"ok","errors":[],"A":"changed"})", ""},
    {"a success that a restart brings into force", Succeeded, R"({"code":1,"message":"ok","errors":[],"A":"changed"})",
     ""},
    {"no JSON", Failed, "A: unknown: gone", NoDocument},
    {"no object", Failed, "[]", NoDocument},
    {"two documents", Failed, R"({"code":24,"message":"unknown","errors":[1]}{})", NoDocument},
    {"no code", Failed, R"({"message":"unknown","errors":[1]})", NoMembers},
    {"no message", Failed, R"({"code":24,"errors":["unknown"]})", NoMembers},
    {"no errors", Failed, R"({"code":24,"message":"unknown"})", NoMembers},
    {"errors are no list", Failed, R"({"code":24,"message":"unknown","errors":{}})", NoMembers},
    {"another code", Failed, R"({"code":25,"message":"unknown","errors":[1]})", OtherCode},
    {"a failure that is called done", Failed, R"({"code":1,"message":"unknown","errors":[1]})", OtherCode},
    {"a failure without errors", Failed, R"({"code":24,"message":"unknown","errors":[]})", OtherErrors},
    {"a success with errors", Succeeded, R"({"code":0,"message":"ok","errors":[1],"A":"changed"})", OtherErrors},
    {"a value that nobody knows", Failed, R"({"code":24,"message":"unknown","errors":[1],"B":1})",
     "shown without being known: /B: 1"},
    {"calls a change refused", Failed, R"({"code":24,"message":"gone","errors":[1],"A":"refused"})",
     "something was done, and it calls that refused"},
};

} // namespace

TEST(FaultPromises, EachCanBeBroken)
{
    for (const PromiseRow& row : PromiseRows)
    {
        Parts parts = row.Begin();
        row.Change(parts);
        EXPECT_EQ(parts.Words(), row.Words) << row.Name;
    }
}

TEST(FaultPromises, EachCanBeBrokenInJson)
{
    const auto broken = [](const DocumentRow& row, const char* end)
    {
        Parts parts = row.Begin();
        parts.Json = true;
        parts.Good.Tool.Output = R"({"code":0,"message":"ok","errors":[],"A":"changed"})";
        parts.Ran.Tool.Output = std::string(row.Document) + end;
        return parts.Words();
    };
    for (const DocumentRow& row : DocumentRows)
    {
        EXPECT_EQ(broken(row, "\n"), row.Words) << row.Name;
    }
    EXPECT_EQ(broken(DocumentRows[0], ""), NoDocument);
}

TEST(FaultPromises, NoMoreIsClaimedWhereNothingCouldBeReadBack)
{
    struct Row
    {
        const char* Output;
        bool IsKept;
    };
    const Row rows[] = {
        {"A: sent, takes effect after a reboot\n", true},
        {"A: unknown: gone\n", true},
        {"A=1\n", true},
        {"A: in place\n", false},
        {"B: sent, takes effect after a reboot\n", false},
        {"B: already 1, in force\n", false},
        {"B: changed, takes effect after a reboot\n", false},
    };
    for (const Row& row : rows)
    {
        Parts parts;
        parts.Good = Outcome("A: sent, takes effect after a reboot\n", "", "after");
        parts.Ran = Outcome(row.Output, Unread, "after");
        const std::string words = parts.Words();
        EXPECT_EQ(words.empty(), row.IsKept) << row.Output;
        EXPECT_TRUE(row.IsKept || words.starts_with("shown without being known: ")) << words;
    }
}

TEST(FaultPromises, AFileIsWholeAlsoWhereNothingCouldBeReadBack)
{
    Parts parts;
    parts.Good = Outcome("", "", "after");
    parts.Good.Files["out"] = "A=Disabled\nB=Disabled\nC=1\n";
    const auto broken = [&](const std::string& content, const char* errors)
    {
        parts.Ran = Outcome("", errors, "after");
        parts.Ran.Files["out"] = content;
        return parts.Words();
    };
    EXPECT_EQ(broken(parts.Good.Files["out"], ""), "");
    EXPECT_EQ(broken("A=Disabled\nB=Enabled\nC=1\n", Unread), "");
    EXPECT_EQ(broken("A=Disabled\nB=Enabled\nC=1\n", ""), OutIsBad);
    EXPECT_EQ(broken("A=Disabled\nB=Enabled\nC=2\n", Unread), OutIsBad);
    EXPECT_EQ(broken("A=Disabled\nB=Enabled\n", Unread), OutIsBad);
    EXPECT_EQ(broken(OldOutput, Unread), OutIsBad);
}
