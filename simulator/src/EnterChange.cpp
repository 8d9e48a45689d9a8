#include "EnterChange.h"

#include "ServicePaths.h"

namespace bmcsim
{

HttpResponse EnterChange(const Machine& machine, const AttributeRules& rules, Values& values, Place place,
                         const boost::json::object& change)
{
    if (values.Starting)
    {
        return RedfishError(409, Base::ResourceInUse);
    }
    const std::vector<Notice> faults = CheckChange(rules, values, place, change);
    if (!faults.empty())
    {
        return RedfishErrors(400, faults);
    }
    StageChange(rules, values, place, change);
    return change.empty()
               ? DoneAnswer({{Base::Success}})
               : DoneAnswer({{Base::Success}, {Base::ResetRequired, {ResetAction(machine).Target, "ForceRestart"}}});
}

} // namespace bmcsim
