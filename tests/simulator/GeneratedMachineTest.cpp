// Machines made up for measurements.

#include "ChangeFixture.h"

namespace
{

using namespace bmctest;

class GeneratedMachineTest : public ChangeTest
{
  protected:
    void StartGenerated(unsigned int attributes)
    {
        auto options = PlainOptions();
        options.Attributes = attributes;
        StartWith(options);
    }
    std::size_t RegistrySize()
    {
        const json::value file =
            GetJson(At(GetJson("/redfish/v1/Registries"), "/Members/0/@odata.id").as_string().c_str());
        const auto registry = m_Client->Get(At(file, "/Location/0/Uri").as_string().c_str());
        EXPECT_TRUE(registry);
        m_Registry = registry ? Parse(registry->body) : json::value();
        return registry ? registry->body.size() : 0;
    }

    json::value m_Registry;
};

TEST_F(GeneratedMachineTest, HasAsManyAttributesAsAskedFor)
{
    for (const unsigned int count : {1U, 49U, 50U, 51U, 1000U})
    {
        StartGenerated(count);
        RegistrySize();
        EXPECT_EQ(At(m_Registry, "/RegistryEntries/Attributes").as_array().size(), count);
        EXPECT_EQ(Effective().as_object().size() + Protected(false).as_object().size(), count);
        EXPECT_EQ(At(m_Registry, "/Id"), At(GetJson(BiosPath), "/AttributeRegistry"));
    }
}

TEST_F(GeneratedMachineTest, RegistryGrowsInProportion)
{
    StartGenerated(1000);
    const std::size_t small = RegistrySize();
    StartGenerated(4000);
    const std::size_t large = RegistrySize();
    EXPECT_GT(large, small * 39 / 10);
    EXPECT_LT(large, small * 41 / 10);
}

TEST_F(GeneratedMachineTest, IsTheSameEachTime)
{
    StartGenerated(200);
    const json::value bios = GetJson(BiosPath);
    StartGenerated(200);
    EXPECT_EQ(GetJson(BiosPath), bios);
}

TEST_F(GeneratedMachineTest, AllItsValuesCanBeWrittenBackAtOnce)
{
    StartGenerated(3000);
    const json::value all = Effective();
    Accept(json::serialize(all));
    EXPECT_EQ(Pending(), all);
    Restart();
    EXPECT_EQ(Effective(), all);
}

TEST_F(GeneratedMachineTest, NumberHasItsLimits)
{
    auto options = PlainOptions();
    options.Attributes = bmcsim::BmcSimulator::MaxAttributes + 1;
    EXPECT_THAT(StartError(options), testing::HasSubstr("100000"));
    options.Attributes = 5;
    options.MachineDir = BMCSIM_MACHINE_DIR;
    EXPECT_THAT(StartError(options), testing::HasSubstr(BMCSIM_MACHINE_DIR));
}

} // namespace
