// Changes and actions that are answered with tasks.

#include "Tasks.h"
#include "ChangeFixture.h"

namespace
{

using namespace bmctest;
using testing::ElementsAre;
using testing::StartsWith;

class TasksTest : public ChangeTest
{
  protected:
    void SetUp() override
    {
        auto options = PlainOptions();
        options.AnswerWithTasks = true;
        options.TaskLooks = 2;
        StartWith(options);
    }
    /// The monitor that an answer names.
    std::string Monitor(const httplib::Result& answer)
    {
        EXPECT_TRUE(answer);
        EXPECT_EQ(answer ? answer->status : 0, 202);
        const std::string place = answer ? answer->get_header_value("Location") : std::string();
        EXPECT_THAT(place, StartsWith("/redfish/v1/TaskService/TaskMonitors/"));
        EXPECT_EQ(At(answer ? Parse(answer->body) : json::value(), "/TaskState"), "Running");
        return place;
    }
    /// What the monitor answers when it has run out of excuses.
    httplib::Result End(const std::string& monitor)
    {
        for (int look = 0; look < 2; ++look)
        {
            const auto running = m_Client->Get(monitor);
            EXPECT_TRUE(running);
            EXPECT_EQ(running ? running->status : 0, 202);
            EXPECT_EQ(running ? running->get_header_value("Location") : "", monitor);
        }
        return m_Client->Get(monitor);
    }
};

TEST_F(TasksTest, MonitorEndsWithTheAnswerItself)
{
    const std::string monitor = Monitor(Patch(R"({"AssetTag":"new"})"));
    const auto answer = End(monitor);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_THAT(
        Messages(answer),
        ElementsAre("Success", "ResetRequired|/redfish/v1/Systems/1/Actions/ComputerSystem.Reset|ForceRestart"));
    EXPECT_EQ(Pending(), Parse(R"({"AssetTag":"new"})"));
    const auto again = m_Client->Get(monitor);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->body, answer->body);
}

TEST_F(TasksTest, RefusalComesAtTheEndToo)
{
    const auto answer = End(Monitor(Patch(R"({"AssetTag":7})")));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 400);
    EXPECT_THAT(Messages(answer), ElementsAre("PropertyValueTypeError|7|AssetTag|/Attributes/AssetTag"));
    EXPECT_EQ(Pending(), json::object());
}

TEST_F(TasksTest, ActionsAreTasksAsWell)
{
    const auto values = End(Monitor(Post(ReadProtected, "{}")));
    ASSERT_TRUE(values);
    EXPECT_EQ(At(Parse(values->body), "/Attributes/TpmState"), "Enabled");
    for (const auto& [path, body] : {std::pair{WriteProtected, R"({"Attributes":{"TpmClear":true}})"},
                                     {ResetBiosPath, "{}"},
                                     {WriteFilePath, R"({"FileName":"custom_default","Content":"x","Create":true})"},
                                     {ReadFilePath, R"({"FileName":"custom_default"})"},
                                     {ResetPath, R"({"ResetType":"ForceRestart"})"}})
    {
        const auto answer = End(Monitor(Post(path, body)));
        ASSERT_TRUE(answer) << path;
        EXPECT_EQ(answer->status, 200) << path << answer->body;
    }
}

TEST_F(TasksTest, TaskResourceTellsState)
{
    const std::string monitor = Monitor(Patch(R"({"AssetTag":7})"));
    const std::string task = "/redfish/v1/TaskService/Tasks/" + monitor.substr(monitor.rfind('/') + 1);
    const json::value running = GetJson(task);
    EXPECT_EQ(At(running, "/@odata.id"), json::string(task));
    EXPECT_EQ(At(running, "/TaskMonitor"), json::string(monitor));
    EXPECT_EQ(At(running, "/TaskState"), "Running");
    EXPECT_EQ(At(GetJson(task), "/TaskState"), "Running");
    const json::value ended = GetJson(task);
    EXPECT_EQ(At(ended, "/TaskState"), "Exception");
    EXPECT_THAT(DescribeMessages(At(ended, "/Messages")),
                ElementsAre("PropertyValueTypeError|7|AssetTag|/Attributes/AssetTag"));
    const json::value service = GetJson("/redfish/v1/TaskService");
    const json::value tasks = GetJson(At(service, "/Tasks/@odata.id").as_string().c_str());
    EXPECT_EQ(At(tasks, "/Members/0/@odata.id"), json::string(task));
}

TEST_F(TasksTest, UnknownTasksAreNotFound)
{
    for (const char* path : {"/redfish/v1/TaskService/TaskMonitors/1", "/redfish/v1/TaskService/Tasks/1",
                             "/redfish/v1/TaskService/TaskMonitors/x", "/redfish/v1/TaskService/TaskMonitors"})
    {
        const auto answer = m_Client->Get(path);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 404) << path;
    }
}

TEST_F(TasksTest, WithoutTheOptionThereAreNone)
{
    StartWith(PlainOptions());
    Accept(R"({"AssetTag":"new"})");
    const auto answer = m_Client->Get("/redfish/v1/TaskService");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 404);
}

TEST(Tasks, OldOnesAreForgotten)
{
    bmcsim::Tasks tasks(0);
    for (std::size_t i = 0; i <= bmcsim::Tasks::MaxKept; ++i)
    {
        tasks.Begin({});
    }
    EXPECT_EQ(tasks.Ids().size(), bmcsim::Tasks::MaxKept);
    EXPECT_FALSE(tasks.LookAtMonitor("1"));
    EXPECT_TRUE(tasks.LookAtMonitor("2"));
}

} // namespace
