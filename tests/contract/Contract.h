#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "Doubles.h"
#include "RedfishConfigResult.h"

/// Prints code, message and setting of a result that does not match.
inline void PrintTo(const RedfishConfigResult& result, std::ostream* out)
{
    RedfishConfigResult copy = result;
    *out << "{" << copy.ErrorCode() << ", \"" << copy.ErrorMsg() << "\", \"" << copy.ErrorSetting() << "\"}";
}

namespace doubles
{

inline void PrintTo(const LogLine& line, std::ostream* out) { *out << line.Level << ": \"" << line.Text << '"'; }

inline void PrintTo(const RestCall& call, std::ostream* out)
{
    *out << call.Verb << " " << call.Url << " body=" << call.Body << " flag=" << call.Flag
         << " timeout=" << call.Timeout;
    for (const auto& [name, value] : call.Headers)
    {
        *out << " " << name << ": " << value;
    }
}

} // namespace doubles

/// The result has exactly this code, message and setting.
MATCHER_P3(IsResult, code, message, setting, "")
{
    RedfishConfigResult copy = arg;
    return copy.ErrorCode() == code && copy.ErrorMsg() == std::string(message) &&
           copy.ErrorSetting() == std::string(setting);
}

/// The result has this code and two empty texts.
inline auto IsBare(int code) { return IsResult(code, "", ""); }

/// Empties the world before each test.
class ContractTest : public testing::Test
{
  protected:
    ContractTest() { doubles::ResetWorld(); }

    doubles::World& world = doubles::TheWorld();
};
