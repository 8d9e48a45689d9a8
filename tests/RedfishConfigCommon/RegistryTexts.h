#pragma once

#include <string>

namespace registrytext
{

/// A registry of these elements, each a list of JSON objects without brackets.
inline std::string Registry(const std::string& attributes, const std::string& dependencies = "",
                            const std::string& menus = "")
{
    return R"({"RegistryEntries":{"Attributes":[)" + attributes + R"(],"Menus":[)" + menus + R"(],"Dependencies":[)" +
           dependencies + "]}}";
}

/// An attribute; `more` are further members, each with its leading comma.
inline std::string Attribute(const std::string& name, const std::string& more = "")
{
    return R"({"AttributeName":")" + name + R"(","Type":"String")" + more + "}";
}

/// An attribute of another type.
inline std::string Typed(const std::string& name, const std::string& type, const std::string& more = "")
{
    return R"({"AttributeName":")" + name + R"(","Type":")" + type + "\"" + more + "}";
}

inline std::string Menu(const std::string& name, const std::string& path, const std::string& display,
                        const std::string& more = "")
{
    return R"({"MenuName":")" + name + R"(","MenuPath":")" + path + R"(","DisplayName":")" + display + "\"" + more +
           "}";
}

/// One term; `value` is JSON, `terms` is "", "AND" or "OR".
inline std::string Term(const std::string& from, const std::string& condition, const std::string& value,
                        const std::string& terms = "", const std::string& property = "CurrentValue")
{
    return (terms.empty() ? "{" : R"({"MapTerms":")" + terms + "\",") + R"("MapFromAttribute":")" + from +
           R"(","MapFromProperty":")" + property + R"(","MapFromCondition":")" + condition + R"(","MapFromValue":)" +
           value + "}";
}

inline std::string Dependency(const std::string& terms, const std::string& to, const std::string& property,
                              const std::string& value)
{
    return R"({"Type":"Map","DependencyFor":"Ignored","Dependency":{"MapFrom":[)" + terms + R"(],"MapToAttribute":")" +
           to + R"(","MapToProperty":")" + property + R"(","MapToValue":)" + value + "}}";
}

} // namespace registrytext
