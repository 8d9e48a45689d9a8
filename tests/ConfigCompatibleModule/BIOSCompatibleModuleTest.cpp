#include "BIOSCompatibleModule.h"

#include <string>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "GlobalConfig.h"
#include "TemporaryFolder.h"

namespace
{

using namespace Tavrine;
using testing::HasSubstr;

class BIOSCompatibleModuleTest : public testing::Test
{
  protected:
    BIOSCompatibleModuleTest() { m_Options.LegacyNameMode = true; }
    ~BIOSCompatibleModuleTest() override { GlobalConfig::Reload(); }

    void Configure(const std::string& text)
    {
        m_Folder.Write("config.toml", text);
        GlobalConfig::Reload();
    }
    RedfishConfigResult Convert(const std::string& oldName, std::string& newName) const
    {
        return BIOSCompatibleModule(m_Options).ConvertNameFromOldToNew(oldName, newName);
    }

    testdata::TemporaryFolder m_Folder;
    testdata::ScopedEnvironment m_Named{"TAVRINE_CONFIG", (m_Folder.Path() / "config.toml").c_str()};
    Config_Options m_Options;
};

constexpr const char* Names = "[legacy_names]\nHyperThreading = \"Processors_HyperThreading\"\n"
                              "\"BIOS.Old/Name\" = \"BIOS.NewName\"\nChained = \"HyperThreading\"\nEmpty = \"\"\n"
                              "Number = 5\n";

TEST_F(BIOSCompatibleModuleTest, OldNameBecomesTheCurrentOne)
{
    Configure(Names);
    std::string name = "HyperThreading";
    auto result = Convert("HyperThreading", name);
    EXPECT_EQ(result.ErrorCode(), 0);
    EXPECT_EQ(result.ErrorMsg(), "");
    EXPECT_EQ(name, "Processors_HyperThreading");
    EXPECT_EQ(Convert("BIOS.Old/Name", name).ErrorCode(), 0);
    EXPECT_EQ(name, "BIOS.NewName");
}

TEST_F(BIOSCompatibleModuleTest, ConversionIsOneStep)
{
    Configure(Names);
    std::string name;
    EXPECT_EQ(Convert("Chained", name).ErrorCode(), 0);
    EXPECT_EQ(name, "HyperThreading");
}

TEST_F(BIOSCompatibleModuleTest, NameThatIsNotInTheTableStays)
{
    Configure(Names);
    for (const char* oldName :
         {"", "hyperthreading", "HyperThreading ", "Processors_HyperThreading", "Empty", "Number"})
    {
        std::string name = "former";
        auto result = Convert(oldName, name);
        EXPECT_EQ(result.ErrorCode(), 20) << oldName;
        EXPECT_EQ(result.ErrorSetting(), oldName);
        EXPECT_EQ(name, "former") << oldName;
    }
}

TEST_F(BIOSCompatibleModuleTest, NothingIsConvertedWithoutLegacyNameMode)
{
    Configure(Names);
    m_Options.LegacyNameMode = false;
    std::string name = "former";
    EXPECT_EQ(Convert("HyperThreading", name).ErrorCode(), 20);
    EXPECT_EQ(name, "former");
}

TEST_F(BIOSCompatibleModuleTest, BrokenConfigurationIsToldAndTheNameStays)
{
    Configure("[legacy_names\n");
    std::string name = "former";
    auto result = Convert("HyperThreading", name);
    EXPECT_EQ(result.ErrorCode(), 20);
    EXPECT_THAT(result.ErrorMsg(), HasSubstr("config.toml: line 1, column "));
    EXPECT_EQ(name, "former");
}

TEST_F(BIOSCompatibleModuleTest, OptionsAreCopied)
{
    Configure(Names);
    BIOSCompatibleModule module(m_Options);
    m_Options.LegacyNameMode = false;
    std::string name;
    EXPECT_EQ(module.ConvertNameFromOldToNew("HyperThreading", name).ErrorCode(), 0);
    EXPECT_TRUE(std::has_virtual_destructor_v<BIOSCompatibleModule>);
}

} // namespace
