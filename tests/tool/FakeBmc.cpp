#include "FakeBmc.h"

#include <thread>

#include <httplib.h>

namespace tooltest
{

class FakeBmc::Impl
{
  public:
    explicit Impl(std::map<std::string, std::string> resources) : m_Resources(std::move(resources))
    {
        m_Server.Get(".*",
                     [this](const httplib::Request& request, httplib::Response& response)
                     {
                         const auto resource = m_Resources.find(request.path);
                         response.status = resource == m_Resources.end() ? 404 : 200;
                         if (resource != m_Resources.end())
                         {
                             response.set_content(resource->second, "application/json");
                         }
                     });
        Port = m_Server.bind_to_any_port("127.0.0.1");
        m_Thread = std::thread([this] { m_Server.listen_after_bind(); });
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl()
    {
        // A server that does not yet listen cannot be stopped.
        while (!m_Server.is_running())
        {
            std::this_thread::yield();
        }
        m_Server.stop();
        m_Thread.join();
    }

    int Port = 0;

  private:
    std::map<std::string, std::string> m_Resources;
    httplib::Server m_Server;
    std::thread m_Thread;
};

FakeBmc::FakeBmc(const std::map<std::string, std::string>& resources) : m_Impl(std::make_unique<Impl>(resources)) {}

FakeBmc::~FakeBmc() = default;

std::string FakeBmc::Url() const { return "http://127.0.0.1:" + std::to_string(m_Impl->Port); }

Launch FakeBmc::Tool(const std::vector<std::string>& arguments) const
{
    Launch launch;
    launch.Arguments = {"--bmc", Url(), "--user", "admin"};
    launch.Arguments.insert(launch.Arguments.end(), arguments.begin(), arguments.end());
    launch.Variables = {{"TAVRINE_PASSWORD", "password"}};
    return launch;
}

} // namespace tooltest
