#pragma once

#include "Descriptor.h"
#include "Machine.h"

#include <boost/json/object.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace bmcsim
{

/// What can change of a machine: attribute values in force, pending ones that wait
/// for the next start, and what else the BMC remembers.
struct Values
{
    boost::json::object Effective;
    boost::json::object Pending;
    boost::json::object ProtectedEffective;
    boost::json::object ProtectedPending;
    /// Files of the OEM file actions, name to content.
    boost::json::object Files;
    /// The same for volatile files, which live as long as the BMC runs.
    boost::json::object VolatileFiles;
    /// "Time" and "Messages" of the last start that had something to apply; empty
    /// before the first.
    boost::json::object Outcome;
    /// Members of the system's resource that a start has changed.
    boost::json::object System;
    /// All attributes go to their defaults at the next start.
    bool DefaultsPending = false;
    bool PoweredOff = false;
    /// A start is under way; what is pending comes into force at its end.
    bool Starting = false;
};

/// The values of one machine, kept in a file where one is named. The file is
/// replaced as a whole or not at all, and belongs to one State at a time, of whatever process.
class State
{
  public:
    static constexpr std::chrono::milliseconds UsualPatience{10'000};

    /// Takes the values from the file; makes the file where there is none.
    /// @param file  empty: nothing is kept.
    /// @param patience  how long the file may be another's before that is told.
    /// @return empty when the file is there but of no use, is another's, or cannot be made; it is
    /// then left as it is and error names it.
    static std::unique_ptr<State> Open(const Machine& machine, const std::string& file, std::string& error,
                                       std::chrono::milliseconds patience = UsualPatience);

    /// What stands now; later changes do not show in it.
    std::shared_ptr<const Values> Current() const;
    /// Lets `change` work on a copy, which is saved and then takes the place of what
    /// stood. One change runs at a time.
    /// @param change  returns false for a change that is not to be.
    /// @return false when the values could not be saved: then nothing has changed and
    /// Trouble() tells why.
    bool Update(const std::function<bool(Values&)>& change);
    std::string Trouble() const;

  private:
    State(std::string identity, std::string file, Values values, Descriptor lock);
    bool Save(const Values& values, std::string& error);

    const std::string m_Identity;
    const std::string m_File;
    Descriptor m_Lock;
    /// Held through a whole change; readers never wait for it.
    std::mutex m_ChangeMutex;
    mutable std::mutex m_Mutex;
    std::shared_ptr<const Values> m_Values;
    std::string m_Trouble;
};

} // namespace bmcsim
