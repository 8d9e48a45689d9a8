#pragma once

#include "BmcSimulator.h"
#include "TemporaryFolder.h"

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <memory>
#include <string>

namespace bmctest
{

namespace json = boost::json;

/// The document of an answer or a file; null where it is no JSON.
json::value Parse(const std::string& text);
json::value ParseFile(const std::string& path);
/// What a JSON pointer leads to; null where it leads nowhere.
json::value At(const json::value& document, const std::string& pointer);
/// Like `document`, without one member.
json::value Without(json::value document, const char* member);

/// The key of the message that an error answer carries, as "MalformedJSON".
std::string MessageKey(const httplib::Result& answer);

std::unique_ptr<bmcsim::BmcSimulator> Start(const bmcsim::SimulatorOptions& options);
bmcsim::SimulatorOptions PlainOptions();
/// @return the error of a start that must fail; fails the test when it does not.
std::string StartError(const bmcsim::SimulatorOptions& options);

/// A plain client that logs in by basic authentication and keeps its connection.
std::unique_ptr<httplib::Client> Connect(const bmcsim::BmcSimulator& simulator);
std::unique_ptr<httplib::Client> ConnectWithoutCredentials(const bmcsim::BmcSimulator& simulator);

/// A simulator over plain http with the built-in machine, and a client of it.
class SimulatorTest : public testing::Test
{
  protected:
    void SetUp() override { StartWith(PlainOptions()); }
    void StartWith(const bmcsim::SimulatorOptions& options);
    json::value GetJson(const std::string& path);

    std::unique_ptr<bmcsim::BmcSimulator> m_Simulator;
    std::unique_ptr<httplib::Client> m_Client;
};

} // namespace bmctest
