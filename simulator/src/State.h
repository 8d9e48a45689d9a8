#pragma once

#include "Machine.h"

#include <boost/json/object.hpp>
#include <memory>
#include <mutex>
#include <string>

namespace bmcsim
{

/// What can change of a machine: attribute values in force, and pending ones that
/// wait for the next reset.
struct Values
{
    boost::json::object Effective;
    boost::json::object Pending;
    boost::json::object ProtectedEffective;
    boost::json::object ProtectedPending;
};

/// The values of one machine, kept in a file where one is named. The file is
/// replaced as a whole or not at all.
class State
{
  public:
    /// Takes the values from the file; makes the file where there is none.
    /// @param file  empty: nothing is kept.
    /// @return empty when the file is there but of no use, or cannot be made; it is
    /// then left as it is and error names it.
    static std::unique_ptr<State> Open(const Machine& machine, const std::string& file, std::string& error);

    Values Snapshot() const;
    /// Puts new values in place and saves them.
    /// @return false when they could not be saved; they are in force all the same
    /// and Trouble() tells why.
    bool Replace(Values values);
    std::string Trouble() const;

  private:
    State(std::string identity, std::string file, Values values);
    bool Save(std::string& error) const;

    const std::string m_Identity;
    const std::string m_File;
    mutable std::mutex m_Mutex;
    Values m_Values;
    std::string m_Trouble;
};

} // namespace bmcsim
