#include "ChangeFixture.h"

namespace bmctest
{
namespace
{

std::string Text(const json::value& value)
{
    return value.is_string() ? std::string(value.get_string().c_str()) : std::string();
}

std::string Describe(const json::value& message)
{
    const std::string id = Text(At(message, "/MessageId"));
    std::string text = id.substr(id.rfind('.') + 1);
    for (const char* list : {"/MessageArgs", "/RelatedProperties"})
    {
        const json::value items = At(message, list);
        for (const json::value& item : items.is_array() ? items.get_array() : json::array())
        {
            text += '|' + Text(item);
        }
    }
    return text;
}

} // namespace

std::vector<std::string> DescribeMessages(const json::value& messages)
{
    std::vector<std::string> texts;
    for (const json::value& message : messages.is_array() ? messages.get_array() : json::array())
    {
        texts.push_back(Describe(message));
    }
    return texts;
}

std::vector<std::string> Messages(const httplib::Result& answer)
{
    const json::value body = answer ? Parse(answer->body) : json::value();
    const json::value error = At(body, "/error");
    return DescribeMessages(At(error.is_object() ? error : body, "/@Message.ExtendedInfo"));
}

httplib::Result ChangeTest::Patch(const std::string& attributes, const httplib::Headers& headers)
{
    return m_Client->Patch(SettingsPath, headers, "{\"Attributes\":" + attributes + "}", JsonType);
}

httplib::Result ChangeTest::Post(const std::string& path, const std::string& body)
{
    return m_Client->Post(path, body, JsonType);
}

void ChangeTest::Accept(const std::string& attributes)
{
    const auto answer = Patch(attributes);
    ASSERT_TRUE(answer);
    ASSERT_EQ(answer->status, 200) << answer->body;
}

void ChangeTest::Restart(const std::string& type)
{
    const auto answer = Post(ResetPath, "{\"ResetType\":\"" + type + "\"}");
    ASSERT_TRUE(answer);
    ASSERT_EQ(answer->status, 200) << answer->body;
}

json::value ChangeTest::Protected(bool pending)
{
    const auto answer = Post(ReadProtected, pending ? "{\"Pending\":true}" : "{}");
    EXPECT_TRUE(answer);
    EXPECT_EQ(answer ? answer->status : 0, 200);
    return answer ? At(Parse(answer->body), "/Attributes") : json::value();
}

} // namespace bmctest
