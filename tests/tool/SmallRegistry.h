#pragma once

namespace tooltest
{

/// A registry with current values, as the library gives it: dependencies of an attribute
/// and of a menu, numbers beyond 64 bits, texts in several scripts.
inline constexpr const char* SmallRegistry = R"({"Id":"Small.v1_0_0","Language":"en","RegistryEntries":{
    "Attributes":[
    {"AttributeName":"Mode","Type":"Enumeration","DisplayName":"Boot Mode","MenuPath":"./Boot","CurrentValue":"Legacy",
     "DefaultValue":"Uefi","HelpText":"How the system starts.\nSecond line.","WarningText":"Think twice.",
     "Value":[{"ValueName":"Uefi","ValueDisplayName":"UEFI Mode"},{"ValueName":"Legacy"}]},
    {"AttributeName":"Secure","Type":"Boolean","DisplayName":"セキュア","MenuPath":"./Boot","CurrentValue":false},
    {"AttributeName":"Timeout","Type":"Integer","DisplayName":"Timeout","MenuPath":"./Boot/Deep","CurrentValue":16,
     "DefaultValue":5,"LowerBound":0,"UpperBound":18446744073709551615,"ScalarIncrement":1},
    {"AttributeName":"Fixed","Type":"String","DisplayName":"Fixed","MenuPath":"./Else","ReadOnly":true,"GrayOut":true,
     "CurrentValue":"x"},
    {"AttributeName":"Lock","Type":"Password","DisplayName":"Lock","MenuPath":"./Else","CurrentValue":"geheim",
     "MinLength":1,"MaxLength":8},
    {"AttributeName":"Seal","Type":"String","DisplayName":"Seal","MenuPath":"./Else",
     "Oem":{"Zorvan":{"Protected":true}}}],
    "Menus":[{"MenuName":"Root","DisplayName":"Setup","MenuPath":"./"},
             {"MenuName":"BootMenu","DisplayName":"Boot Options","MenuPath":"./Boot"},
             {"MenuName":"DeepMenu","DisplayName":"Deep","MenuPath":"./Boot/Deep"},
             {"MenuName":"Else","DisplayName":"Else","MenuPath":"./Else"}],
    "Dependencies":[
    {"DependencyFor":"Secure","Type":"Map","Dependency":{"MapFrom":[{"MapFromAttribute":"Mode",
      "MapFromProperty":"CurrentValue","MapFromCondition":"EQU","MapFromValue":"Legacy"}],
      "MapToAttribute":"Secure","MapToProperty":"ReadOnly","MapToValue":true}},
    {"DependencyFor":"DeepMenu","Type":"Map","Dependency":{"MapFrom":[{"MapFromAttribute":"Fixed",
      "MapFromProperty":"CurrentValue","MapFromCondition":"EQU","MapFromValue":"y"}],
      "MapToAttribute":"DeepMenu","MapToProperty":"Hidden","MapToValue":true}}]}})";

} // namespace tooltest
