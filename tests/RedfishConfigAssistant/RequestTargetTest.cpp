#include "RequestTarget.h"

#include <gtest/gtest.h>

using namespace Tavrine;

TEST(RequestTarget, PathsThatMayBeRequested)
{
    for (const char* path : {"/", "/redfish/v1/Systems/1/Bios", "/redfish/v1/", "//double", "/a?b=c&d", "/%20x",
                             "/a\xc3\xa4", "/x;y=1", "/@odata", "/a:b@c"})
    {
        EXPECT_EQ(PathFault(path), "") << path;
    }
    EXPECT_EQ(PathFault("/" + std::string(8191, 'a')), "");
}

TEST(RequestTarget, PathsThatMayNot)
{
    for (const char* path : {"", "redfish/v1", "http://evil/x", "https://127.0.0.1/x", "@evil/", ".evil.example/x",
                             ":80/x", "/a b", "/a\r\nX-Evil: 1", "/a\nb", "/a\tb", " /a", "/a\x7f", "\\evil", "?x"})
    {
        EXPECT_NE(PathFault(path), "") << path;
    }
    EXPECT_NE(PathFault(std::string_view("/a\0b", 4)), "");
    EXPECT_NE(PathFault("/" + std::string(8192, 'a')), "");
}

TEST(RequestTarget, Hosts)
{
    for (const char* host : {"bmc", "bmc.example.org", "10.0.0.1", "::1", "fe80::1%eth0", "b-m_c"})
    {
        EXPECT_EQ(HostFault(host), "") << host;
    }
    for (const char* host : {"", "a b", "a/b", "user@host", "[::1]", "a?b", "a#b", "a\nb", "a\\b"})
    {
        EXPECT_NE(HostFault(host), "") << host;
    }
    EXPECT_EQ(HostFault(std::string(255, 'a')), "");
    EXPECT_NE(HostFault(std::string(256, 'a')), "");
}

TEST(RequestTarget, UrlOfAnOrigin)
{
    EXPECT_EQ((Origin{false, "bmc", 443}.Url()), "https://bmc:443");
    EXPECT_EQ((Origin{true, "10.0.0.1", 8080}.Url()), "http://10.0.0.1:8080");
    EXPECT_EQ((Origin{false, "::1", 443}.Url()), "https://[::1]:443");
    EXPECT_EQ((Origin{false, "fe80::1%eth0", 443}.Url()), "https://[fe80::1%25eth0]:443");
    EXPECT_EQ((Origin{false, "::1", 443}.Text()), "[::1]:443");
}

TEST(RequestTarget, ReferencesWithinTheOrigin)
{
    struct Row
    {
        const char* Reference;
        const char* Path;
    };
    constexpr Row rows[] = {
        {"/other", "/other"},
        {"/other/", "/other/"},
        {"/other?a=b", "/other?a=b"},
        {"sibling", "/redfish/v1/sibling"},
        {"https://bmc/x", "/x"},
        {"https://BMC:443/x", "/x"},
        {"HTTPS://bmc:443/x?y", "/x?y"},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(ResolveWithin({false, "bmc", 443}, "/redfish/v1/Systems", row.Reference), row.Path) << row.Reference;
    }
    EXPECT_EQ(ResolveWithin({false, "::1", 8443}, "/a", "https://[::1]:8443/x"), "/x");
}

TEST(RequestTarget, ReferencesThatLeadAway)
{
    for (const char* reference :
         {"", "https://evil/x", "http://bmc/x", "http://bmc:443/x", "https://bmc:8443/x", "//evil/x",
          "https://bmc.evil/x", "https://bmc@evil/x", "https://user@bmc/x", "https://:secret@bmc/x", "/a b",
          "/a\r\nX: y", "ftp://bmc/x", "https://", "https://bmc:x/"})
    {
        EXPECT_EQ(ResolveWithin({false, "bmc", 443}, "/redfish/v1/Systems", reference), std::nullopt) << reference;
    }
}

TEST(RequestTarget, Headers)
{
    EXPECT_EQ(HeaderFault("If-None-Match", "abc"), "");
    EXPECT_EQ(HeaderFault("If-None-Match", ""), "");
    EXPECT_EQ(HeaderFault("X", "with blank\tand tab"), "");
    for (const char* value : {"a\r\nX-Evil: 1", "a\nb", "a\x01", "\x7f"})
    {
        EXPECT_NE(HeaderFault("If-None-Match", value), "") << value;
    }
    for (const char* name : {"", "a b", "a:", "a\r\n", "a\xc3\xa4"})
    {
        EXPECT_NE(HeaderFault(name, "x"), "") << name;
    }
    EXPECT_NE(HeaderFault("X", std::string(8192, 'a')), "");
}
