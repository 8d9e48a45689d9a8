#include "CustomDefaultCommand.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "FakeFront.h"
#include "Options.h"
#include "SharedData.h"
#include "TemporaryFolder.h"

using namespace Tavrine::Tool;
using namespace tooltest;

namespace
{

/// A BMC with a file of custom defaults, as the library hands it over.
class FileFront : public FakeFront
{
  public:
    RedfishConfigResult ImportUEFICustomDefaultFile(const std::string& content) override
    {
        Imported.push_back(content);
        return Result;
    }
    RedfishConfigResult ExportUEFICustomDefaultFile(std::string& content) override
    {
        content = Exported;
        return Result;
    }

    RedfishConfigResult Result{0, "", ""};
    std::string Exported;
    std::vector<std::string> Imported;
};

Options OptionsFor(const std::string& way, const std::string& file)
{
    Options options;
    options.Names = {way, file};
    return options;
}

} // namespace

TEST(CustomDefaultCommand, TakesAWayAndOneFile)
{
    struct Case
    {
        std::vector<std::string> Names;
        bool Good;
    };
    const Case cases[] = {{{"export", "f"}, true},  {{"import", "f"}, true},       {{"import", "-"}, true},
                          {{"export"}, false},      {{"import", "a", "b"}, false}, {{"carry", "f"}, false},
                          {{"EXPORT", "f"}, false}, {{"export", ""}, false}};
    for (const Case& one : cases)
    {
        Options options;
        options.Names = one.Names;
        EXPECT_EQ(CustomDefaultFault(options), one.Good ? "" : "custom-default takes export or import, and one file")
            << one.Names.front();
    }
    Options both = OptionsFor("import", "-");
    both.PasswordFile = "-";
    EXPECT_EQ(CustomDefaultFault(both), "--password-file - and import - cannot both read standard input");
    both.Names[0] = "export";
    EXPECT_EQ(CustomDefaultFault(both), "");
}

TEST(CustomDefaultCommand, TheTextContentOfAnAnswerIsTheFile)
{
    EXPECT_EQ(FileInAnswer(R"({"Name":"x","Content":"a\nb\u00fc"})"), "a\nb\xC3\xBC");
    EXPECT_EQ(FileInAnswer(R"({"Content":""})"), "");
    for (const std::string other :
         {"plain", R"({"Content":7})", R"({"content":"x"})", R"(["Content"])", R"("Content")"})
    {
        EXPECT_EQ(FileInAnswer(other), other);
    }
    for (const std::string damaged : {"", " \n", R"({"Content":"x")"})
    {
        EXPECT_EQ(FileInAnswer(damaged), std::nullopt) << damaged;
    }
}

TEST(CustomDefaultCommand, AnExportIsWrittenForItsOwnerAlone)
{
    const testdata::TemporaryFolder folder;
    const std::string file = (folder.Path() / "out").string();
    FileFront front;
    front.Exported = R"({"Content":"the file"})";
    const Answer answer = CarryCustomDefault(front, OptionsFor("export", file));
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "");
    EXPECT_EQ(testdata::ReadFile(file), "the file");
    struct stat kind = {};
    ASSERT_EQ(stat(file.c_str(), &kind), 0);
    EXPECT_EQ(kind.st_mode & 0777U, 0600U);
    EXPECT_EQ(CarryCustomDefault(front, OptionsFor("export", "-")).Text, "the file");
}

TEST(CustomDefaultCommand, AnExportThatFailsLeavesAnExistingFile)
{
    const testdata::TemporaryFolder folder;
    const std::string file = folder.Write("out", "what was there");
    FileFront front;
    front.Exported = R"({"Content":"half"})";
    front.Result = RedfishConfigResult(26, "gone", "");
    const Answer answer = CarryCustomDefault(front, OptionsFor("export", file));
    EXPECT_EQ(answer.Code, 26);
    EXPECT_EQ(testdata::ReadFile(file), "what was there");
    front.Result = 0;
    front.Exported = R"({"Content":"half)";
    EXPECT_EQ(CarryCustomDefault(front, OptionsFor("export", file)).Code, 27);
    EXPECT_EQ(testdata::ReadFile(file), "what was there");
    front.Exported = R"({"Content":"whole"})";
    const Answer nowhere = CarryCustomDefault(front, OptionsFor("export", file + "/no"));
    EXPECT_EQ(nowhere.Code, 38);
    EXPECT_EQ(nowhere.Message, "Unable to write the file " + file + "/no: Not a directory");
}

TEST(CustomDefaultCommand, AnImportHandsTheFileOver)
{
    const testdata::TemporaryFolder folder;
    FileFront front;
    const std::string content = "a \"quoted\"\nline\\ \xC3\xBC\t";
    EXPECT_EQ(CarryCustomDefault(front, OptionsFor("import", folder.Write("in", content))).Code, 0);
    EXPECT_EQ(front.Imported, std::vector{content});
    front.Result = RedfishConfigResult(28, "refused", "");
    EXPECT_EQ(CarryCustomDefault(front, OptionsFor("import", folder.Write("in", content))).Code, 28);
}

TEST(CustomDefaultCommand, AFileThatCannotBeSentIsNotSent)
{
    const testdata::TemporaryFolder folder;
    const std::string missing = (folder.Path() / "missing").string();
    FileFront front;
    EXPECT_EQ(CarryCustomDefault(front, OptionsFor("import", missing)).Message,
              "Unable to read the file " + missing + ": No such file or directory");
    const std::string odd = folder.Write("odd", "a\xFF");
    const Answer refused = CarryCustomDefault(front, OptionsFor("import", odd));
    EXPECT_EQ(refused.Code, 16);
    EXPECT_EQ(refused.Message, "The file " + odd + " cannot be sent: it is no text in UTF-8");
    const std::string large = folder.Write("large", "");
    std::filesystem::resize_file(large, (std::uintmax_t{16} << 20U) + 1U);
    EXPECT_EQ(CarryCustomDefault(front, OptionsFor("import", large)).Code, 38);
    EXPECT_TRUE(front.Imported.empty());
}

TEST(CustomDefaultCommand, OnlyAnEmptyPlainFileEmptiesWhatTheBmcKeeps)
{
    const testdata::TemporaryFolder folder;
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    close(ends[1]); // as a command that failed does
    const std::string pipe = "/dev/fd/" + std::to_string(ends[0]);
    FileFront front;
    const Answer fromPipe = CarryCustomDefault(front, OptionsFor("import", pipe));
    close(ends[0]);
    EXPECT_EQ(fromPipe.Code, 16);
    EXPECT_EQ(fromPipe.Message,
              "The file " + pipe + " is empty and no plain file; only an empty plain file empties what the BMC keeps");
    EXPECT_EQ(CarryCustomDefault(front, OptionsFor("import", "/dev/null")).Code, 16);
    EXPECT_TRUE(front.Imported.empty());
    EXPECT_EQ(CarryCustomDefault(front, OptionsFor("import", folder.Write("empty", ""))).Code, 0);
    EXPECT_EQ(front.Imported, std::vector{std::string()});
}

/// Whatever the BMC's answer looks like, what an export writes and an import sends are one.
TEST(CustomDefaultCommand, AnImportSendsWhatAnExportWrote)
{
    const testdata::TemporaryFolder folder;
    const std::string file = (folder.Path() / "file").string();
    for (const std::string answer :
         {R"({"Content":"{\"Content\":\"inner\"}"})", R"({"Other":1})", R"({"Content":""})", "text\n"})
    {
        FileFront front;
        front.Exported = answer;
        EXPECT_EQ(CarryCustomDefault(front, OptionsFor("export", file)).Code, 0);
        EXPECT_EQ(CarryCustomDefault(front, OptionsFor("import", file)).Code, 0);
        EXPECT_EQ(front.Imported, std::vector{FileInAnswer(answer).value()});
    }
}
