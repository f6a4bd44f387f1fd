#include "platform/linux/propertylist/property_list_file_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "platform/linux/propertylist/posix_file_system.h"
#include "source/tidal_introspector.h"
#include "tests/host-linux/propertylist/binary_list.h"
#include "tests/support/fake_accessibility.h"
#include "tests/support/fake_running_applications.h"
#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

using test::TemporaryFolder;
using test::xmlList;

const std::string content = xmlList("<dict><key>a</key><integer>3</integer></dict>");
const PropertyListDictionary dictionary = {{"a", std::int64_t{3}}};

TEST(PropertyListFileReader, ReadsAFile) {
    const TemporaryFolder folder;
    folder.write("a.plist", content);
    EXPECT_EQ(PropertyListFileReader().dictionaryWithContentsOfFile(folder.path() / "a.plist"), dictionary);
}

TEST(PropertyListFileReader, FollowsASymbolicLink) {
    const TemporaryFolder folder;
    folder.write("a.plist", content);
    std::filesystem::create_symlink("a.plist", folder.path() / "link.plist");
    EXPECT_EQ(PropertyListFileReader().dictionaryWithContentsOfFile(folder.path() / "link.plist"),
              dictionary);
}

TEST(PropertyListFileReader, WhatCannotBeReadIsAbsent) {
    const TemporaryFolder folder;
    PropertyListFileReader reader;
    const auto read = [&](const std::string& name) {
        return reader.dictionaryWithContentsOfFile(folder.path() / name);
    };
    folder.write("empty", "");
    folder.write("large", std::string(4 * 1024 * 1024 + 1, 'x'));
    std::filesystem::create_directory(folder.path() / "folder");
    std::filesystem::create_symlink("loop", folder.path() / "loop");
    std::filesystem::create_symlink("gone", folder.path() / "broken");
    for (const char* name : {"missing", "empty", "large", "folder", "loop", "broken", "missing/a.plist"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(read(name), std::nullopt);
    }
    EXPECT_EQ(reader.dictionaryWithContentsOfFile(""), std::nullopt);
    EXPECT_EQ(reader.dictionaryWithContentsOfFile(std::string("/dev/null\0a", 11)), std::nullopt);
    EXPECT_EQ(reader.dictionaryWithContentsOfFile("/dev/zero"), std::nullopt);
}

TEST(PropertyListFileReader, APipeIsNotWaitedFor) {
    const TemporaryFolder folder;
    const std::string pipe = folder.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(PropertyListFileReader().dictionaryWithContentsOfFile(pipe), std::nullopt);
}

/// The whole way from a file below a home folder to a tier, with the integer that stops the search on it.
TEST(PropertyListFileReader, GivesTheIntrospectorsTheirPreferences) {
    const TemporaryFolder home;
    class Files final : public FileSystem {
      public:
        explicit Files(std::string folder) : folder_(std::move(folder)) {}
        bool fileExistsAtPath(const std::string& path) override { return real_.fileExistsAtPath(path); }
        std::optional<std::string> homeDirectory() override { return folder_; }

      private:
        PosixFileSystem real_;
        const std::string folder_;
    } files(home.path());
    PropertyListFileReader reader;
    test::FakeRunningApplications applications;
    test::FakeAccessibilityTree accessibility;
    const IntrospectionSeams seams{files, reader, applications, accessibility};
    EXPECT_EQ(TidalIntrospector::readTidalPreferences(seams), std::nullopt);

    const std::string text = "<dict><key>streamingQuality</key><string>HIGH</string>";
    const std::string second =
        "Library/Containers/com.tidal.desktop/Data/Library/Preferences/com.tidal.desktop.plist";
    home.write(second, xmlList(text + "</dict>"));
    EXPECT_EQ(TidalIntrospector::readTidalPreferences(seams), Prefs{"HIGH"});

    const std::string first = "Library/Preferences/com.tidal.desktop.plist";
    test::BinaryList binary;
    const auto key = binary.addText("audioQuality");
    const auto value = binary.addInteger(3);
    home.write(first, binary.file(binary.addDictionary({key}, {value})));
    EXPECT_EQ(TidalIntrospector::readTidalPreferences(seams), Prefs{"HI-RES LOSSLESS"});

    home.write(first, xmlList(text + "<key>audioQuality</key><integer>7</integer></dict>"));
    EXPECT_EQ(TidalIntrospector::readTidalPreferences(seams), Prefs{});
}

}  // namespace
}  // namespace purlock::host_linux
