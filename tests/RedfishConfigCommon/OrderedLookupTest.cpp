#include "OrderedLookup.h"

#include <iterator>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "ValueTypes.h"

using namespace Tavrine;

namespace
{

/// Few enough that a walk meets names of the map, of between its entries, of before and behind them, and other cases.
rc::Gen<std::string> Name() { return rc::gen::container<std::string>(rc::gen::elementOf(std::string("abcAB_"))); }

/// How often names are compared by the map's order.
struct CountingOrder
{
    bool operator()(const std::string& left, const std::string& right) const
    {
        ++*Count;
        return left < right;
    }
    int* Count;
};

using CountedMap = std::map<std::string, int, CountingOrder>;

} // namespace

RC_GTEST_PROP(OrderedLookup, FindsWhatTheMapFinds, ())
{
    const auto held = *rc::gen::container<std::vector<std::string>>(Name());
    const auto asked = *rc::gen::container<std::vector<std::string>>(Name());
    SettingValueMap map;
    for (const std::string& name : held)
    {
        map[name] = name;
    }
    OrderedLookup lookup(map);
    for (const std::string& name : asked)
    {
        RC_ASSERT(lookup.Find(name) == map.find(name));
    }
}

RC_GTEST_PROP(OrderedLookup, PutsInWhatTheMapWould, ())
{
    const auto names = *rc::gen::container<std::vector<std::string>>(Name());
    SettingValueMap map;
    SettingValueMap plain;
    auto place = map.begin();
    for (const std::string& name : names)
    {
        place = PutNear(map, place, name, OptionalVar(name));
        plain.insert_or_assign(name, OptionalVar(name));
        RC_ASSERT(map == plain);
        RC_ASSERT(std::prev(place)->second == OptionalVar(name));
    }
}

TEST(OrderedLookup, AWalkInOrderCostsTwoComparisonsForAMissingNameAndNoneForOneThatIsThere)
{
    int count = 0;
    CountedMap map(CountingOrder{&count});
    for (int number = 100; number < 900; number += 2)
    {
        map.emplace_hint(map.end(), std::to_string(number), number);
    }
    OrderedLookup lookup(map);
    count = 0;
    for (int number = 100; number < 900; number += 2)
    {
        EXPECT_NE(lookup.Find(std::to_string(number)), map.end());
    }
    EXPECT_EQ(count, 0);
    OrderedLookup sparse(map);
    for (int number = 101; number < 900; number += 2)
    {
        ASSERT_NE(sparse.Find(std::to_string(number - 1)), map.end());
        count = 0;
        EXPECT_EQ(sparse.Find(std::to_string(number)), map.end());
        EXPECT_LE(count, 2) << number;
    }
}
