#pragma once

#include <iterator>
#include <string>
#include <utility>

namespace Tavrine
{

/// Finds names in a map of settings. One that stands right behind the name found before it costs one
/// comparison of bytes, and one that is missing there two of the map's own, so that a walk through names in
/// the map's order is linear; any other is found as by the map itself. The map outlives this object and keeps
/// its entries meanwhile.
template <class Map> class OrderedLookup
{
  public:
    using Iterator = decltype(std::declval<Map&>().begin());

    explicit OrderedLookup(Map& map) : m_Map(map), m_Next(map.begin()) {}

    /// @return as Map::find.
    Iterator Find(const std::string& name)
    {
        const bool isNext = m_Next != m_Map.end() && m_Next->first == name;
        const Iterator found = isNext ? m_Next : BelongsBeforeNext(name) ? m_Map.end() : m_Map.find(name);
        if (found != m_Map.end())
        {
            m_Next = std::next(found);
        }
        return found;
    }

  private:
    /// Between two neighbours of the map nothing stands.
    bool BelongsBeforeNext(const std::string& name) const
    {
        const auto precedes = m_Map.key_comp();
        return (m_Next == m_Map.end() || precedes(name, m_Next->first)) &&
               (m_Next == m_Map.begin() || precedes(std::prev(m_Next)->first, name));
    }

    Map& m_Map;
    Iterator m_Next;
};

/// As insert_or_assign. A name that stands or belongs at `place` costs one to three comparisons, so that to put in
/// names of the map's order, each at what this has returned for the one before, is linear.
/// @return behind what was put in.
template <class Map, class Value>
typename Map::iterator PutNear(Map& map, typename Map::iterator place, const std::string& name, const Value& value)
{
    if (place != map.end() && place->first == name)
    {
        place->second = value;
        return std::next(place);
    }
    const auto before = map.size();
    const auto put = map.emplace_hint(place, name, value);
    if (map.size() == before)
    {
        put->second = value;
    }
    return std::next(put);
}

} // namespace Tavrine
