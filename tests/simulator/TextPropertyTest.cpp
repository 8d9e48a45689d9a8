// Any text is a value of a text setting without a pattern.

#include "ChangeFixture.h"

#include <rapidcheck.h>

namespace
{

using namespace bmctest;

class TextPropertyTest : public ChangeTest
{
};

/// One code point in UTF-8, of every length and from every odd corner.
std::string Encode(std::uint32_t point)
{
    const auto byte = [](std::uint32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    if (point < 0x80)
    {
        return {byte(point)};
    }
    if (point < 0x800)
    {
        return {byte(0xC0U | (point >> 6U)), byte(0x80U | (point & 0x3FU))};
    }
    if (point < 0x10000)
    {
        return {byte(0xE0U | (point >> 12U)), byte(0x80U | ((point >> 6U) & 0x3FU)), byte(0x80U | (point & 0x3FU))};
    }
    return {byte(0xF0U | (point >> 18U)), byte(0x80U | ((point >> 12U) & 0x3FU)), byte(0x80U | ((point >> 6U) & 0x3FU)),
            byte(0x80U | (point & 0x3FU))};
}

rc::Gen<std::uint32_t> CodePoint()
{
    return rc::gen::weightedOneOf<std::uint32_t>({
        {4, rc::gen::inRange<std::uint32_t>(0, 0x80)},
        {1, rc::gen::inRange<std::uint32_t>(0x80, 0x800)},
        {1, rc::gen::inRange<std::uint32_t>(0x800, 0xD800)},
        {1, rc::gen::inRange<std::uint32_t>(0xE000, 0x10000)},
        {1, rc::gen::inRange<std::uint32_t>(0x10000, 0x110000)},
        {1, rc::gen::element<std::uint32_t>('"', '\\', '/', 0, '\n', 0x7F, 0xFFFF, 0xFEFF, 0x2028)},
    });
}

TEST_F(TextPropertyTest, AnyTextIsReadBackAsPendingAndAsValue)
{
    const bool held = rc::check("any text of at most 255 code points is kept unchanged",
                                [this]
                                {
                                    const auto points = *rc::gen::container<std::vector<std::uint32_t>>(CodePoint());
                                    std::string text;
                                    for (const std::uint32_t point : points)
                                    {
                                        text += Encode(point);
                                    }
                                    const json::string expected(text);
                                    const auto answer = Patch(json::serialize(json::object{{"DeploymentNote", text}}));
                                    RC_ASSERT(answer && answer->status == (points.size() <= 255 ? 200 : 400));
                                    RC_PRE(points.size() <= 255);
                                    RC_ASSERT(At(Pending(), "/DeploymentNote") == expected);
                                    Restart();
                                    RC_ASSERT(At(Effective(), "/DeploymentNote") == expected);
                                });
    EXPECT_TRUE(held);
}

} // namespace
