#include "LoadDefaultCommand.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Options.h"

using namespace Tavrine::Tool;

TEST(LoadDefaultFault, WhatStandsForAllStandsAlone)
{
    struct Case
    {
        std::vector<std::string> Names;
        bool Post;
        bool Yes;
        std::string Fault;
    };
    const Case cases[] = {
        {{"BIOS"}, false, true, ""},
        {{"BIOS"}, true, true, ""},
        {{"bios"}, false, true, "bios is not the prefix in force, which is BIOS"},
        {{"BIOS"},
         false,
         false,
         "This resets all settings of the system to their defaults; without a terminal to ask on it needs --yes"},
        {{"BIOS"},
         true,
         false,
         "This sets all settings of the system to their defaults at its next start; without a terminal to ask on it "
         "needs --yes"},
        {{"UEFI"}, false, true, "UEFI is not the prefix in force, which is BIOS"},
        {{"BIOS", "A"}, false, true, "BIOS stands for all settings and takes no other names beside it"},
        {{"A", "uefi"}, false, true, "uefi stands for all settings and takes no other names beside it"},
        {{"A*"}, false, true, "loaddefault takes no patterns"},
        {{""}, false, true, "loaddefault needs names that are not empty"},
        {{"BIOS."}, false, true, "loaddefault needs names that are not empty"},
        {{"A"}, true, true, "--post needs the one name BIOS"},
        {{"A", "BIOS.B"}, false, false, ""},
    };
    for (const Case& one : cases)
    {
        Options options;
        options.Names = one.Names;
        options.Post = one.Post;
        options.Yes = one.Yes;
        EXPECT_EQ(LoadDefaultFault(options), one.Fault) << one.Names.front();
    }
}
