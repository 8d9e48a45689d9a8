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

EvaluatedModel::EvaluatedModel(std::shared_ptr<const SettingModel> model)
    : m_Model(std::move(model)), m_Settings(m_Model->Registry().Attributes.size())
{
}

const DependencyEvaluation& EvaluatedModel::Now(const SettingValueMap& values)
{
    if (m_Now && m_Moved.empty())
    {
        return *m_Now;
    }
    if (m_Now)
    {
        m_Now->MoveValues(std::exchange(m_Moved, {}), values);
    }
    else
    {
        m_Now.emplace(*m_Model, values);
    }
    if (!m_Now->Settled())
    {
        Log(4, __FILE__, __LINE__).Stream()
            << "Dependencies of the attribute registry did not settle after " << m_Now->Rounds() << " rounds.";
    }
    return *m_Now;
}

const OptionalVar* EvaluatedModel::ValueOf(const std::string& name, const SettingValueMap& values)
{
    if (!m_Values)
    {
        m_Values.emplace(values);
    }
    const auto found = m_Values->Find(name);
    return found != values.end() ? &found->second : nullptr;
}

void EvaluatedModel::ValuesMoved(std::vector<std::string> names)
{
    m_Moved.insert(m_Moved.end(), std::make_move_iterator(names.begin()), std::make_move_iterator(names.end()));
    // To look for that many is no better than to look at all.
    if (!m_Now || m_Moved.size() > FewNames)
    {
        m_Now.reset();
        m_Moved.clear();
    }
}

} // namespace Tavrine
