#include "SettingPointer.h"

#include <string>

#include <gtest/gtest.h>

using namespace Tavrine;

TEST(SettingPointer, EachShapeInWhichServicesNameASetting)
{
    struct Row
    {
        const char* Pointer;
        const char* Setting;
    };
    constexpr Row rows[] = {
        // As it ought to be, and without its "#" or "/".
        {"#/Attributes/X", "X"},
        {"/Attributes/X", "X"},
        {"#Attributes/X", "X"},
        {"Attributes/X", "X"},
        {"#/Attributes/A.1.B", "A.1.B"},
        {"/redfish/v1/Systems/1/Bios/Settings#/Attributes/X", "X"},
        {"https://bmc/redfish/v1/Systems/1/Bios#/Attributes/X", "X"},
        {"Bios#/Attributes/X", "X"},
        // Without "Attributes".
        {"#/X", "X"},
        {"/X", "X"},
        {"#X", "X"},
        {"X", "X"},
        // Escaped or not.
        {"#/Attributes/I~1O", "I/O"},
        {"#/I~1O", "I/O"},
        {"I~1O", "I/O"},
        {"#/Attributes/a~0b", "a~b"},
        {"#/Attributes/a~01b", "a~1b"},
        {"#/Attributes/CD/DVD", "CD/DVD"},
        {"CD/DVD", "CD/DVD"},
        {"#/Attributes/a~", "a~"},
        {"#/Attributes/a~2", "a~2"},
        {"#/Attributes/~/x", "~/x"},
        // An index behind it is known to be one only where a name's own "/" would have been escaped.
        {"#/Attributes/C/0", "C/0"},
        {"#/Attributes/A~1b/0", "A/b"},
        {"/Attributes/A~0b/c/1", "A~b"},
        // About something else, or about nothing.
        {"#/Attributes", ""},
        {"/Attributes", ""},
        {"Attributes", ""},
        {"#/Attributes/", ""},
        {"#/Oem/X/Y", ""},
        {"/Other/D", ""},
        {"#/Oem/Attributes/X", ""},
        {"/redfish/v1/Systems/1/Bios", ""},
        {"/redfish/v1/Systems/1/Bios#/Oem/X", ""},
        {"#/", ""},
        {"/", ""},
        {"#", ""},
        {"", ""},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(SettingOfPointer(row.Pointer), row.Setting) << row.Pointer;
    }
}

TEST(SettingPointer, NamesAreTakenUpToTheLimit)
{
    const std::string name(256, 'a');
    for (const char* lead : {"", "/", "#/Attributes/"})
    {
        EXPECT_EQ(SettingOfPointer(lead + name), name) << lead;
        EXPECT_EQ(SettingOfPointer(lead + name + 'a'), "") << lead;
    }
}
