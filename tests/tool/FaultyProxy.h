#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tooltest
{

/// What a proxy does with one request.
enum class Fault
{
    None,
    /// Answers 503 itself.
    Busy,
    /// Closes the connection and hands nothing on.
    CutBefore,
    /// Hands half of the request on and closes the connection.
    CutHalfway,
    /// Hands the request on and closes the connection instead of answering.
    CutAfter,
    /// Hands the request on and gives half of the answer.
    CutWithin,
    /// As CutBefore and CutAfter, and from then on requests are taken and dropped.
    DeadBefore,
    DeadAfter,
    /// Hands the request on and answers, and then nobody listens any more.
    GoneAfter,
};

/// Stands between a client and a service of plain HTTP, one request after the other.
class FaultyProxy
{
  public:
    /// @param port   of the service, on loopback.
    /// @param judge  what to do with a request, by its number (from 1) and its text
    ///               "METHOD PATH".
    FaultyProxy(const std::string& port, std::function<Fault(int, const std::string&)> judge);
    FaultyProxy(const FaultyProxy&) = delete;
    FaultyProxy& operator=(const FaultyProxy&) = delete;
    ~FaultyProxy();

    /// "http://127.0.0.1:PORT"
    std::string Url() const;
    /// The requests so far, "METHOD PATH".
    std::vector<std::string> Requests() const;
    /// Their bodies, in the same order.
    std::vector<std::string> Bodies() const;

  private:
    class Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace tooltest
