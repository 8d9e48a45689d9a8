#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Answer.h"
#include "CauseLog.h"
#include "NamePatterns.h"
#include "RedfishConfigProc.h"
#include "SettingNames.h"

namespace Tavrine::Tool
{

/// The prefixes that names shown by this object have.
Prefixes ShownPrefixes(RedfishConfigProc& front);

/// The bare name under a key that a whole group's answer gave.
std::string BareGroupKey(const std::string& key, const Prefixes& prefixes);

/// The name that a setting of a group's answer has when it is shown by itself. A key
/// without the prefix of groups stays as it is.
std::string SingleKey(const std::string& key, const Prefixes& prefixes);

/// Asks one operation of the library about the settings that a command line names: by
/// themselves, as patterns over the whole group's answer, or all of them. All patterns
/// together cost one such answer.
///
/// Code 2 counts as an answer without an entry, and so does code 7 of a whole group's.
template <typename Map> class SettingSelection
{
  public:
    /// Asks about one setting, or about all with an empty name.
    using Query = std::function<RedfishConfigResult(Map&, const std::string&)>;
    /// Gives the keys of everything that patterns may mean.
    using Universe = std::function<RedfishConfigResult(SettingStringMap&)>;

    SettingSelection(RedfishConfigProc& front, Query query, Universe universe, Answer& answer)
        : m_Prefixes(ShownPrefixes(front)), m_Query(std::move(query)), m_Universe(std::move(universe)), m_Answer(answer)
    {
    }

    /// To be called once.
    /// @param names  as they stand on the command line; none means all settings.
    void Take(const std::vector<std::string>& names)
    {
        if (names.empty())
        {
            TakeAll();
            return;
        }
        std::set<std::string> seen;
        for (const std::string& name : names)
        {
            const std::string bare = BareName(name, m_Prefixes);
            if (!seen.insert(bare).second)
            {
                continue;
            }
            if (IsPattern(name))
            {
                TakePattern(name);
            }
            else
            {
                TakeOne(bare);
            }
        }
    }

    const Map& Entries() const { return m_Entries; }
    /// Bare names that are among all, or that a pattern matched, and have no entry. Known
    /// only for a group that said that it lacks some, and for patterns without entries.
    const std::set<std::string>& Missing() const { return m_Missing; }
    /// How many settings were meant by all or by patterns, where Missing is known.
    std::size_t Meant() const { return m_Meant.size(); }

  private:
    void TakeAll()
    {
        if (!ReadGroup())
        {
            return;
        }
        if (*m_GroupResult == CodePartly)
        {
            NoteMissing([](const std::string&) { return true; });
        }
        m_Entries.swap(m_Group); // no name asks for the group after that
    }

    void TakePattern(const std::string& name)
    {
        if (m_Unreachable || !ReadGroup())
        {
            return;
        }
        const NamePattern pattern(name, m_Prefixes);
        bool found = false;
        for (const auto& [key, value] : m_Group)
        {
            if (pattern.Matches(BareGroupKey(key, m_Prefixes)))
            {
                m_Entries.insert_or_assign(SingleKey(key, m_Prefixes), value);
                found = true;
            }
        }
        if (found && *m_GroupResult != CodePartly)
        {
            return;
        }
        const bool known = NoteMissing([&](const std::string& bare) { return pattern.Matches(bare); });
        if (!found && !known)
        {
            AddFailure(m_Answer, NothingMatches(name));
        }
    }

    void TakeOne(const std::string& bare)
    {
        const std::string shownName = m_Prefixes.First + "." + bare;
        if (m_Unreachable)
        {
            m_Unreachable->Setting = shownName;
            AddFailure(m_Answer, *m_Unreachable);
            return;
        }
        Map single;
        const RedfishConfigResult result = m_Query(single, bare);
        if (IsSuccess(result.ErrorCode()))
        {
            for (auto& [key, value] : single)
            {
                m_Entries.insert_or_assign(key, value);
            }
            return;
        }
        if (result != CodeNothingPending)
        {
            Fail(result, shownName);
        }
    }

    void Fail(const RedfishConfigResult& result, const std::string& shownName)
    {
        Failure failure = m_Causes.Explain(result, shownName);
        if (IsUnreachable(failure.Code))
        {
            m_Unreachable = failure;
        }
        AddFailure(m_Answer, std::move(failure));
    }

    /// @return false when there is no answer of the group; its failure is told once.
    bool ReadGroup()
    {
        if (!m_GroupResult)
        {
            m_GroupResult = m_Query(m_Group, "");
            const int code = m_GroupResult->ErrorCode();
            m_GroupIsGood = IsSuccess(code) || code == CodeNothingPending || code == CodePartly;
            if (!m_GroupIsGood)
            {
                Fail(*m_GroupResult, {});
            }
        }
        return m_GroupIsGood;
    }

    /// @return whether the test holds for a setting at all.
    template <typename Test> bool NoteMissing(const Test& test)
    {
        std::set<std::string> entered;
        for (const auto& entry : m_Group)
        {
            entered.insert(BareGroupKey(entry.first, m_Prefixes));
        }
        bool known = false;
        for (const std::string& bare : ReadUniverse())
        {
            if (test(bare))
            {
                known = true;
                m_Meant.insert(bare);
                if (!entered.contains(bare))
                {
                    m_Missing.insert(bare);
                }
            }
        }
        return known;
    }

    const std::set<std::string>& ReadUniverse()
    {
        if (!std::exchange(m_UniverseIsRead, true))
        {
            SettingStringMap keys;
            m_Universe(keys); // what it lacks only makes a note less exact
            for (const auto& entry : keys)
            {
                m_Known.insert(BareGroupKey(entry.first, m_Prefixes));
            }
        }
        return m_Known;
    }

    Prefixes m_Prefixes;
    Query m_Query;
    Universe m_Universe;
    Answer& m_Answer;
    CauseLog m_Causes;
    Map m_Entries;
    Map m_Group;
    std::optional<RedfishConfigResult> m_GroupResult;
    bool m_GroupIsGood = false;
    std::optional<Failure> m_Unreachable;
    bool m_UniverseIsRead = false;
    std::set<std::string> m_Known;
    std::set<std::string> m_Meant;
    std::set<std::string> m_Missing;
};

} // namespace Tavrine::Tool
