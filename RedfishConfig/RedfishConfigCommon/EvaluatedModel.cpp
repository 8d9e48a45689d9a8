#include "EvaluatedModel.h"

#include <utility>

#include "Log.h"

namespace Tavrine
{

EvaluatedModel::EvaluatedModel(std::shared_ptr<const SettingModel> model) : m_Model(std::move(model)) {}

const DependencyEvaluation& EvaluatedModel::Now(const SettingValueMap& values)
{
    if (!m_Now)
    {
        m_Now.emplace(*m_Model, values);
        if (!m_Now->Settled())
        {
            Log(4, __FILE__, __LINE__).Stream()
                << "Dependencies of the attribute registry did not settle after " << m_Now->Rounds() << " rounds.";
        }
    }
    return *m_Now;
}

} // namespace Tavrine
