#include "EvaluatedModel.h"

#include <cstddef>
#include <iterator>
#include <utility>

#include "Log.h"

namespace Tavrine
{

namespace
{

constexpr std::size_t FewNames = 100;

} // namespace

EvaluatedModel::EvaluatedModel(std::shared_ptr<const SettingModel> model, const SettingValueMap& values)
    : m_Model(std::move(model)), m_Values(values), m_Lookup(values), m_Settings(m_Model->Registry().Attributes.size())
{
}

const DependencyEvaluation& EvaluatedModel::Now()
{
    if (m_Now && m_Moved.empty())
    {
        return *m_Now;
    }
    // Without memory it is given up, and worked out anew at the next question.
    std::optional<DependencyEvaluation> now = std::exchange(m_Now, std::nullopt);
    if (now)
    {
        now->MoveValues(m_Moved, m_Values);
    }
    else
    {
        now.emplace(*m_Model, m_Values);
    }
    m_Moved.clear();
    m_Now = std::move(now);
    if (!m_Now->Settled())
    {
        Log(4, __FILE__, __LINE__).Stream()
            << "Dependencies of the attribute registry did not settle after " << m_Now->Rounds() << " rounds.";
    }
    return *m_Now;
}

const OptionalVar* EvaluatedModel::ValueOf(const std::string& name)
{
    const auto found = m_Lookup.Find(name);
    return found != m_Values.end() ? &found->second : nullptr;
}

void EvaluatedModel::ValuesMoved(std::vector<std::string> names)
{
    m_Moved.insert(m_Moved.end(), std::make_move_iterator(names.begin()), std::make_move_iterator(names.end()));
    // To look for that many is no better than to look at all.
    if (!m_Now || m_Moved.size() > FewNames)
    {
        AllMoved();
    }
}

void EvaluatedModel::AllMoved()
{
    m_Now.reset();
    m_Moved.clear();
}

} // namespace Tavrine
