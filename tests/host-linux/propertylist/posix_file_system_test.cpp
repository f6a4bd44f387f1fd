#include "platform/linux/propertylist/posix_file_system.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

using test::TemporaryFolder;

/// Sets $HOME, or takes it away, and puts it back at the end.
class HomeVariable {
  public:
    explicit HomeVariable(const char* value) {
        const char* old = std::getenv("HOME");
        if (old != nullptr) old_ = old;
        if (value != nullptr) {
            setenv("HOME", value, 1);
        } else {
            unsetenv("HOME");
        }
    }
    ~HomeVariable() {
        if (old_) {
            setenv("HOME", old_->c_str(), 1);
        } else {
            unsetenv("HOME");
        }
    }
    HomeVariable(const HomeVariable&) = delete;
    HomeVariable& operator=(const HomeVariable&) = delete;

  private:
    std::optional<std::string> old_;
};

TEST(PosixFileSystem, KnowsWhatIsThere) {
    const TemporaryFolder folder;
    folder.write("file", "");
    std::filesystem::create_symlink("file", folder.path() / "link");
    std::filesystem::create_symlink("gone", folder.path() / "broken");
    PosixFileSystem files;
    EXPECT_TRUE(files.fileExistsAtPath(folder.path() / "file"));
    EXPECT_TRUE(files.fileExistsAtPath(folder.path() / "link"));
    EXPECT_TRUE(files.fileExistsAtPath(folder.path()));
    EXPECT_FALSE(files.fileExistsAtPath(folder.path() / "broken"));
    EXPECT_FALSE(files.fileExistsAtPath(folder.path() / "gone"));
    EXPECT_FALSE(files.fileExistsAtPath(""));
    EXPECT_FALSE(files.fileExistsAtPath(std::string("/\0x", 3)));
}

TEST(PosixFileSystem, TakesTheHomeFolderFromTheEnvironment) {
    const HomeVariable variable("/home/listener/");
    EXPECT_EQ(PosixFileSystem().homeDirectory(), "/home/listener");
}

TEST(PosixFileSystem, FallsBackOnTheAccount) {
    std::optional<std::string> fromAccount;
    {
        const HomeVariable variable(nullptr);
        fromAccount = PosixFileSystem().homeDirectory();
    }
    ASSERT_TRUE(fromAccount);
    EXPECT_TRUE(fromAccount->starts_with('/'));
    const HomeVariable relative("relative/folder");
    EXPECT_EQ(PosixFileSystem().homeDirectory(), fromAccount);
}

}  // namespace
}  // namespace purlock::host_linux
