#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "BiosRedfishConfigProc.h"
#include "BmcConnection.h"
#include "SoakBmc.h"
#include "SoakModel.h"
#include "SoakWire.h"
#include "TemporaryFolder.h"

namespace soak
{

/// What a run holds of this process when no object of the library stands.
struct Holding
{
    std::size_t HeapBytes = 0;
    std::size_t ResidentBytes = 0;
    std::size_t Descriptors = 0;
};
Holding HoldingNow();

/// An operation of the library as the wire and its caller saw it.
struct Outcome
{
    RedfishConfigResult Result{0, "", ""};
    std::vector<Exchange> Exchanges;

    bool Succeeded() const { return Result == 0 || Result == 1; }
    std::string Told() const { return RedfishConfigResult(Result).ErrorMsg(); }
    bool Harmed() const;
    /// Requests that begin so.
    int Sent(const std::string& start) const;
    /// Those that the BMC got.
    int Arrived(const std::string& start) const;
};

/// Operations of all kinds, chosen at random, on one object, its copies and on objects of their
/// own, beside a model of what should be on the BMC. Its faults are gtest failures.
class Run
{
  public:
    /// @param seed  the same seed gives the same operations.
    explicit Run(std::uint64_t seed);

    /// Does so many operations, and stops at the first fault.
    void Do(int operations);
    /// Drops all objects and the wire, takes the BMC's word against the model's, and starts anew.
    Holding Rest();
    /// The model against the BMC.
    void Compare();

    int Faults() const { return m_Faults; }
    /// How often each kind was done, with or without harm on the way.
    const std::map<std::string, int>& Counts() const { return m_Counts; }
    int Harmed() const { return m_Harmed; }

  private:
    using Proc = Tavrine::BiosRedfishConfigProc;
    struct Kind;
    static const std::vector<Kind>& Kinds();

    std::size_t Pick(std::size_t count) { return static_cast<std::size_t>(m_Random() % count); }
    bool Chance(std::size_t of) { return Pick(of) == 0; }
    const Setting& AnyGuarded() { return m_Guarded[Pick(m_Guarded.size())]; }
    const Setting& AnySetting() { return m_Settings[Pick(m_Settings.size())]; }
    const boost::json::value& AnyValue(const Setting& setting) { return setting.Values[Pick(setting.Values.size())]; }
    Proc& AnyCopy() { return *m_Copies[Pick(m_Copies.size())]; }
    std::unique_ptr<Proc> FreshObject(std::int32_t outputFormat = 0, bool allowProtected = false);

    void Renew();
    Outcome Perform(const std::string& what, const std::function<RedfishConfigResult()>& operation);
    /// Whether a setting has this value already, or will have it after a restart.
    bool IsInPlace(const Setting& setting, const boost::json::value& value, const Place& place) const;
    void CheckRepetition(const Outcome& outcome);
    /// Keeps a line for the message of a fault.
    void Note(std::string line);
    void Expect(bool good, const std::string& what);
    void ExpectCode(const Outcome& outcome, std::initializer_list<int> codes, const std::string& what);

    // What a change does to the model.
    void Flushed(const Outcome& outcome, Queue& queue, const Place& place);
    void Staged(const Outcome& outcome, Queue& queue, const std::string& name, const boost::json::value& value,
                bool batch, const Place& place);

    // Kinds of operations.
    void Change(bool checked, bool batch);
    void ChangeChecked() { Change(true, false); }
    void ChangeUnchecked() { Change(false, false); }
    void QueueChecked() { Change(true, true); }
    void QueueUnchecked() { Change(false, true); }
    void ChangeOfAnother();
    void ChangeToNonsense();
    void Flush();
    void Restore();
    void DefaultOfOne();
    void DefaultOfAll();
    void DefaultAtStart();
    void Restart();
    void ReadSomething();
    void LookAtAll();
    void LookAtOne();
    void LookAtPending();
    void LookAtProtected();
    void ChangeProtected();
    void QueueProtected();
    void ChangeProtectedWithoutLeave();
    void LookThroughAFile();
    void WriteFile();
    void ReadFile();
    void Copy();
    void Assign();
    void NewObject();
    void NamesAndTheRest();

    std::mt19937_64 m_Random;
    SoakBmc m_Bmc;
    /// Nothing on this way is harmed.
    std::unique_ptr<TavrineConnection::BmcConnection> m_Clean;
    std::unique_ptr<Wire> m_Wire;
    std::unique_ptr<TavrineConnection::BmcConnection> m_Connection;
    std::vector<Setting> m_Settings;
    std::vector<Setting> m_Guarded;
    Model m_Model;
    /// One object and its copies: they share what they fetched and what waits.
    std::vector<std::unique_ptr<Proc>> m_Copies;
    Queue m_Queue;
    testdata::TemporaryFolder m_Folder;
    std::deque<std::string> m_Trace;
    std::map<std::string, int> m_Counts;
    int m_Done = 0;
    int m_Harmed = 0;
    int m_Faults = 0;
};

} // namespace soak
