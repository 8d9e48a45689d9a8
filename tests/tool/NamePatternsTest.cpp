#include "NamePatterns.h"

#include <gtest/gtest.h>

using namespace Tavrine::Tool;

TEST(NamePatterns, PlainNamesAreNone)
{
    for (const char* name : {"", "ProcTurbo", "BIOS.ProcTurbo", "A-B_1", "{a,b}", "~", "a b", "!x", "x]"})
    {
        EXPECT_FALSE(IsPattern(name)) << name;
    }
    for (const char* name : {"*", "Proc*", "P?oc", "[PM]*", "BIOS.*", "\\*"})
    {
        EXPECT_TRUE(IsPattern(name)) << name;
    }
}

TEST(NamePatterns, AreHeldAgainstBareAndShownNames)
{
    struct Row
    {
        const char* Pattern;
        const char* Name;
        bool Matches;
    };
    const Row rows[] = {
        {"Proc*", "ProcTurbo", true},
        {"Proc*", "Proc", true},
        {"Proc*", "MyProc", false},
        {"*Turbo", "ProcTurbo", true},
        {"proc*", "ProcTurbo", false},
        {"P??c*", "ProcTurbo", true},
        {"[MP]*", "ProcTurbo", true},
        {"[!MP]*", "ProcTurbo", false},
        {"*", "Anything", true},
        {"One.Proc*", "ProcTurbo", true},
        {"two.Proc*", "ProcTurbo", true},
        {"One.*", "Anything", true},
        {"*.Proc*", "ProcTurbo", true},
        {"O?e.Proc*", "ProcTurbo", true},
        {"T[w]o.Proc*", "ProcTurbo", true},
        {"O*", "ProcTurbo", false},
        {"O*", "Other", true},
        {"Thr*.Proc*", "ProcTurbo", false},
        {"Slot*.x", "Slot1/Port.x", true},
        {"Slot*", "Slot1/Port", true},
        {"\\*", "*", true},
        {"\\*", "Proc", false},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(NamePattern(row.Pattern, {"One", "Two"}).Matches(row.Name), row.Matches)
            << row.Pattern << " " << row.Name;
    }
}

TEST(NamePatterns, OneWithoutAMatchIsNamed)
{
    const Failure failure = NothingMatches("Zz*");
    EXPECT_EQ(failure.Code, 20);
    EXPECT_EQ(failure.Setting, "Zz*");
    EXPECT_EQ(failure.Message, "Unable to find a setting that matches Zz*");
}
