#include "RegistryStore.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <dirent.h>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ConnectionInfo.h"
#include "Logging.h"
#include "SharedData.h"
#include "TemporaryFolder.h"

using namespace Tavrine;

namespace fs = std::filesystem;

namespace
{

/// A store in a folder of its own, which is not there at first.
struct Fixture
{
    testdata::TemporaryFolder Above;
    fs::path Folder = Above.Path() / "cache" / "tavrine";
    RegistryStore Store = RegistryStore(Folder.string());

    std::vector<fs::path> Files(const std::string& extension) const
    {
        std::vector<fs::path> files;
        std::error_code missing;
        for (const fs::directory_entry& entry : fs::directory_iterator(Folder, missing))
        {
            if (entry.path().extension() == extension)
            {
                files.push_back(entry.path());
            }
        }
        return files;
    }
    fs::path Only(const std::string& extension) const
    {
        const std::vector<fs::path> files = Files(extension);
        EXPECT_EQ(files.size(), 1U) << extension;
        return files.empty() ? fs::path() : files.front();
    }
    std::string TextOf(const std::string& key) const
    {
        const auto found = Store.Load(key);
        return found ? found->Text : "(none)";
    }
};

void Overwrite(const fs::path& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

std::ptrdiff_t OpenDescriptors()
{
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

/// Makes the next listing of a folder fail, as one does for which there is no memory.
thread_local bool noMemoryToList = false;

/// No file grows beyond so many bytes, as on a disk that is full.
class SmallFiles
{
  public:
    explicit SmallFiles(rlim_t bytes) : m_Handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_Former), 0);
        const rlimit less = {bytes, m_Former.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &less), 0);
    }
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;
    ~SmallFiles()
    {
        setrlimit(RLIMIT_FSIZE, &m_Former);
        std::signal(SIGXFSZ, m_Handler);
    }

  private:
    void (*m_Handler)(int);
    rlimit m_Former = {};
};

unsigned int ModeOf(const fs::path& path)
{
    struct stat state = {};
    EXPECT_EQ(lstat(path.c_str(), &state), 0) << path;
    return state.st_mode & 07777U;
}

} // namespace

/// Stands before the C library's, and leads on to it.
extern "C" DIR* fdopendir(int descriptor)
{
    if (std::exchange(noMemoryToList, false))
    {
        errno = ENOMEM;
        return nullptr;
    }
    static const auto original = reinterpret_cast<DIR* (*)(int)>(dlsym(RTLD_NEXT, "fdopendir"));
    return original(descriptor);
}

TEST(RegistryStore, GivesBackWhatWasKept)
{
    const Fixture fixture;
    EXPECT_EQ(fixture.TextOf("a"), "(none)");
    EXPECT_FALSE(fs::exists(fixture.Folder)) << "a read makes no folder";
    const std::string text("{\"a\":\"\0\n\"}", 10);
    fixture.Store.Save("a", {"/p", "\"1\"", text});
    const auto found = fixture.Store.Load("a");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->Path, "/p");
    EXPECT_EQ(found->Tag, "\"1\"");
    EXPECT_EQ(found->Text, text);
    EXPECT_EQ(fixture.TextOf("b"), "(none)");
    EXPECT_EQ(fixture.TextOf(""), "(none)");
    fixture.Store.Save("a", {"/p", "\"2\"", "new"});
    EXPECT_EQ(fixture.Store.Load("a")->Tag, "\"2\"");
    EXPECT_EQ(fixture.TextOf("a"), "new");
    fixture.Store.Drop("a");
    EXPECT_EQ(fixture.TextOf("a"), "(none)");
}

TEST(RegistryStore, IsForItsUserAlone)
{
    const Fixture fixture;
    const mode_t mask = umask(0);
    fixture.Store.Save("a", {"/p", "\"1\"", "text"});
    umask(mask);
    EXPECT_EQ(ModeOf(fixture.Folder), 0700U);
    EXPECT_EQ(ModeOf(fixture.Only(".entry")), 0600U);
    EXPECT_EQ(ModeOf(fixture.Only(".text")), 0600U);
}

TEST(RegistryStore, OneTextIsKeptOnce)
{
    const Fixture fixture;
    for (const char* key : {"a", "b", "c"})
    {
        fixture.Store.Save(key, {"/p", "\"1\"", "same"});
    }
    EXPECT_EQ(fixture.Files(".entry").size(), 3U);
    EXPECT_EQ(fixture.Files(".text").size(), 1U);
    EXPECT_EQ(fixture.TextOf("a"), "same");
    EXPECT_EQ(fixture.TextOf("c"), "same");
}

TEST(RegistryStore, KeysLeadNowhereElse)
{
    const Fixture fixture;
    fixture.Above.Write("x", "mine");
    for (const std::string key : {"../../x", "/etc/passwd", "../x", "a/b", ".", "..", "a\nb", "\xff"})
    {
        fixture.Store.Save(key, {"/p", "\"1\"", "text of " + key});
        EXPECT_EQ(fixture.TextOf(key), key == "\xff" ? "(none)" : "text of " + key) << key;
    }
    EXPECT_EQ(testdata::ReadFile(fixture.Above.Path() / "x"), "mine");
    EXPECT_EQ(std::distance(fs::directory_iterator(fixture.Above.Path()), fs::directory_iterator()), 2);
}

TEST(RegistryStore, DamagedTextsAreGivenUp)
{
    for (const char* damage : {"", "{", "other text", "the teXt", "the text and more"})
    {
        const Fixture fixture;
        fixture.Store.Save("a", {"/p", "\"1\"", "the text"});
        Overwrite(fixture.Only(".text"), damage);
        EXPECT_EQ(fixture.TextOf("a"), "(none)") << damage;
        EXPECT_TRUE(fixture.Files(".text").empty() && fixture.Files(".entry").empty()) << damage;
        fixture.Store.Save("a", {"/p", "\"1\"", "the text"});
        EXPECT_EQ(fixture.TextOf("a"), "the text") << damage;
    }
}

TEST(RegistryStore, DamagedEntriesAreRemoved)
{
    const Fixture source;
    source.Store.Save("a", {"/p", "\"1\"", "the text"});
    const std::string good = testdata::ReadFile(source.Only(".entry"));
    const auto with = [&](const std::string& from, const std::string& to)
    {
        std::string text = good;
        EXPECT_NE(text.find(from), std::string::npos) << from << " in " << good;
        return text.replace(text.find(from), from.size(), to);
    };
    const std::string digest = source.Only(".text").stem();
    const std::string rows[] = {
        "",
        "{}",
        "[]",
        good.substr(0, good.size() / 2),
        with("\"Format\":3", "\"Format\":2"),
        with("\"Key\":\"a\"", "\"Key\":\"b\""),
        with("\"\\\"1\\\"\"", "\"\""),
        with("\"\\\"1\\\"\"", "7"),
        with("\"/p\"", "\"\""),
        with(digest, "../../../../etc/passwd"),
        with(digest, digest.substr(1)),
        with(digest, std::string(64, 'A')),
        with("\"Xxh3\":\"", "\"Xxh3\":\"1"),
        with("\"Xxh3\":\"", "\"Xxh3\":\"\",\"Was\":\""),
        with("\"Xxh3\":", "\"Xxh3\":7,\"Was\":"),
        with(",\"Xxh3\":", ",\"Was\":"),
        good + std::string(100'000, ' '),
    };
    for (const std::string& row : rows)
    {
        Overwrite(source.Only(".entry"), row);
        EXPECT_EQ(source.TextOf("a"), "(none)") << row.substr(0, 200);
        EXPECT_TRUE(source.Files(".entry").empty()) << row.substr(0, 200);
        source.Store.Save("a", {"/p", "\"1\"", "the text"});
        EXPECT_EQ(source.TextOf("a"), "the text") << row.substr(0, 200);
    }
}

TEST(RegistryStore, ADamagedEntryLeavesTheTextToTheOthers)
{
    const Fixture fixture;
    fixture.Store.Save("a", {"/p", "\"1\"", "the text"});
    const fs::path entry = fixture.Only(".entry");
    fixture.Store.Save("b", {"/p", "\"1\"", "the text"});
    std::string damaged = testdata::ReadFile(entry);
    damaged.replace(damaged.find("\"Xxh3\":\""), 8, "\"Xxh3\":\"1");
    Overwrite(entry, damaged);
    EXPECT_EQ(fixture.TextOf("a"), "(none)");
    EXPECT_EQ(fixture.TextOf("b"), "the text");
}

TEST(RegistryStore, OnlyPlainFilesAreRead)
{
    const Fixture fixture;
    fixture.Store.Save("a", {"/p", "\"1\"", "the text"});
    const fs::path text = fixture.Only(".text");
    const std::string elsewhere = fixture.Above.Write("elsewhere", "the text");
    fs::remove(text);
    fs::create_symlink(elsewhere, text);
    EXPECT_EQ(fixture.TextOf("a"), "(none)");
    EXPECT_TRUE(fs::exists(elsewhere));
    fixture.Store.Save("a", {"/p", "\"1\"", "the text"});
    fs::remove(text);
    ASSERT_EQ(mkfifo(text.c_str(), 0600), 0);
    EXPECT_EQ(fixture.TextOf("a"), "(none)");
}

TEST(RegistryStore, AFolderThatOthersWriteToIsNotUsed)
{
    const Fixture fixture;
    fixture.Store.Save("a", {"/p", "\"1\"", "the text"});
    for (const unsigned int mode : {0770U, 0702U, 0777U})
    {
        ASSERT_EQ(chmod(fixture.Folder.c_str(), mode), 0);
        EXPECT_EQ(fixture.TextOf("a"), "(none)") << std::oct << mode;
        fixture.Store.Save("b", {"/p", "\"1\"", "other"});
        EXPECT_EQ(fixture.Files(".entry").size(), 1U);
    }
    ASSERT_EQ(chmod(fixture.Folder.c_str(), 0755), 0);
    EXPECT_EQ(fixture.TextOf("a"), "the text");
}

TEST(RegistryStore, FoldersThatCannotBe)
{
    const testdata::TemporaryFolder above;
    const std::string file = above.Write("file", "mine");
    for (const std::string& folder :
         {file, file + "/tavrine", std::string("/proc/tavrine/cache"), std::string("relative/cache"), std::string()})
    {
        const RegistryStore store(folder);
        store.Save("a", {"/p", "\"1\"", "text"});
        EXPECT_FALSE(store.Load("a")) << folder;
        store.Drop("a");
    }
    EXPECT_EQ(testdata::ReadFile(file), "mine");
    EXPECT_FALSE(fs::exists("relative"));
    const fs::path deep = above.Path() / "one" / "two" / "three";
    RegistryStore(deep.string()).Save("a", {"/p", "\"1\"", "text"});
    EXPECT_FALSE(fs::exists(above.Path() / "one")) << "no more than the folder and the one above is made";
}

TEST(RegistryStore, WhatWasNotUsedForLongestGoes)
{
    Fixture fixture;
    fixture.Store = RegistryStore(fixture.Folder.string(), {6'000, 10'000, 100});
    const auto age = [&](const std::string& extension, int hours)
    {
        for (const fs::path& path : fixture.Files(extension))
        {
            fs::last_write_time(path, fs::last_write_time(path) - std::chrono::hours(hours));
        }
    };
    for (const char letter : std::string("abc"))
    {
        age(".text", 1);
        age(".entry", 1);
        fixture.Store.Save(std::string(1, letter), {"/p", "\"1\"", std::string(4'000, letter)});
        if (letter == 'b')
        {
            age(".text", 1);
            age(".entry", 1);
            EXPECT_NE(fixture.TextOf("a"), "(none)"); // and so it is the youngest now
        }
    }
    EXPECT_NE(fixture.TextOf("a"), "(none)");
    EXPECT_EQ(fixture.TextOf("b"), "(none)");
    EXPECT_NE(fixture.TextOf("c"), "(none)");
    fixture.Store.Save("large", {"/p", "\"1\"", std::string(6'001, 'x')});
    EXPECT_EQ(fixture.TextOf("large"), "(none)");
    EXPECT_NE(fixture.TextOf("c"), "(none)");
}

TEST(RegistryStore, ATextIsUsedWhenAnotherKeyLeadsToIt)
{
    Fixture fixture;
    fixture.Store = RegistryStore(fixture.Folder.string(), {6'000, 10'000, 100});
    const std::string shared(4'000, 's');
    for (const auto& [key, text] : {std::pair("a", shared), std::pair("other", std::string(4'000, 'o'))})
    {
        for (const char* extension : {".text", ".entry"})
        {
            for (const fs::path& path : fixture.Files(extension))
            {
                fs::last_write_time(path, fs::last_write_time(path) - std::chrono::hours(2));
            }
        }
        fixture.Store.Save(key, {"/p", "\"1\"", text});
    }
    fixture.Store.Save("b", {"/p", "\"1\"", shared});
    fixture.Store.Save("new", {"/p", "\"1\"", std::string(4'000, 'n')});
    EXPECT_EQ(fixture.TextOf("b"), shared);
    EXPECT_EQ(fixture.TextOf("other"), "(none)");
}

TEST(RegistryStore, AShortenedCopyIsNotLedTo)
{
    const Fixture fixture;
    fixture.Store.Save("a", {"/p", "\"1\"", "the text"});
    Overwrite(fixture.Only(".text"), "the");
    fixture.Store.Save("b", {"/p", "\"1\"", "the text"});
    EXPECT_EQ(fixture.TextOf("b"), "the text");
}

TEST(RegistryStore, AFullDiskIsLeftWithoutDrafts)
{
    const Fixture fixture;
    {
        const SmallFiles full(1'000);
        fixture.Store.Save("a", {"/p", "\"1\"", std::string(4'000, 'x')});
    }
    EXPECT_TRUE(fixture.Files(".new").empty());
    EXPECT_EQ(fixture.TextOf("a"), "(none)");
    fixture.Store.Save("a", {"/p", "\"1\"", "text"});
    EXPECT_EQ(fixture.TextOf("a"), "text");
}

TEST(RegistryStore, ATextThatIsTooLargeIsTold)
{
    Fixture fixture;
    fixture.Store = RegistryStore(fixture.Folder.string(), {6'000, 10'000, 100});
    for (const std::size_t size : {6'000U, 6'001U})
    {
        const CapturingLogSink log(3);
        const std::string key = std::to_string(size);
        fixture.Store.Save(key, {"/p", "\"1\"", std::string(size, 'x')});
        const bool kept = size == 6'000U;
        EXPECT_EQ(fixture.TextOf(key), kept ? std::string(size, 'x') : "(none)") << size;
        ASSERT_EQ(log.Records().size(), kept ? 0U : 1U);
        EXPECT_TRUE(kept || log.Records()[0].Text.ends_with("6000 bytes")) << log.Records()[0].Text;
    }
}

TEST(RegistryStore, ATextAsLargeAsAnAnswerMayBeIsKept)
{
    const Fixture fixture;
    std::string text(TavrineConnection::ConnectionInfo().MaxResponseBytes, 'x');
    for (const bool kept : {true, false})
    {
        fixture.Store.Save("a", {"/p", "\"1\"", text});
        const auto found = fixture.Store.Load("a");
        EXPECT_EQ(found && found->Text == text, kept) << text.size();
        fixture.Store.Drop("a");
        text += 'x';
    }
}

TEST(RegistryStore, AFolderThatCannotBeListedCostsNoDescriptor)
{
    const Fixture fixture;
    fixture.Store.Save("a", {"/p", "\"1\"", "text"});
    const std::ptrdiff_t before = OpenDescriptors();
    noMemoryToList = true;
    fixture.Store.Save("b", {"/p", "\"1\"", "other"});
    EXPECT_FALSE(std::exchange(noMemoryToList, false)) << "it was not listed";
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_EQ(fixture.TextOf("b"), "other");
}

TEST(RegistryStore, TheNumberOfFilesHasAnEnd)
{
    Fixture fixture;
    fixture.Store = RegistryStore(fixture.Folder.string(), {1'000, 1'000'000, 6});
    for (int i = 0; i < 20; ++i)
    {
        fixture.Store.Save(std::to_string(i), {"/p", "\"1\"", std::to_string(i)});
    }
    EXPECT_LE(fixture.Files(".entry").size() + fixture.Files(".text").size(), 6U);
    EXPECT_EQ(fixture.TextOf("19"), "19");
}

TEST(RegistryStore, ForeignFilesStayAndOldDraftsGo)
{
    Fixture fixture;
    fixture.Store = RegistryStore(fixture.Folder.string(), {1'000, 1'500, 100});
    fixture.Store.Save("a", {"/p", "\"1\"", "text"});
    const std::string digest = fixture.Only(".text").stem();
    Overwrite(fixture.Folder / "notes.text", std::string(5'000, 'n'));
    Overwrite(fixture.Folder / (digest + ".backup"), std::string(5'000, 'n'));
    Overwrite(fixture.Folder / (digest + ".text-0011.new"), "young");
    Overwrite(fixture.Folder / (digest + ".text-0022.new"), "old");
    fs::last_write_time(fixture.Folder / (digest + ".text-0022.new"),
                        fs::file_time_type::clock::now() - std::chrono::hours(2));
    fixture.Store.Save("b", {"/p", "\"1\"", "other"});
    EXPECT_TRUE(fs::exists(fixture.Folder / "notes.text"));
    EXPECT_TRUE(fs::exists(fixture.Folder / (digest + ".backup")));
    EXPECT_TRUE(fs::exists(fixture.Folder / (digest + ".text-0011.new")));
    EXPECT_FALSE(fs::exists(fixture.Folder / (digest + ".text-0022.new")));
    EXPECT_EQ(fixture.TextOf("a"), "text");
}

TEST(RegistryStore, ManyAtOnceSeeWholeTextsAlone)
{
    const testdata::TemporaryFolder above;
    const std::string folder = (above.Path() / "cache").string();
    std::vector<std::thread> threads;
    std::vector<int> wrong(4);
    std::vector<int> right(4);
    for (std::size_t number = 0; number < 4; ++number)
    {
        threads.emplace_back(
            [&, number]
            {
                // Small enough that each pushes the other's texts out.
                const RegistryStore store(folder, {100'000, 150'000, 8});
                for (int round = 0; round < 40; ++round)
                {
                    const std::string key(1, static_cast<char>('a' + (number + static_cast<std::size_t>(round)) % 3));
                    store.Save(key, {"/" + key, "\"" + key + "\"", std::string(50'000, key[0])});
                    if (const auto found = store.Load(key))
                    {
                        const bool good = found->Path == "/" + key && found->Tag == "\"" + key + "\"" &&
                                          found->Text == std::string(50'000, key[0]);
                        ++(good ? right : wrong)[number];
                    }
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(4));
    EXPECT_GT(*std::max_element(right.begin(), right.end()), 0);
}
