#include "helpers/update/PackageFile.h"

#include "tests/linux/LinuxFixture.h"

#include <sys/stat.h>

namespace rb {

namespace {

namespace fs = std::filesystem;

TEST(PackageFileTest, IsPrivateAndGoesUnlessItIsKept) {
    const TemporaryFolder home;
    const std::string folder = home / "cache/updates";
    std::string path;
    {
        PackageFile file;
        ASSERT_EQ(file.create(folder, "1.2~rc1"), std::nullopt);
        path = file.path();
        EXPECT_EQ(path, folder + "/rookbay-1.2~rc1.deb");
        EXPECT_EQ(file.write("abc", 3), std::nullopt);
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
        EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
    }
    EXPECT_FALSE(fs::exists(path));
    {
        PackageFile file;
        ASSERT_EQ(file.create(folder, "1.2"), std::nullopt);
        file.keep();
        path = file.path();
    }
    EXPECT_TRUE(fs::exists(path));
    writeText(folder + "/notes.txt", "mine");
    PackageFile next;
    EXPECT_EQ(next.create(folder, "1.3"), std::nullopt);
    EXPECT_FALSE(fs::exists(path)) << "what was downloaded before";
    EXPECT_EQ(readText(folder + "/notes.txt"), "mine");
}

TEST(PackageFileTest, FollowsNoLinksAndUsesNoFolderThatOthersWriteTo) {
    const TemporaryFolder home;
    writeText(home / "victim", "mine");
    fs::create_directory(home / "updates");
    fs::permissions(home / "updates", fs::perms::owner_all);
    // A link under the name that comes is ours to remove, what it leads to isn't.
    fs::create_symlink(home / "victim", home / "updates/rookbay-1.deb");
    {
        PackageFile file;
        EXPECT_EQ(file.create(home / "updates", "1"), std::nullopt);
        EXPECT_EQ(file.write("x", 1), std::nullopt);
    }
    EXPECT_EQ(readText(home / "victim"), "mine");
    fs::create_directory_symlink(home / "updates", home / "link");
    EXPECT_NE(PackageFile().create(home / "link", "1"), std::nullopt);
    fs::permissions(home / "updates", fs::perms::all);
    EXPECT_NE(PackageFile().create(home / "updates", "1"), std::nullopt);
    EXPECT_NE(PackageFile().create(home / "victim", "1"), std::nullopt);
}

} // namespace

} // namespace rb
