#include "Floor.h"

#include <fstream>

#include <fmt/format.h>

namespace bench
{
namespace
{

constexpr const char* Login = R"({"UserName":"admin","Password":"password"})";

std::string WriteFile(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    return path;
}

std::string Body(const std::string& file)
{
    return fmt::format("data-binary = \"@{}\"\nheader = \"Content-Type: application/json\"\n", file);
}

} // namespace

Words FloorCommand(const Simulator& simulator, const std::vector<Request>& requests, const std::string& body,
                   const std::string& folder)
{
    const std::string login = WriteFile(folder + "/login.json", Login);
    const std::string patch = WriteFile(folder + "/patch.json", body);
    std::string config;
    for (const Request& request : requests)
    {
        config += config.empty() ? "" : "next\n";
        config += fmt::format("url = \"{}{}\"\noutput = \"/dev/null\"\nsilent\nshow-error\ngloboff\ncompressed\n"
                              "http1.1\nnoproxy = \"*\"\ninsecure\nrequest = \"{}\"\n",
                              simulator.Url(), request.Path, request.Method);
        if (request.Method == "POST")
        {
            config += Body(login);
            continue;
        }
        config += "user = \"admin:password\"\n";
        config += request.Method == "PATCH" ? Body(patch) : "";
        config += request.Status == 304 ? "header = \"If-None-Match: *\"\n" : "";
    }
    return {"curl", "-q", "-K", WriteFile(folder + "/curl.conf", config)};
}

std::string FloorFault(const std::vector<Request>& requests, const std::vector<Request>& floor)
{
    if (requests.size() != floor.size())
    {
        return fmt::format("{} requests instead of {}", floor.size(), requests.size());
    }
    for (std::size_t i = 0; i < requests.size(); ++i)
    {
        // It closes the session of another run, which is gone.
        const bool same = requests[i].Status == floor[i].Status || requests[i].Method == "DELETE";
        if (!same || floor[i].Connection != floor[0].Connection)
        {
            return fmt::format("{} {} answered with {} on connection {}", floor[i].Method, floor[i].Path,
                               floor[i].Status, floor[i].Connection);
        }
    }
    return {};
}

} // namespace bench
