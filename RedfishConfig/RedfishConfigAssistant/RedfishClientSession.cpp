#include "RedfishClient.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>

#include "JsonText.h"
#include "Log.h"
#include "PlainText.h"
#include "RequestTarget.h"

// Logging in and out (DSP0266, "Session management").
namespace Tavrine
{

namespace
{

/// Logging out is done on the way out, where nobody waits for a minute.
constexpr std::chrono::seconds LogoutTimeout{10};
constexpr std::size_t MaxTokenBytes = 4096;

bool IsUsableToken(const std::string& token)
{
    const auto visible = [](char c) { return c > 0x20 && c < 0x7f; };
    return !token.empty() && token.size() <= MaxTokenBytes && std::all_of(token.begin(), token.end(), visible);
}

} // namespace

RedfishConfigResult RedfishClient::OpenSession()
{
    const std::lock_guard lock(m_Mutex);
    if (!m_Session.Token.Get().empty())
    {
        return {0, "", ""};
    }
    if (m_User.Get().empty())
    {
        return {24, m_Connection.Place().Text() + ": a session needs a user name.", ""};
    }
    return LogIn();
}

RedfishConfigResult RedfishClient::LogIn()
{
    static const std::string none;
    if (!m_Closed.empty())
    {
        return {24, m_Connection.Place().Text() + ": " + m_Closed + ".", ""};
    }
    SecretText body;
    body.Buffer().reserve(64 + 6 * (m_User.Get().size() + m_Password.Get().size()));
    body.Buffer().append("{\"UserName\":");
    AppendJsonString(body.Buffer(), m_User.Get());
    body.Buffer().append(",\"Password\":");
    AppendJsonString(body.Buffer(), m_Password.Get());
    body.Buffer().append("}");
    const HttpRequest request{HttpVerb::Post, SessionsPath, body.Get(), m_RequestTimeout, nullptr, false};
    Log(4, __FILE__, __LINE__).Stream() << "Logging in to " << m_Connection.Place().Text();
    Exchange exchange = Persist(Repeat::Unsent, [&] { return m_Connection.Run(request, {none, none, none}); });
    if (exchange.Fault)
    {
        return {exchange.Fault->Code, exchange.Fault->Text, ""};
    }
    const int status = exchange.Answer.Status;
    if (status == 404 || status == 405 || status == 501)
    {
        return {11, m_Connection.Place().Text() + " has no sessions.", ""};
    }
    RedfishConfigResult result = Judge(request, exchange, nullptr);
    // What an answer that cannot be read may tell is of no weight beside a token.
    const bool isUnread = result == 27 && exchange.Answer.Success();
    if (result == 0 || result == 1 || isUnread)
    {
        result = TakeSession(exchange.Answer);
    }
    for (auto& [name, value] : exchange.Answer.Headers)
    {
        Wipe(value);
    }
    return result;
}

RedfishConfigResult RedfishClient::TakeSession(const HttpAnswer& answer)
{
    const SecretText token(answer.Header("x-auth-token"));
    if (!IsUsableToken(token.Get()))
    {
        return {27, m_Connection.Place().Text() + ": the answer to the login holds no usable X-Auth-Token.", ""};
    }
    m_Session.Path.clear(); // that of a session before
    m_Session.Token.Set(token.Get());
    auto path = ResolveWithin(m_Connection.Place(), SessionsPath, answer.Header("location"));
    if (!path)
    {
        const auto body = ParseJson(answer.Body);
        path = ResolveWithin(m_Connection.Place(), SessionsPath, TextMember(body ? &*body : nullptr, "@odata.id"));
    }
    m_Session.Path = path.value_or("");
    return {0, "", ""};
}

RedfishConfigResult RedfishClient::CloseSession()
{
    const std::lock_guard lock(m_Mutex);
    if (m_Session.Token.Get().empty())
    {
        return {0, "", ""};
    }
    RedfishConfigResult result(28, m_Connection.Place().Text() + ": the session was left open, its place is not known.",
                               "");
    if (!m_Session.Path.empty())
    {
        const HttpRequest request{
            HttpVerb::Delete, m_Session.Path, {}, std::min(m_RequestTimeout, LogoutTimeout), nullptr, true};
        const Exchange exchange = Run(request);
        const int status = exchange.Answer.Status;
        const bool gone = !exchange.Fault && (status == 401 || status == 404 || status == 410);
        result = gone ? RedfishConfigResult(0, "", "") : Judge(request, exchange, nullptr);
    }
    m_Session.Token.Clear();
    m_Session.Path.clear();
    return result;
}

} // namespace Tavrine
