#include "OutputFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include "SharedData.h"
#include "TemporaryFolder.h"

using Tavrine::Tool::WriteWholeFile;

namespace fs = std::filesystem;

namespace
{

constexpr uid_t Nobody = 65534;
/// What a sync of a folder fails with; 0: it is done.
int g_FolderSyncFailure = 0;
/// The same of a plain file.
int g_FileSyncFailure = 0;

std::size_t EntriesOf(const fs::path& folder)
{
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

mode_t ModeOf(const fs::path& file)
{
    struct stat status = {};
    EXPECT_EQ(stat(file.c_str(), &status), 0);
    return status.st_mode & 07777;
}

} // namespace

/// Stands in for the system's own in this program: no file system fails when a test asks for it.
extern "C" int fsync(int descriptor)
{
    struct stat kind = {};
    const bool isKnown = fstat(descriptor, &kind) == 0;
    const int failure = isKnown && S_ISDIR(kind.st_mode)   ? g_FolderSyncFailure
                        : isKnown && S_ISREG(kind.st_mode) ? g_FileSyncFailure
                                                           : 0;
    if (failure != 0)
    {
        errno = failure;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

TEST(OutputFile, ANewFileHasTheTextAndNothingElseIsLeft)
{
    const testdata::TemporaryFolder folder;
    const fs::path file = folder.Path() / "out.json";
    const std::string text("a\0b\n", 4);
    EXPECT_EQ(WriteWholeFile(file.string(), text), "");
    EXPECT_EQ(testdata::ReadFile(file), text);
    EXPECT_EQ(EntriesOf(folder.Path()), 1U);
}

TEST(OutputFile, PermissionsAreAtMostThoseAskedFor)
{
    const testdata::TemporaryFolder folder;
    const mode_t mask = umask(022);
    const fs::path shared = folder.Path() / "shared";
    const fs::path own = folder.Path() / "own";
    EXPECT_EQ(WriteWholeFile(shared.string(), "x"), "");
    EXPECT_EQ(WriteWholeFile(own.string(), "x", 0600), "");
    umask(mask);
    EXPECT_EQ(ModeOf(shared), 0644U);
    EXPECT_EQ(ModeOf(own), 0600U);
    EXPECT_EQ(WriteWholeFile(own.string(), "y", 0666), "");
    EXPECT_EQ(ModeOf(own), 0600U);
    EXPECT_EQ(testdata::ReadFile(own), "y");
    EXPECT_EQ(WriteWholeFile(shared.string(), "y"), "");
    EXPECT_EQ(ModeOf(shared), 0644U);
    EXPECT_EQ(WriteWholeFile(shared.string(), "z", 0600), "");
    EXPECT_EQ(ModeOf(shared), 0600U);
}

TEST(OutputFile, ALinkIsFollowed)
{
    const testdata::TemporaryFolder folder;
    const fs::path target = folder.Write("real/target", "old");
    fs::create_symlink(target, folder.Path() / "link");
    EXPECT_EQ(WriteWholeFile((folder.Path() / "link").string(), "new"), "");
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "link"));
    EXPECT_EQ(testdata::ReadFile(target), "new");
}

TEST(OutputFile, LinksThatLeadNowhereAreToldAndLeftAlone)
{
    const testdata::TemporaryFolder folder;
    const fs::path target = folder.Path() / "target";
    fs::create_symlink(target, folder.Path() / "dangling");
    fs::create_symlink("second", folder.Path() / "first");
    fs::create_symlink("first", folder.Path() / "second");
    for (const char* name : {"dangling", "first"})
    {
        EXPECT_EQ(WriteWholeFile((folder.Path() / name).string(), "x"), "is a link that leads nowhere");
        EXPECT_TRUE(fs::is_symlink(folder.Path() / name));
    }
    EXPECT_FALSE(fs::exists(target));
}

TEST(OutputFile, AFolderThatCannotBeSyncedDoesNotTakeTheFileBack)
{
    const testdata::TemporaryFolder folder;
    const fs::path file = folder.Write("closed/file", "old");
    const bool isRoot = geteuid() == 0; // who may read all
    if (isRoot)
    {
        for (const fs::path& path : {folder.Path(), file.parent_path(), file})
        {
            ASSERT_EQ(chown(path.c_str(), Nobody, static_cast<gid_t>(-1)), 0);
        }
    }
    fs::permissions(file.parent_path(), fs::perms::owner_write | fs::perms::owner_exec);
    ASSERT_TRUE(!isRoot || seteuid(Nobody) == 0);
    const std::string error = WriteWholeFile(file.string(), "new");
    ASSERT_TRUE(!isRoot || seteuid(0) == 0);
    fs::permissions(file.parent_path(), fs::perms::owner_all);
    EXPECT_EQ(error, "");
    EXPECT_EQ(testdata::ReadFile(file), "new");
    EXPECT_EQ(EntriesOf(file.parent_path()), 1U);
}

TEST(OutputFile, AFolderWhoseSyncFailsIsTold)
{
    const testdata::TemporaryFolder folder;
    const fs::path file = folder.Write("file", "old");
    for (const int failure : {EIO, EINVAL, EOPNOTSUPP})
    {
        g_FolderSyncFailure = failure;
        const std::string error = WriteWholeFile(file.string(), "new");
        g_FolderSyncFailure = 0;
        EXPECT_EQ(error, failure != EIO ? "" // the file system knows no such thing
                                        : "its folder cannot be synced, so that its new content may go with the power: "
                                          "Input/output error");
        EXPECT_EQ(testdata::ReadFile(file), "new");
        EXPECT_EQ(EntriesOf(folder.Path()), 1U);
    }
}

TEST(OutputFile, AFileWhoseSyncFailsKeepsItsFormerContent)
{
    const testdata::TemporaryFolder folder;
    const fs::path file = folder.Write("file", "old");
    g_FileSyncFailure = EIO;
    const std::string error = WriteWholeFile(file.string(), "new");
    g_FileSyncFailure = 0;
    EXPECT_EQ(error, "Input/output error");
    EXPECT_EQ(testdata::ReadFile(file), "old");
    EXPECT_EQ(EntriesOf(folder.Path()), 1U) << "a draft is left";
}

TEST(OutputFile, ALinkIntoAClosedFolderIsNotSaidToLeadNowhere)
{
    const testdata::TemporaryFolder folder;
    const fs::path target = folder.Write("closed/target", "old");
    fs::create_symlink(target, folder.Path() / "link");
    const bool isRoot = geteuid() == 0; // who may enter all
    fs::permissions(folder.Path(), fs::perms::all);
    fs::permissions(target.parent_path(), fs::perms::none);
    ASSERT_TRUE(!isRoot || seteuid(Nobody) == 0);
    const std::string error = WriteWholeFile((folder.Path() / "link").string(), "x");
    ASSERT_TRUE(!isRoot || seteuid(0) == 0);
    fs::permissions(target.parent_path(), fs::perms::owner_all);
    EXPECT_EQ(error, "Permission denied");
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "link"));
    EXPECT_EQ(testdata::ReadFile(target), "old");
}

TEST(OutputFile, WhatCannotBeWrittenIsToldAndLeftAlone)
{
    const testdata::TemporaryFolder folder;
    EXPECT_NE(WriteWholeFile((folder.Path() / "nowhere" / "file").string(), "x"), "");
    EXPECT_EQ(WriteWholeFile(folder.Path().string(), "x"), "is no plain file");
    EXPECT_EQ(WriteWholeFile("/dev/null", "x"), "is no plain file");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(EntriesOf(folder.Path()), 0U);
    EXPECT_NE(WriteWholeFile("", "x"), "");
}
