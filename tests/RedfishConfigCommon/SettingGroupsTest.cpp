#include "SettingGroups.h"

#include <gtest/gtest.h>

#include "RegistryTexts.h"

using namespace Tavrine;
using namespace registrytext;

namespace
{

SettingGroupMap GroupsOf(const std::string& attributes, const std::string& menus)
{
    AttributeRegistry registry;
    RegistryNotes notes;
    std::string error;
    EXPECT_TRUE(ReadAttributeRegistry(Registry(attributes, "", menus), registry, notes, error)) << error;
    return GroupSettings(registry);
}

std::string At(const std::string& name, const std::string& path)
{
    return Attribute(name, ",\"MenuPath\":\"" + path + "\"");
}

} // namespace

TEST(SettingGroups, JoinDisplayNamesWithoutTheRoot)
{
    const std::string menus = Menu("Deep", "./Sys/Boot/Time", "Time") + "," + Menu("Root", "./", "Everything") + "," +
                              Menu("Sys", "./Sys", "System Options") + "," + Menu("Boot", "./Sys/Boot", "Boot/Start");
    const SettingGroupMap groups = GroupsOf(At("Z", "./Sys/Boot/Time") + "," + At("Y", "./Sys/Boot/Time/") + "," +
                                                At("X", "Sys") + "," + At("W", "./") + "," + At("V", ""),
                                            menus);
    EXPECT_EQ(groups, (SettingGroupMap{{"Everything", {"W", "V"}},
                                       {"System Options", {"X"}},
                                       {"System Options/Boot/Start/Time", {"Z", "Y"}}}));
}

TEST(SettingGroups, UnknownMenusStandUnderTheirOwnPathOrOther)
{
    const SettingGroupMap groups =
        GroupsOf(At("A", "./Known/Unknown/") + "," + At("B", "./Known/Unknown") + "," + At("C", "./") + "," +
                     Attribute("D") + "," + Attribute("E", ",\"MenuPath\":7") + "," + At("F", "///"),
                 Menu("Known", "./Known", "Known"));
    EXPECT_EQ(groups, (SettingGroupMap{{"./Known/Unknown", {"A", "B"}}, {"Other", {"C", "D", "E", "F"}}}));
}

TEST(SettingGroups, RegistryWithoutMenusIsOneGroup)
{
    EXPECT_EQ(GroupsOf(At("B", "./Sys") + "," + Attribute("A"), ""), (SettingGroupMap{{"BIOS", {"B", "A"}}}));
}

TEST(SettingGroups, MissingParentMenuIsPassedOver)
{
    EXPECT_EQ(GroupsOf(At("A", "./X/Y/Z"), Menu("X", "./X", "Ex") + "," + Menu("Z", "./X/Y/Z", "Zed")),
              (SettingGroupMap{{"Ex/Zed", {"A"}}}));
}

TEST(SettingGroups, MenusOfOneDisplayNameStayApart)
{
    const std::string menus =
        Menu("S1", "./S1", "Slot") + "," + Menu("S2", "./S2", "Slot") + "," + Menu("S2C", "./S2/C", "Config");
    EXPECT_EQ(GroupsOf(At("A", "./S1") + "," + At("B", "./S2") + "," + At("C", "./S2/C"), menus),
              (SettingGroupMap{{"Slot", {"A"}}, {"Slot (./S2)", {"B"}}, {"Slot/Config", {"C"}}}));
}

TEST(SettingGroups, MenusThatAreTooDeepCountAsUnknown)
{
    std::string path = ".";
    for (std::size_t depth = 0; depth < MaxMenuDepth; ++depth)
    {
        path += "/m";
    }
    EXPECT_EQ(GroupsOf(At("A", path), Menu("M", path, "Deepest")), (SettingGroupMap{{"Deepest", {"A"}}}));
    path += "/m";
    EXPECT_EQ(GroupsOf(At("A", path), Menu("M", path, "Deepest") + "," + Menu("N", "./n", "N")),
              (SettingGroupMap{{path, {"A"}}}));
}
