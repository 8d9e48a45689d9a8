#include "TransportFaults.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include <fmt/format.h>

#include "PlainText.h"

namespace Tavrine
{

namespace
{

/// Everything that a text may want to name.
struct Circumstances
{
    const TransferEnd& End;
    const TransferLimits& Limits;
    const TlsCheck& Tls;
    bool MaybeHttps;
};

std::string Words(const Circumstances& of)
{
    const std::string words = CleanText(of.End.Words, 300);
    return words.empty() ? curl_easy_strerror(of.End.Code) : words;
}

std::string NotConnectedText(const Circumstances& of)
{
    switch (of.End.SystemError)
    {
    case ECONNREFUSED:
        return "the connection was refused, nothing listens on that port";
    case EHOSTUNREACH:
    case ENETUNREACH:
        return "the host cannot be reached from here";
    case 0:
        return "no connection could be made: " + Words(of);
    default:
        return "no connection could be made: " + std::generic_category().message(of.End.SystemError);
    }
}

std::string TimeoutText(const Circumstances& of)
{
    return of.End.Connected
               ? fmt::format("time-out, no whole answer came within {} s", of.Limits.RequestTimeout.count())
               : fmt::format("time-out, no connection stood within {} s",
                             std::min(of.Limits.ConnectTimeout, of.Limits.RequestTimeout).count());
}

std::string CertificateText(const Circumstances& of)
{
    const std::string shown = of.Tls.ShownFingerprint();
    const std::string tail = shown.empty() ? "" : "; the certificate is sha256:" + shown;
    if (of.Tls.Rules().Pin)
    {
        return "its certificate is not the pinned one" + tail;
    }
    if (!of.Tls.Refusal().empty())
    {
        return "its certificate is not trusted (" + of.Tls.Refusal() + ")" + tail;
    }
    return "its certificate is made out for another name (" + Words(of) + ")" + tail;
}

std::string HandshakeText(const Circumstances& of)
{
    // What OpenSSL says when the first bytes are no TLS record.
    for (const char* sign : {"wrong version number", "http request", "unknown protocol", "packet length too long",
                             "record layer failure", "unexpected message"})
    {
        if (of.End.Words.find(sign) != std::string::npos)
        {
            return "it does not speak TLS, this may be an http port";
        }
    }
    return "the TLS handshake failed: " + Words(of);
}

/// A server that waits for TLS hangs up, resets the connection or sends an alert.
std::string PortHint(const Circumstances& of) { return of.MaybeHttps ? ", the port may want https" : ""; }

std::string NoHttpText(const Circumstances& of)
{
    return of.MaybeHttps ? "what it sent is no HTTP answer, the port may want https"
                         : "what it sent is no HTTP answer: " + Words(of);
}

std::string SilenceText(const Circumstances& of) { return "it closed the connection without an answer" + PortHint(of); }

std::string BrokenText(const Circumstances& of) { return "the connection broke: " + Words(of) + PortHint(of); }
std::string ShortText(const Circumstances&) { return "the connection ended before the whole answer had come"; }
std::string NameText(const Circumstances&) { return "the name of the host was not found"; }
std::string CaFileText(const Circumstances& of)
{
    return "the file of trusted certificates cannot be used: " + Words(of);
}
std::string CodingText(const Circumstances&) { return "the compressed answer is damaged"; }
std::string OtherText(const Circumstances& of) { return Words(of); }

struct Row
{
    CURLcode Code;
    int Result;
    std::string (*Text)(const Circumstances&);
    /// True: the request cannot have been sent.
    bool NotConnected = false;
    /// True: another connection may fare better.
    bool Broken = false;
};

constexpr Row rows[] = {
    {CURLE_COULDNT_RESOLVE_HOST, 24, NameText, true},  {CURLE_COULDNT_CONNECT, 24, NotConnectedText, true},
    {CURLE_OPERATION_TIMEDOUT, 24, TimeoutText},       {CURLE_PEER_FAILED_VERIFICATION, 24, CertificateText},
    {CURLE_SSL_CONNECT_ERROR, 24, HandshakeText},      {CURLE_SSL_CACERT_BADFILE, 24, CaFileText},
    {CURLE_UNSUPPORTED_PROTOCOL, 24, NoHttpText},      {CURLE_WEIRD_SERVER_REPLY, 24, NoHttpText},
    {CURLE_GOT_NOTHING, 24, SilenceText, false, true}, {CURLE_PARTIAL_FILE, 24, ShortText, false, true},
    {CURLE_RECV_ERROR, 24, BrokenText, false, true},   {CURLE_SEND_ERROR, 24, BrokenText, false, true},
    {CURLE_BAD_CONTENT_ENCODING, 27, CodingText},
};

const Row& RowOf(CURLcode code)
{
    static constexpr Row other = {CURLE_OK, 24, OtherText};
    for (const Row& row : rows)
    {
        if (row.Code == code)
        {
            return row;
        }
    }
    return other;
}

TransportFault MakeFault(const Circumstances& of)
{
    if (of.End.Aborted)
    {
        return {24, "the request was aborted"};
    }
    if (of.End.BodyTooLarge || of.End.Code == CURLE_FILESIZE_EXCEEDED)
    {
        return {27, fmt::format("the answer is larger than the limit of {} bytes", of.Limits.MaxBody)};
    }
    // The second is how curl names one header line over its own limit.
    if (of.End.HeadTooLarge || of.End.Code == CURLE_OUT_OF_MEMORY)
    {
        return {27, "the head of the answer is too large"};
    }
    if (of.End.ChangeCutOff)
    {
        return {24, "the connection ended before an answer had come"};
    }
    const Row& row = RowOf(of.End.Code);
    const bool early = row.Code == CURLE_OPERATION_TIMEDOUT ? !of.End.Connected : row.NotConnected;
    return {row.Result, row.Text(of), early, Delivery::NotSent, row.Broken};
}

} // namespace

TransportFault ExplainTransferEnd(const TransferEnd& end, const TransferLimits& limits, const TlsCheck& tls,
                                  const std::string& place, bool maybeHttps)
{
    TransportFault fault = MakeFault({end, limits, tls, maybeHttps});
    fault.Reached = end.Connected ? Delivery::Sent : Delivery::NotSent;
    fault.Text = place + ": " + fault.Text + ".";
    return fault;
}

} // namespace Tavrine
