#include "SavedSettings.h"

#include <gtest/gtest.h>

#include <string>

#include "ConfigFile.h"
#include "SavedSettingsWriter.h"
#include "TemporaryFolder.h"

using namespace Tavrine;
using namespace Tavrine::Tool;

namespace
{

SavedSettings Sample()
{
    return {{"2026-01-02T03:04:05Z", "bmc:443", "Maker", "Model \"7\"", "S1", "1.2", "Registry.v1_0_0", "BIOS"},
            {{"BIOS.A", "one"}, {"BIOS.B=c", "two\nlines\\ \xC3\xBC"}, {"BIOS.Empty", ""}}};
}

void ExpectSample(const SavedSettings& read)
{
    const SavedSettings sample = Sample();
    EXPECT_EQ(read.Settings, sample.Settings);
    EXPECT_EQ(read.Header.Time, sample.Header.Time);
    EXPECT_EQ(read.Header.Bmc, sample.Header.Bmc);
    EXPECT_EQ(read.Header.Manufacturer, sample.Header.Manufacturer);
    EXPECT_EQ(read.Header.Model, sample.Header.Model);
    EXPECT_EQ(read.Header.SerialNumber, sample.Header.SerialNumber);
    EXPECT_EQ(read.Header.BiosVersion, sample.Header.BiosVersion);
    EXPECT_EQ(read.Header.Registry, sample.Header.Registry);
    EXPECT_EQ(read.Header.Prefix, sample.Header.Prefix);
}

std::string Fault(const std::string& text)
{
    SavedSettings read;
    return ParseSavedSettings(text, read);
}

} // namespace

TEST(SavedSettings, BothFormsReadBackAsTheyWereWritten)
{
    for (const std::string& text : {SavedDocument(Sample()), SavedLines(Sample())})
    {
        SavedSettings read;
        EXPECT_EQ(ParseSavedSettings(text, read), "") << text;
        ExpectSample(read);
    }
}

TEST(SavedSettings, TheNameOfTheFileChoosesTheForm)
{
    EXPECT_TRUE(WantsLines("a.txt"));
    EXPECT_TRUE(WantsLines("dir.json/a.CONF"));
    EXPECT_FALSE(WantsLines("a.json"));
    EXPECT_FALSE(WantsLines("a.txt.json"));
    EXPECT_FALSE(WantsLines("txt"));
}

TEST(SavedSettings, OutputOfShowIsTaken)
{
    SavedSettings read;
    EXPECT_EQ(ParseSavedSettings(R"({"code":0,"message":"Succeed.","settings":{"BIOS.A":"x","BIOS.N":-7,
                                    "BIOS.Big":18446744073709551615,"BIOS.F":true,"BIOS.Null":null},"errors":[{"a":[1]}]})",
                                 read),
              "");
    EXPECT_EQ(read.Settings,
              (Tavrine::SettingStringMap{
                  {"BIOS.A", "x"}, {"BIOS.Big", "18446744073709551615"}, {"BIOS.F", "true"}, {"BIOS.N", "-7"}}));
    SavedSettings lines;
    EXPECT_EQ(ParseSavedSettings("\xEF\xBB\xBF# mine: no header\n\nBIOS.A=x\r\nBIOS.B=a=b\n", lines), "");
    EXPECT_EQ(lines.Settings, (Tavrine::SettingStringMap{{"BIOS.A", "x"}, {"BIOS.B", "a=b"}}));
}

TEST(SavedSettings, HostileFilesAreRefusedByPlaceAndEntry)
{
    struct Case
    {
        std::string Text;
        std::string Fault;
    };
    const std::string deep(100, '[');
    const Case cases[] = {
        {"", "it has no settings"},
        {"# only a remark\n", "it has no settings"},
        {"{}", "it has no object \"settings\""},
        {R"({"settings":null})", "it has no object \"settings\""},
        {"[]", "line 1: no NAME=VALUE"},
        {"just words", "line 1: no NAME=VALUE"},
        {"=x", "line 1: no NAME=VALUE"},
        {R"({"settings":[]})", R"(line 1: the member "settings" is of the wrong kind)"},
        {R"({"settings":"x"})", R"(line 1: the member "settings" is of the wrong kind)"},
        {R"({"settings":1.5})", R"(line 1: the member "settings" is of the wrong kind)"},
        {R"({"model":7,"settings":{}})", R"(line 1: the member "model" is of the wrong kind)"},
        {R"({"model":{},"settings":{}})", R"(line 1: the member "model" is of the wrong kind)"},
        {R"({"registry":["x"],"settings":{}})", R"(line 1: the member "registry" is of the wrong kind)"},
        {R"({"version":"1","settings":{}})", R"(line 1: the member "version" is of the wrong kind)"},
        {R"({"version":2,"settings":{}})", "line 1: its format version is 2, and this program knows 1"},
        {R"({"format":"other","settings":{}})", R"(line 1: its format is "other", not "tavrine-settings")"},
        {R"({"format":1,"settings":{}})", R"(line 1: the member "format" is of the wrong kind)"},
        {"{\"settings\":{\n\"A\":\"x\",\n\"B\":1.5}}",
         R"(line 3: the value of "B" is no text, whole number or boolean)"},
        {"{\"settings\":{\n\"A\":{}}}", R"(line 2: the value of "A" is no text, whole number or boolean)"},
        {"{\"settings\":{\n\"A\":[1]}}", R"(line 2: the value of "A" is no text, whole number or boolean)"},
        {"{\"settings\":{\n\"A\":\"1\",\n\"A\":\"2\"}}", R"(line 3: the name "A" occurs twice)"},
        {R"({"settings":{},"settings":{}})", R"(line 1: the name "settings" occurs twice)"},
        {"A=1\nB=2\nA=3\n", R"(line 3: the name "A" occurs twice)"},
        {"# tavrine-settings: 1\nA=1\nB=12", R"(line 3: the file was cut off here, since no "# end" follows)"},
        {"# tavrine-settings: 9\nA=1\n", R"(line 1: its format version is "9", and this program knows 1)"},
        {"A=1\nB=\\q\n", R"(line 2: a "\" without one of \, n, t, r and xNN behind it, at the entry "B")"},
        {"A=1\nB=\xFF\n", "line 2: no UTF-8, at the entry \"B\""},
    };
    for (const Case& one : cases)
    {
        EXPECT_EQ(Fault(one.Text), one.Fault) << one.Text;
    }
    const std::pair<std::string, std::string> starts[] = {
        {"{\"settings\":{\n\"A\":\"x\",\n\"B\":\"\xFF\"}}", R"(line 3: no JSON at byte )"},
        {"{\"settings\":{\"A\":\"x\"}", "line 1: no JSON at byte 22, at the entry \"A\": "},
        {"{\"settings\":{\"A\":\"x\"}} y", "line 1: no JSON at byte "},
        {"{\"x\":" + deep, "line 1: no JSON at byte "},
    };
    for (const auto& [text, start] : starts)
    {
        EXPECT_TRUE(Fault(text).starts_with(start)) << Fault(text);
    }
}

TEST(SavedSettings, AFileThatWasCutOffIsRefused)
{
    for (const std::string& text : {SavedDocument(Sample()), SavedLines(Sample())})
    {
        for (std::size_t length = text.find('\n') + 1; length < text.size() - 1; ++length)
        {
            EXPECT_NE(Fault(text.substr(0, length)), "") << length;
        }
        EXPECT_EQ(Fault(text.substr(0, text.size() - 1)), "") << "nothing but the last line's end is missing";
    }
}

/// No flipped bit makes a reader of the file do anything but read it or say where it fails.
TEST(SavedSettings, EveryFlippedBitIsReadOrRefusedWithItsLine)
{
    for (const std::string& text : {SavedDocument(Sample()), SavedLines(Sample())})
    {
        std::size_t refused = 0;
        for (std::size_t bit = 0; bit < text.size() * 8U; ++bit)
        {
            std::string flipped = text;
            flipped[bit / 8] = static_cast<char>(static_cast<unsigned char>(flipped[bit / 8]) ^ (1U << (bit % 8)));
            const std::string fault = Fault(flipped);
            refused += fault.empty() ? 0U : 1U;
            EXPECT_TRUE(fault.empty() || fault.starts_with("line ") || fault.starts_with("it has no ")) << fault;
        }
        EXPECT_GT(refused, 0U);
    }
}

TEST(SavedSettings, OnePrefixIsTakenOffANameTheOneInForceFirst)
{
    struct Row
    {
        const char* FileOwn;
        const char* Name;
        const char* Bare;
    };
    const Row rows[] = {
        {"", "A", "A"},
        {"", "One.A", "A"},
        {"", "two.A", "A"},
        {"", "BIOS.A", "A"},
        {"", "uefi.A", "A"},
        {"", "Rack.A", "Rack.A"},
        {"Rack", "Rack.A", "A"},
        {"Rack", "RACK.A", "A"},
        {"Rack", "One.A", "A"},
        {"Rack", "UEFI.A", "A"},
        {"Rack", "One.Rack.A", "Rack.A"},
        {"Rack", "Rack.BIOS.A", "BIOS.A"},
        {"Rack", "BIOSA", "BIOSA"},
        {"", ".A", ".A"},
    };
    for (const Row& row : rows)
    {
        SavedSettings saved{{}, {{row.Name, "1"}}};
        saved.Header.Prefix = row.FileOwn;
        SettingStringMap bare;
        EXPECT_EQ(TakeBareSettings(saved, {"One", "Two"}, bare), "");
        EXPECT_EQ(bare, (SettingStringMap{{row.Bare, "1"}})) << row.Name;
    }
}

TEST(SavedSettings, OneSettingUnderTwoNamesIsTold)
{
    SettingStringMap bare;
    SavedSettings saved{{}, {{"Rack.A", "1"}, {"UEFI.A", "1"}}};
    EXPECT_EQ(TakeBareSettings(saved, {"One", "Two"}, bare), "");
    bare.clear();
    saved.Header.Prefix = "Rack";
    EXPECT_EQ(TakeBareSettings(saved, {"One", "Two"}, bare), "the setting A stands in it under two names");
}

TEST(SavedSettings, OldNamesAreTakenForTheCurrentOnesWhereThatIsAskedFor)
{
    const tooltest::Configured names("[legacy_names]\nOldA = \"A\"\nOlderA = \"A\"\nOldZ = \"A0\"\n");
    const SavedSettings saved{{}, {{"One.OldA", "1"}, {"B", "2"}, {"UEFI.OldZ", "3"}}};
    SettingStringMap bare;
    EXPECT_EQ(TakeBareSettings(saved, {"One", "Two"}, bare, true), "");
    EXPECT_EQ(bare, (SettingStringMap{{"A", "1"}, {"A0", "3"}, {"B", "2"}}));
    bare.clear();
    EXPECT_EQ(TakeBareSettings(saved, {"One", "Two"}, bare), "");
    EXPECT_EQ(bare, (SettingStringMap{{"B", "2"}, {"OldA", "1"}, {"OldZ", "3"}}));
    for (const char* const other : {"A", "OlderA", "One.OlderA"})
    {
        bare.clear();
        EXPECT_EQ(TakeBareSettings({{}, {{"One.OldA", "1"}, {other, "1"}}}, {"One", "Two"}, bare, true),
                  "the setting A stands in it under two names");
    }
}

TEST(SavedSettings, FilesThatCannotBeReadOrAreTooLargeAreNamed)
{
    const testdata::TemporaryFolder folder;
    const std::string missing = (folder.Path() / "missing.json").string();
    SavedSettings read;
    auto failure = ReadSavedSettings(missing, read);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->Code, 38);
    EXPECT_EQ(failure->Message, "Unable to read the file " + missing + ": No such file or directory");
    failure = ReadSavedSettings(folder.Path().string(), read);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->Message, "Unable to read the file " + folder.Path().string() + ": Is a directory");

    const std::string prefix = "A=";
    const std::string most = folder.Write("most.txt", prefix + std::string(LargestSavedSettings - 2, 'x'));
    EXPECT_FALSE(ReadSavedSettings(most, read));
    EXPECT_EQ(read.Settings.at("A").size(), LargestSavedSettings - 2);
    const std::string large = folder.Write("large.txt", prefix + std::string(LargestSavedSettings - 1, 'x'));
    failure = ReadSavedSettings(large, read);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->Message, "Unable to read the file " + large + ": it is larger than 16777216 bytes");
}
