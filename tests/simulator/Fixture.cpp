#include "Fixture.h"

#include "SharedData.h"

namespace bmctest
{

json::value Parse(const std::string& text)
{
    boost::system::error_code code;
    json::parse_options options;
    options.max_depth = 128;
    json::value value = json::parse(text, code, {}, options);
    return code ? json::value(nullptr) : value;
}

json::value ParseFile(const std::string& path) { return Parse(testdata::ReadFile(path)); }

json::value At(const json::value& document, const std::string& pointer)
{
    boost::system::error_code code;
    const json::value* found = document.find_pointer(pointer, code);
    return found != nullptr ? *found : json::value(nullptr);
}

json::value Without(json::value document, const char* member)
{
    if (json::object* object = document.if_object())
    {
        object->erase(member);
    }
    return document;
}

std::string MessageKey(const httplib::Result& answer)
{
    const json::value id = answer ? At(Parse(answer->body), "/error/@Message.ExtendedInfo/0/MessageId") : json::value();
    const std::string text = id.is_string() ? std::string(id.get_string().c_str()) : std::string();
    return text.substr(text.rfind('.') + 1);
}

std::unique_ptr<bmcsim::BmcSimulator> Start(const bmcsim::SimulatorOptions& options)
{
    std::string error;
    auto simulator = bmcsim::BmcSimulator::Start(options, error);
    EXPECT_TRUE(simulator) << error;
    EXPECT_EQ(error, "");
    return simulator;
}

bmcsim::SimulatorOptions PlainOptions()
{
    bmcsim::SimulatorOptions options;
    options.PlainHttp = true;
    return options;
}

std::string StartError(const bmcsim::SimulatorOptions& options)
{
    std::string error;
    const auto simulator = bmcsim::BmcSimulator::Start(options, error);
    EXPECT_FALSE(simulator);
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
    return error;
}

std::unique_ptr<httplib::Client> ConnectWithoutCredentials(const bmcsim::BmcSimulator& simulator)
{
    auto client = std::make_unique<httplib::Client>(simulator.Url());
    client->set_keep_alive(true);
    client->set_tcp_nodelay(true);
    client->set_read_timeout(60);
    client->enable_server_certificate_verification(false);
    return client;
}

std::unique_ptr<httplib::Client> Connect(const bmcsim::BmcSimulator& simulator)
{
    auto client = ConnectWithoutCredentials(simulator);
    client->set_basic_auth("admin", "password");
    return client;
}

void SimulatorTest::StartWith(const bmcsim::SimulatorOptions& options)
{
    m_Simulator.reset(); // its state file may be that of the next
    m_Simulator = Start(options);
    ASSERT_TRUE(m_Simulator);
    m_Client = Connect(*m_Simulator);
}

json::value SimulatorTest::GetJson(const std::string& path)
{
    const auto answer = m_Client->Get(path);
    EXPECT_TRUE(answer) << path;
    EXPECT_EQ(answer ? answer->status : 0, 200) << path;
    return answer ? Parse(answer->body) : json::value(nullptr);
}

} // namespace bmctest
