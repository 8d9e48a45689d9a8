#include "Doubles.h"

namespace doubles
{

World& TheWorld()
{
    static World world;
    return world;
}

void ResetWorld() { TheWorld() = World(); }

void World::Tell(const std::string& verb, const std::string& url, Answer answer)
{
    Answers[{verb, url}].push_back(std::move(answer));
}

void World::Tell(const std::string& verb, const std::string& url, const std::string& body)
{
    Tell(verb, url, Answer{.Body = body, .Errors = {}});
}

void World::Fail(const std::string& verb, const std::string& url, int code, const std::string& message)
{
    Tell(verb, url, Answer{.Result = {code, message, ""}, .Body = "", .Errors = {}});
}

std::vector<std::string> World::Requests() const
{
    std::vector<std::string> requests;
    for (const RestCall& call : Calls)
    {
        requests.push_back(call.Verb + " " + call.Url);
    }
    return requests;
}

std::vector<std::string> World::LogsAt(unsigned int level) const
{
    std::vector<std::string> texts;
    for (const LogLine& line : Logs)
    {
        if (line.Level == level)
        {
            texts.push_back(line.Text);
        }
    }
    return texts;
}

std::string BiosResource(const std::string& attributes, const std::string& settingsUrl, const std::string& etag)
{
    std::string text = "{\"@odata.id\":\"/redfish/v1/Systems/1/Bios\"";
    if (!etag.empty())
    {
        text += ",\"@odata.etag\":\"" + etag + "\"";
    }
    if (!settingsUrl.empty())
    {
        text += ",\"@Redfish.Settings\":{\"SettingsObject\":{\"@odata.id\":\"" + settingsUrl + "\"}}";
    }
    return text + ",\"Attributes\":" + attributes + "}";
}

} // namespace doubles
