#include "InputFile.h"

#include <gtest/gtest.h>

#include <array>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "TemporaryFolder.h"

using namespace Tavrine::Tool;
using testdata::TemporaryFolder;

namespace
{

/// A pipe that somebody has written into and closed.
class WrittenPipe
{
  public:
    explicit WrittenPipe(const std::string& text)
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        EXPECT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(ends[1]);
        m_Reader = ends[0];
    }
    WrittenPipe(const WrittenPipe&) = delete;
    WrittenPipe& operator=(const WrittenPipe&) = delete;
    ~WrittenPipe() { close(m_Reader); }

    std::string Path() const { return "/dev/fd/" + std::to_string(m_Reader); }

  private:
    int m_Reader = -1;
};

} // namespace

TEST(InputFile, IsReadUpToTheLimitAndItsKindKnown)
{
    const TemporaryFolder folder;
    const std::string plain = folder.Write("plain", "some text");
    const WrittenPipe pipe("some text");
    for (const std::string& path : {plain, pipe.Path()})
    {
        FileContent content;
        EXPECT_EQ(ReadWholeFile(path, 9, content), "");
        EXPECT_EQ(content.Text, "some text");
        EXPECT_EQ(content.IsPlainFile, path == plain);
    }
    FileContent content;
    EXPECT_EQ(ReadWholeFile(plain, 8, content), "it is larger than 8 bytes");
    EXPECT_EQ(ReadWholeFile(folder.Path().string(), 8, content), "Is a directory");
    EXPECT_EQ(ReadWholeFile(plain + "-", 8, content), "No such file or directory");
}

TEST(InputFile, OnesThatOthersReadAreLookedAtAlone)
{
    const TemporaryFolder folder;
    const std::string plain = folder.Write("plain", "some text");
    for (const Reading reading : {Reading::Once, Reading::Often})
    {
        EXPECT_EQ(WhyNotReadable(plain, reading), "");
        EXPECT_EQ(WhyNotReadable(folder.Write("empty", ""), reading), "");
        EXPECT_EQ(WhyNotReadable(folder.Path().string(), reading), "Is a directory");
        EXPECT_EQ(WhyNotReadable(plain + "-", reading), "No such file or directory");
    }
}

TEST(InputFile, APipeThatOthersReadKeepsAllThatIsInIt)
{
    const WrittenPipe pipe("some text");
    EXPECT_EQ(WhyNotReadable(pipe.Path(), Reading::Once), "");
    EXPECT_EQ(WhyNotReadable(pipe.Path(), Reading::Often), "it is no plain file, and is read more than once");
    FileContent content;
    EXPECT_EQ(ReadWholeFile(pipe.Path(), 100, content), "");
    EXPECT_EQ(content.Text, "some text");

    const TemporaryFolder folder;
    const std::string named = (folder.Path() / "named").string();
    ASSERT_EQ(mkfifo(named.c_str(), 0600), 0);
    EXPECT_EQ(WhyNotReadable(named, Reading::Once), ""); // without waiting for one who writes
}
