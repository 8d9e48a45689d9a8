#include "RequestEnd.h"

#include <gtest/gtest.h>

using namespace Tavrine::Tool;

TEST(RequestEnd, IsTold)
{
    struct Row
    {
        int Code;
        const char* Message;
        RequestEnd End;
    };
    const Row rows[] = {
        {0, "", RequestEnd::Accepted},
        {1, "", RequestEnd::Accepted},
        {4, "", RequestEnd::Accepted},
        // The words go before the code.
        {24, "h: the connection was refused; nothing was sent.", RequestEnd::NotSent},
        {18, "PATCH /x y was not sent to h: the path is unusable.", RequestEnd::NotSent},
        {24, "h: no login; the change was not done.", RequestEnd::TurnedAway},
        {24, "h: it refuses the user name or the password (401 Unauthorized).", RequestEnd::TurnedAway},
        {24, "h: the account has not the privilege for PATCH /x (403 Forbidden).", RequestEnd::TurnedAway},
        {24, "h: time-out; whether the change was done is not known.", RequestEnd::Unknown},
        {27, "PATCH /x: the answer of h (200); whether the change was done is not known.", RequestEnd::Unknown},
        {32, "PATCH /x failed inside h (500); whether the change was done is not known.", RequestEnd::Unknown},
        {33, "h is not ready; whether the change was done is not known.", RequestEnd::Unknown},
        {26, "h: gone; whether the change was done is not known.", RequestEnd::Unknown},
        // Answers that leave nothing open.
        {33, "h is not ready (503 Service Unavailable).", RequestEnd::TurnedAway},
        {32, "PATCH /x failed inside h (501 Not Implemented).", RequestEnd::TurnedAway},
        {32, "PATCH /x failed inside h (505).", RequestEnd::TurnedAway},
        {18, "PATCH /x was refused by h (400 Bad Request).", RequestEnd::Refused},
        {18, "POST /x was refused by h (400 Bad Request).", RequestEnd::Refused},
        {28, "POST /x was refused by h (400 Bad Request).", RequestEnd::Refused},
        {28, "The action failed.", RequestEnd::Refused},
        // What the BMC says is not what the library says.
        {18, "PATCH /x was refused by h (400 Bad Request): <<Sorry; nothing was sent.>>", RequestEnd::Refused},
        {18, "PATCH /x was refused by h (200): <<See (401 Unauthorized)>>", RequestEnd::Refused},
        {33, "h is not ready (503): <<whether the change was done is not known>>", RequestEnd::TurnedAway},
        {32, "PATCH /x failed inside h (500): <<nothing was sent>>; whether the change was done is not known.",
         RequestEnd::Unknown},
        {18, "PATCH /x was refused by h (400): see .GetProtectedAttributes there.", RequestEnd::Refused},
        {28, "POST /x was refused by h (400): see .GetProtectedAttributes there.", RequestEnd::Refused},
        // Reads before the change.
        {24, "h: time-out, no whole answer came within 30 s.", RequestEnd::NotSent},
        {26, "GET /x was refused by h (404 Not Found).", RequestEnd::NotSent},
        {27, "GET /x from h: the answer is no JSON.", RequestEnd::NotSent},
        {32, "GET /x failed inside h (500 Internal Server Error).", RequestEnd::NotSent},
        {32, "BMC internal error.", RequestEnd::NotSent},
        {13, "", RequestEnd::NotSent},
        {28, "POST /a/ZorvanBios.GetProtectedAttributes was refused by h (400 Bad Request).", RequestEnd::NotSent},
        {32, "POST /a/ZorvanBios.GetProtectedAttributes failed inside h (500).", RequestEnd::NotSent},
        {27, "POST /a/ZorvanBios.GetProtectedAttributes from h: the answer is no JSON.", RequestEnd::NotSent},
        // The check before it.
        {7, "", RequestEnd::Unfit},
        {10, "The new value is invalid.", RequestEnd::Unfit},
        {11, "", RequestEnd::Unfit},
        {16, "", RequestEnd::Unfit},
        {18, "The setting A is read-only.", RequestEnd::Unfit},
        {20, "Unable to find the setting A", RequestEnd::Unfit},
        {21, "The setting A has no default value.", RequestEnd::Unfit},
        {34, "", RequestEnd::Unfit},
        // Nobody tells.
        {27, "PATCH /x: something new.", RequestEnd::Unknown},
        {32, "PATCH /x failed inside h (500 Internal Server Error).", RequestEnd::Unknown},
        {99, "", RequestEnd::Unknown},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(static_cast<int>(EndOf({row.Code, row.Message, {}, {}})), static_cast<int>(row.End))
            << row.Code << " " << row.Message;
    }
}
