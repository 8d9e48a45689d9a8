#include "CurlConnection.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <ctime>
#include <exception>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "AbortFlag.h"
#include "CurlOption.h"
#include "PlainText.h"

namespace Tavrine
{

namespace
{

constexpr std::size_t MaxHeadBytes = 64U * 1024U;
/// An abort is seen after this long at the latest.
constexpr int PollMilliseconds = 100;

void InitialiseCurlOnce()
{
    static std::once_flag done;
    std::call_once(done, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

/// A write to a connection that the peer has closed raises SIGPIPE, which must not
/// end a program that never asked for it: blocked for this thread, and taken off
/// the queue if it came in the meantime.
class SigpipeGuard
{
  public:
    SigpipeGuard()
    {
        sigemptyset(&m_Pipe);
        sigaddset(&m_Pipe, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        m_WasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_Pipe, &m_Former);
    }
    SigpipeGuard(const SigpipeGuard&) = delete;
    SigpipeGuard& operator=(const SigpipeGuard&) = delete;
    ~SigpipeGuard()
    {
        const timespec now{};
        while (!m_WasPending && sigtimedwait(&m_Pipe, nullptr, &now) == SIGPIPE)
        {
        }
        pthread_sigmask(SIG_SETMASK, &m_Former, nullptr);
    }

  private:
    sigset_t m_Pipe{};
    sigset_t m_Former{};
    bool m_WasPending = false;
};

/// Header lines of one request; overwritten before they are given back, since one
/// of them can be a token.
class HeaderLines
{
  public:
    HeaderLines() = default;
    HeaderLines(const HeaderLines&) = delete;
    HeaderLines& operator=(const HeaderLines&) = delete;
    ~HeaderLines()
    {
        for (curl_slist* line = m_Lines; line != nullptr; line = line->next)
        {
            explicit_bzero(line->data, std::char_traits<char>::length(line->data));
        }
        curl_slist_free_all(m_Lines);
    }

    void Add(const std::string& name, const std::string& value)
    {
        SecretText line;
        line.Buffer().reserve(name.size() + value.size() + 2);
        line.Buffer().append(name).append(value.empty() ? ";" : ": ").append(value);
        AddLine(line.Get());
    }
    void AddLine(const std::string& line)
    {
        curl_slist* const longer = curl_slist_append(m_Lines, line.c_str());
        if (longer == nullptr)
        {
            throw std::bad_alloc();
        }
        m_Lines = longer;
    }
    curl_slist* Get() const { return m_Lines; }

  private:
    curl_slist* m_Lines = nullptr;
};

std::string Trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t\r\n");
    const auto last = text.find_last_not_of(" \t\r\n");
    return first == std::string_view::npos ? std::string() : std::string(text.substr(first, last - first + 1));
}

} // namespace

/// What arrives during one transfer.
struct CurlConnection::Reception
{
    HttpAnswer Answer;
    TransferEnd End;
    std::uint64_t MaxBody = 0;
    std::size_t HeadBytes = 0;
    /// The blank line behind the headers has come.
    bool HeadDone = false;
    unsigned int Sendings = 0;
    bool MayRepeat = false;
    HeaderLines Lines;
    std::array<char, CURL_ERROR_SIZE> Words{};
    /// What must not go through curl, which knows no exceptions.
    std::exception_ptr Thrown;

    static std::size_t OnBody(const char* data, std::size_t size, std::size_t count, void* self);
    static std::size_t OnHeader(const char* data, std::size_t size, std::size_t count, void* self);
    static int OnSend(void* self, char*, char*, int, int);
    std::size_t TakeBody(std::string_view data);
    std::size_t TakeHeaderLine(std::string_view line);
    void TakeHeader(std::string_view line);

  private:
    using Take = std::size_t (Reception::*)(std::string_view);
    std::size_t Guarded(Take take, std::string_view data) noexcept;
};

std::size_t CurlConnection::Reception::Guarded(Take take, std::string_view data) noexcept
try
{
    return (this->*take)(data);
}
catch (const std::exception&)
{
    Thrown = std::current_exception();
    return CURL_WRITEFUNC_ERROR;
}

std::size_t CurlConnection::Reception::OnBody(const char* data, std::size_t size, std::size_t count, void* self)
{
    return static_cast<Reception*>(self)->Guarded(&Reception::TakeBody, {data, size * count});
}

std::size_t CurlConnection::Reception::TakeBody(std::string_view data)
{
    if (data.size() > MaxBody - Answer.Body.size())
    {
        End.BodyTooLarge = true;
        return CURL_WRITEFUNC_ERROR;
    }
    Answer.Body.append(data);
    return data.size();
}

std::size_t CurlConnection::Reception::OnHeader(const char* data, std::size_t size, std::size_t count, void* self)
{
    return static_cast<Reception*>(self)->Guarded(&Reception::TakeHeaderLine, {data, size * count});
}

std::size_t CurlConnection::Reception::TakeHeaderLine(std::string_view line)
{
    // Interim answers (1xx) count as well, or they could go on for ever.
    HeadBytes += line.size();
    if (HeadBytes > MaxHeadBytes)
    {
        End.HeadTooLarge = true;
        return CURL_WRITEFUNC_ERROR;
    }
    TakeHeader(line);
    return line.size();
}

int CurlConnection::Reception::OnSend(void* self, char*, char*, int, int)
{
    auto& reception = *static_cast<Reception*>(self);
    reception.End.Connected = true;
    // curl sends a request anew when a kept connection dies under it. A change may
    // have arrived by then.
    if (++reception.Sendings > 1 && !reception.MayRepeat)
    {
        reception.End.ChangeCutOff = true;
        return CURL_PREREQFUNC_ABORT;
    }
    return CURL_PREREQFUNC_OK;
}

void CurlConnection::Reception::TakeHeader(std::string_view line)
{
    if (line.substr(0, 5) == "HTTP/")
    {
        Answer.Headers.clear();
        HeadDone = false;
        return;
    }
    HeadDone = HeadDone || line.find_first_not_of("\r\n") == std::string_view::npos;
    const std::size_t colon = line.find(':');
    if (colon != std::string_view::npos)
    {
        Answer.Headers[LowerAscii(line.substr(0, colon))] = Trimmed(line.substr(colon + 1));
    }
}

CurlConnection::CurlConnection(Origin origin, TlsRules tls, TransferLimits limits)
    : m_Origin(std::move(origin)), m_Limits(limits), m_Tls(std::move(tls)), m_Multi(nullptr, &curl_multi_cleanup),
      m_Easy(nullptr, &curl_easy_cleanup)
{
    InitialiseCurlOnce();
    m_Multi.reset(curl_multi_init());
    m_Easy.reset(curl_easy_init());
    if (m_Multi)
    {
        curl_multi_setopt(m_Multi.get(), CURLMOPT_MAXCONNECTS, 1L);
        curl_multi_setopt(m_Multi.get(), CURLMOPT_MAX_TOTAL_CONNECTIONS, 1L);
    }
}

CurlConnection::~CurlConnection()
{
    // TLS says good-bye on its way out, to a peer that may have left already.
    const SigpipeGuard guard;
    m_Easy.reset();
    m_Multi.reset();
}

void CurlConnection::SetFixedOptions()
{
    CURL* const easy = m_Easy.get();
    const char* const scheme = m_Origin.PlainHttp ? "http" : "https";
    SetOption(easy, CURLOPT_NOSIGNAL, 1L);
    WishOption(easy, CURLOPT_PROXY, "");
    SetOption(easy, CURLOPT_PROTOCOLS_STR, scheme);
    SetOption(easy, CURLOPT_FOLLOWLOCATION, 0L);
    SetOption(easy, CURLOPT_PATH_AS_IS, 1L);
    SetOption(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    SetOption(easy, CURLOPT_ACCEPT_ENCODING, "gzip");
    WishOption(easy, CURLOPT_USERAGENT, "tavrine");
    WishOption(easy, CURLOPT_TCP_KEEPALIVE, 1L);
    // A resolver that hangs must not hold up a time-out or an abort.
    WishOption(easy, CURLOPT_QUICK_EXIT, 1L);
    SetOption(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(m_Limits.ConnectTimeout.count()) * 1000L);
    SetOption(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(m_Limits.MaxBody));
    if (!m_Origin.PlainHttp)
    {
        m_Tls.Apply(easy);
    }
}

void CurlConnection::SetRequest(const HttpRequest& request, const Credentials& credentials, Reception& reception)
{
    CURL* const easy = m_Easy.get();
    const std::string url = m_Origin.Url() + std::string(request.Path);
    SetOption(easy, CURLOPT_URL, url.c_str());
    SetOption(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(request.Timeout.count()) * 1000L);
    if (request.Verb == HttpVerb::Post || request.Verb == HttpVerb::Patch)
    {
        SetOption(easy, CURLOPT_POST, 1L);
        SetOption(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.Body.size()));
        SetOption(easy, CURLOPT_POSTFIELDS, request.Body.empty() ? "" : request.Body.data());
        reception.Lines.Add("Content-Type", "application/json");
    }
    if (request.Verb == HttpVerb::Patch || request.Verb == HttpVerb::Delete)
    {
        SetOption(easy, CURLOPT_CUSTOMREQUEST, VerbName(request.Verb).data());
    }
    reception.Lines.Add("Accept", "application/json");
    reception.Lines.Add("OData-Version", "4.0");
    reception.Lines.AddLine("Expect:");
    if (request.Headers != nullptr)
    {
        for (const auto& [name, value] : *request.Headers)
        {
            if (LowerAscii(name) != "expect")
            {
                reception.Lines.Add(name, value);
            }
        }
    }
    if (!credentials.Token.empty())
    {
        reception.Lines.Add("X-Auth-Token", credentials.Token);
    }
    else if (!credentials.User.empty())
    {
        SetOption(easy, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
        SetOption(easy, CURLOPT_USERNAME, credentials.User.c_str());
        SetOption(easy, CURLOPT_PASSWORD, credentials.Password.c_str());
    }
    SetOption(easy, CURLOPT_HTTPHEADER, reception.Lines.Get());
    SetOption(easy, CURLOPT_WRITEFUNCTION, &Reception::OnBody);
    SetOption(easy, CURLOPT_WRITEDATA, &reception);
    SetOption(easy, CURLOPT_HEADERFUNCTION, &Reception::OnHeader);
    SetOption(easy, CURLOPT_HEADERDATA, &reception);
    SetOption(easy, CURLOPT_PREREQFUNCTION, &Reception::OnSend);
    SetOption(easy, CURLOPT_PREREQDATA, &reception);
    SetOption(easy, CURLOPT_ERRORBUFFER, reception.Words.data());
}

CURLcode CurlConnection::Drive(const HttpRequest& request, Reception& reception)
{
    if (curl_multi_add_handle(m_Multi.get(), m_Easy.get()) != CURLM_OK)
    {
        return CURLE_FAILED_INIT;
    }
    CURLcode code = CURLE_FAILED_INIT;
    int running = 1;
    while (curl_multi_perform(m_Multi.get(), &running) == CURLM_OK && running > 0)
    {
        reception.End.Aborted = AbortFlag::IsRaised() && !request.EndsSession;
        if (reception.End.Aborted || curl_multi_poll(m_Multi.get(), nullptr, 0, PollMilliseconds, nullptr) != CURLM_OK)
        {
            break;
        }
    }
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(m_Multi.get(), &left))
    {
        code = message->msg == CURLMSG_DONE ? message->data.result : code;
    }
    Count();
    curl_multi_remove_handle(m_Multi.get(), m_Easy.get());
    return code;
}

void CurlConnection::Count()
{
    long made = 0;
    long head = 0;
    curl_off_t body = 0;
    curl_easy_getinfo(m_Easy.get(), CURLINFO_NUM_CONNECTS, &made);
    curl_easy_getinfo(m_Easy.get(), CURLINFO_HEADER_SIZE, &head);
    curl_easy_getinfo(m_Easy.get(), CURLINFO_SIZE_DOWNLOAD_T, &body);
    Requests += 1;
    Connections += static_cast<std::uint64_t>(std::max(made, 0L));
    BytesReceived +=
        static_cast<std::uint64_t>(std::max(head, 0L)) + static_cast<std::uint64_t>(std::max<curl_off_t>(body, 0));
}

/// @throws std::bad_alloc, UnusableCurl before anything was sent
void CurlConnection::Transfer(const HttpRequest& request, const Credentials& credentials, Reception& reception)
{
    const SigpipeGuard guard;
    // Nothing of this call may be pointed to after it.
    const std::unique_ptr<CURL, void (*)(CURL*)> used(m_Easy.get(), &curl_easy_reset);
    SetFixedOptions();
    SetRequest(request, credentials, reception);
    reception.End.Code = Drive(request, reception);
    if (reception.End.Code == CURLE_OK && !reception.HeadDone)
    {
        // curl takes a head that is cut off for a whole answer without a body.
        reception.End.Code = CURLE_PARTIAL_FILE;
    }
    long status = 0;
    long systemError = 0;
    curl_easy_getinfo(m_Easy.get(), CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(m_Easy.get(), CURLINFO_OS_ERRNO, &systemError);
    reception.Answer.Status = static_cast<int>(status);
    m_Answered = m_Answered || status > 0;
    reception.End.SystemError = static_cast<int>(systemError);
    reception.End.Words = reception.Words.data();
}

Exchange CurlConnection::Run(const HttpRequest& request, const Credentials& credentials)
{
    TransferLimits limits = m_Limits;
    limits.RequestTimeout = request.Timeout;
    Reception reception;
    reception.MaxBody = limits.MaxBody;
    reception.MayRepeat = request.Verb == HttpVerb::Get || request.EndsSession;
    reception.End.Code = CURLE_FAILED_INIT;
    if (AbortFlag::IsRaised() && !request.EndsSession)
    {
        reception.End.Aborted = true;
    }
    else if (m_Multi && m_Easy)
    {
        try
        {
            Transfer(request, credentials, reception);
        }
        catch (const UnusableCurl& fault)
        {
            return {{}, TransportFault{24, m_Origin.Text() + ": " + fault.what() + ".", false, Delivery::NotSent}};
        }
    }
    if (reception.Thrown)
    {
        std::rethrow_exception(reception.Thrown);
    }
    if (reception.End.Code == CURLE_OK && !reception.End.Aborted)
    {
        return {std::move(reception.Answer), std::nullopt};
    }
    return {{}, ExplainTransferEnd(reception.End, limits, m_Tls, m_Origin.Text(), m_Origin.PlainHttp && !m_Answered)};
}

} // namespace Tavrine
