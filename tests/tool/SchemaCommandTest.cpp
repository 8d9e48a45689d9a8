#include "SchemaCommand.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

#include "Fronts.h"
#include "KnowingFront.h"
#include "Options.h"
#include "SharedData.h"
#include "SmallRegistry.h"
#include "TemporaryFolder.h"

using namespace Tavrine::Tool;
using tooltest::KnowingFront;

namespace
{

KnowingFront Machine()
{
    KnowingFront front("One", "Two");
    front.m_Options.OutputFormat = FormatOf(OutputForm::Registry);
    front.Registry = {{0, "", ""}, tooltest::SmallRegistry};
    return front;
}

} // namespace

TEST(SchemaCommand, TheTextGoesOutAsItStands)
{
    KnowingFront front = Machine();
    EXPECT_EQ(ExportSchema(front, {}).Text, std::string(tooltest::SmallRegistry) + "\n");
    Options options;
    options.Json = true;
    EXPECT_EQ(ExportSchema(front, options).Data, boost::json::parse(tooltest::SmallRegistry).as_object());
}

TEST(SchemaCommand, AFileReceivesIt)
{
    const testdata::TemporaryFolder folder;
    KnowingFront front = Machine();
    Options options;
    options.Names = {(folder.Path() / "registry.json").string()};
    const Answer answer = ExportSchema(front, options);
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "");
    EXPECT_EQ(testdata::ReadFile(options.Names[0]), std::string(tooltest::SmallRegistry) + "\n");
    options.Json = true;
    EXPECT_EQ(ExportSchema(front, options).Data.at("file"), options.Names[0].c_str());
}

TEST(SchemaCommand, AFileThatCannotBeWrittenIsNamed)
{
    KnowingFront front = Machine();
    Options options;
    options.Names = {"/nonexistent/registry.json"};
    const Answer answer = ExportSchema(front, options);
    EXPECT_EQ(answer.Code, 38);
    EXPECT_EQ(answer.Message, "Unable to write the file /nonexistent/registry.json: No such file or directory");
}

TEST(SchemaCommand, AFailureWritesNothing)
{
    const testdata::TemporaryFolder folder;
    KnowingFront front = Machine();
    front.Registry = {{28, "POST /x/ZorvanBios.GetProtectedAttributes was refused by h (404 Not Found).", ""}, ""};
    Options options;
    options.Names = {folder.Write("registry.json", "former")};
    const Answer answer = ExportSchema(front, options);
    EXPECT_EQ(answer.Code, 28);
    EXPECT_NE(StderrLines(answer).find("--system-type bios"), std::string::npos);
    EXPECT_EQ(testdata::ReadFile(options.Names[0]), "former");
}

TEST(SchemaCommand, TakesOneFile)
{
    Options options;
    EXPECT_EQ(SchemaFault(options), "");
    options.Names = {"a"};
    EXPECT_EQ(SchemaFault(options), "");
    options.Names = {"a", "b"};
    EXPECT_NE(SchemaFault(options), "");
    options.Names = {""};
    EXPECT_NE(SchemaFault(options), "");
}
