#include "PendingValues.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "SetFront.h"

using namespace Tavrine;
using namespace Tavrine::Tool;
using namespace tooltest;

TEST(PendingValues, ASettingIsKnownAsFarAsItCanBeRead)
{
    using Texts = std::map<std::string, std::string>;
    struct Case
    {
        const char* What;
        RedfishConfigResult Compared;
        SettingCompareMap Waits;
        RedfishConfigResult Read;
        Texts Effective;
        Texts Pending;
    };
    const SettingCompareMap waits = {{"BIOS.Seal", {"old", "new"}}};
    const Case cases[] = {
        {"it waits", {0, "", ""}, waits, {0, "", ""}, {{"Seal", "old"}}, {{"Seal", "new"}}},
        {"nothing waits", {2, "", ""}, {}, {0, "", ""}, {{"Seal", "text"}}, {}},
        {"nothing waits, and its value is lost", {2, "", ""}, {}, {26, "", ""}, {}, {}},
        {"what waits is lost", {26, "", ""}, {}, {0, "", ""}, {}, {}},
        {"half of what waits is lost", {24, "", ""}, waits, {0, "", ""}, {}, {}},
    };
    for (const Case& one : cases)
    {
        ShownFront front;
        front.Result = one.Compared;
        front.Compared = one.Waits;
        front.Single.insert({"Seal", {one.Read, {{"BIOS.Seal", "text"}}}});
        PendingValues values;
        AddPendingValue(front, "Seal", values);
        EXPECT_EQ(Texts(values.Effective.begin(), values.Effective.end()), one.Effective) << one.What;
        EXPECT_EQ(Texts(values.Pending.begin(), values.Pending.end()), one.Pending) << one.What;
    }
}
