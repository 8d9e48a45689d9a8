// The OEM file actions of the system.

#include "Service.h"

#include "ActionBody.h"
#include "Answers.h"
#include "JsonFile.h"
#include "RedfishErrors.h"
#include "ServicePaths.h"

#include <algorithm>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

constexpr std::size_t MaxFiles = 16;
constexpr std::size_t MaxFileName = 64;
constexpr std::size_t MaxFileSize = std::size_t{4} * 1024 * 1024;

bool IsSet(const json::object& parameters, const char* name)
{
    const json::value* value = parameters.if_contains(name);
    return value != nullptr && value->is_bool() && value->get_bool();
}

json::object Values::*FilesOf(const json::object& parameters)
{
    return IsSet(parameters, "Volatile") ? &Values::VolatileFiles : &Values::Files;
}

bool IsFileName(const std::string& name)
{
    return !name.empty() && name.size() <= MaxFileName &&
           std::none_of(name.begin(), name.end(),
                        [](char c) { return c == '/' || static_cast<unsigned char>(c) < 0x20U || c == 0x7F; });
}

/// @return false when the file cannot be written so, and response tells why.
bool StoreContent(json::object& files, const json::object& parameters, HttpResponse& response)
{
    const std::string name = FindText(parameters, "FileName");
    const bool exists = files.contains(name);
    if (!exists && !IsSet(parameters, "Create"))
    {
        response = RedfishError(404, Base::ResourceNotFound, {"File", name});
        return false;
    }
    if (!exists && files.size() >= MaxFiles)
    {
        response = RedfishError(400, Base::CreateLimitReachedForResource);
        return false;
    }
    const std::string kept = IsSet(parameters, "ClearWrite") ? std::string() : FindText(files, name);
    const std::string content = kept + FindText(parameters, "Content");
    if (content.size() > MaxFileSize)
    {
        response = RedfishError(413, Base::PayloadTooLarge);
        return false;
    }
    files[name] = content;
    response = DoneAnswer({{Base::Success}});
    return true;
}

} // namespace

void Service::RouteFiles()
{
    RouteChange(OemSystemAction(m_Machine, ReadFileAction), "POST",
                [this](const HttpRequest& request) { return ReadFile(request); });
    RouteChange(OemSystemAction(m_Machine, WriteFileAction), "POST",
                [this](const HttpRequest& request) { return WriteFile(request); });
}

HttpResponse Service::ReadFile(const HttpRequest& request) const
{
    HttpResponse refusal;
    const auto body =
        ActionBody(request, ReadFileAction,
                   {{"FileName", ActionParameter::Text, true}, {"Volatile", ActionParameter::Flag}}, refusal);
    if (!body)
    {
        return refusal;
    }
    const std::string name = FindText(*body, "FileName");
    const auto values = m_State.Current();
    const json::value* content = ((*values).*FilesOf(*body)).if_contains(name);
    return content != nullptr ? JsonAnswer(200, {{"Content", *content}})
                              : RedfishError(404, Base::ResourceNotFound, {"File", name});
}

HttpResponse Service::WriteFile(const HttpRequest& request)
{
    HttpResponse refusal;
    const auto body = ActionBody(request, WriteFileAction,
                                 {{"FileName", ActionParameter::Text, true},
                                  {"Volatile", ActionParameter::Flag},
                                  {"ClearWrite", ActionParameter::Flag},
                                  {"Content", ActionParameter::Text, true},
                                  {"Create", ActionParameter::Flag}},
                                 refusal);
    if (!body)
    {
        return refusal;
    }
    const std::string name = FindText(*body, "FileName");
    if (!IsFileName(name))
    {
        return RedfishError(400, Base::ActionParameterValueFormatError, {name, "FileName", WriteFileAction});
    }
    return Changed([&](Values& values, HttpResponse& response)
                   { return StoreContent(values.*FilesOf(*body), *body, response); });
}

} // namespace bmcsim
