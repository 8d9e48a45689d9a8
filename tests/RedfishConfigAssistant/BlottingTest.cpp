#include "Blotting.h"

#include <gtest/gtest.h>

using namespace Tavrine;

namespace
{

struct BlottingRow
{
    const char* Body;
    const char* Text;
    const char* Expected;
};

} // namespace

TEST(Blotting, ValuesOfABody)
{
    constexpr BlottingRow rows[] = {
        {R"({"Attributes":{"AdminPassword":"hunter22"}})", "Is 'hunter22' AdminPassword? hunter22!",
         "Is '********' AdminPassword? ********!"},
        {R"([["deep",{"a":["deeper"]}]])", "deep and deeper", "******** and ********"},
        {R"("alone")", "alone", "********"},
        // Names and values that are no texts.
        {R"({"name":1,"other":true,"third":1234})", "name other third 1234", "name other third 1234"},
        // A word of its own alone.
        {R"({"a":"Boot"})", "BootMode is not Boot, XBoot, Boot_2 or Boot.",
         "BootMode is not ********, XBoot, Boot_2 or ********."},
        {R"({"a":"!x y!"})", "a!x y!a", "a********a"},
        {R"({"a":"häß!"})", "häß!", "********"},
        // Too short to be told from the BMC's own words.
        {R"({"a":"not","b":""})", "It is not so.", "It is not so."},
        {R"({"a":"nots"})", "It is nots so.", "It is ******** so."},
        // What is left of the longer one would be shown.
        {R"({"a":"hunter","b":"hunter-22"})", "hunter-22", "********"},
        {R"({"a":"q\"u\\o"})", R"(q"u\o or q\"u\\o)", "******** or ********"},
        {R"({"a":"****"})", "********", "****************"},
        {"no JSON", "no JSON", "no JSON"},
        {"", "text", "text"},
    };
    for (const BlottingRow& row : rows)
    {
        std::string text = row.Text;
        BodySecrets(row.Body).BlotIn(text);
        EXPECT_EQ(text, row.Expected) << row.Body;
    }
}
