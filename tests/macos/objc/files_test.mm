// Files and property lists over stand-ins of Foundation, in a folder of the test's own.

#include "platform/macos/dispatch/dispatch_queue.h"
#include "platform/macos/propertylist/preference_files.h"
#include "platform/macos/propertylist/property_list_file.h"
#include "platform/macos/storage/foundation_files.h"
#include "tests/macos/objc/mac_fixture.h"
#include "tests/support/temporary_folder.h"

namespace purlock::host_macos {
namespace {

struct MacFiles : test::MacFixture {
    test::TemporaryFolder folder;
    FoundationFiles files;

    std::filesystem::path in(const char* name) const { return folder.path() / name; }
    void write(const char* name, std::string_view bytes) const { test::writeFile(in(name), bytes); }
};

TEST_F(MacFiles, TheApplicationSupportFolderIsTheFirstOfTheUsers) {
    world.home = folder.path();
    EXPECT_EQ(files.applicationSupportDirectory(), folder.path() / "Library" / "Application Support");
    world.hasApplicationSupport = false;
    EXPECT_EQ(files.applicationSupportDirectory(), std::nullopt);
}

TEST_F(MacFiles, FoldersAreMadeWithThoseAbove) {
    files.createDirectory(in("a") / "b");
    EXPECT_TRUE(std::filesystem::is_directory(in("a") / "b"));
    files.createDirectory(in("a") / "b");
    EXPECT_TRUE(files.fileExists(in("a")));
    EXPECT_FALSE(files.fileExists(in("c")));
}

TEST_F(MacFiles, AppendingAddsAtTheEndOfWhatIsThere) {
    EXPECT_FALSE(files.appendToFile(in("log"), "line\n")) << "there is no file";
    write("log", "one\n");
    EXPECT_TRUE(files.appendToFile(in("log"), "two\n"));
    EXPECT_EQ(test::contentsOf(in("log")), "one\ntwo\n");
    EXPECT_EQ(world.takeCalls(), std::vector<std::string>{"closeAndReturnError:"});
}

TEST_F(MacFiles, AFullDiskLeavesWholeLines) {
    write("log", "one\n");
    world.diskIsFull = true;
    EXPECT_FALSE(files.appendToFile(in("log"), "a long second line\n"));
    EXPECT_EQ(test::contentsOf(in("log")), "one\n");
    EXPECT_EQ(world.takeCalls(), std::vector<std::string>{"closeAndReturnError:"})
        << "also after an exception";
    EXPECT_FALSE(files.createFile(in("new"), "a first line\n"));
    EXPECT_FALSE(files.fileExists(in("new")));
    EXPECT_FALSE(files.replaceFile(in("log"), "other"));
    EXPECT_EQ(test::contentsOf(in("log")), "one\n");
}

TEST_F(MacFiles, NewFilesAreWrittenAsTheyAreAndReplacedInOneStep) {
    EXPECT_TRUE(files.createFile(in("state"), "first"));
    EXPECT_TRUE(files.replaceFile(in("state"), "second"));
    EXPECT_EQ(test::contentsOf(in("state")), "second");
    EXPECT_EQ(world.takeCalls(),
              (std::vector<std::string>{"writeToURL:atomically: 0", "writeToURL:atomically: 1"}));
    EXPECT_FALSE(files.createFile(in("missing") / "state", "x"));
}

TEST_F(MacFiles, NothingIsLeftToTheCallersPool) {
    write("log", "one\n");
    write("list.plist", "bytes");
    world.propertyLists[in("list.plist")] = {{"text", "HIGH"}};
    const std::size_t before = runtime::autoreleased();
    files.replaceFile(in("state"), "x");
    EXPECT_EQ(runtime::autoreleased(), before) << "replaceFile";
    files.createFile(in("new"), "x");
    EXPECT_EQ(runtime::autoreleased(), before) << "createFile";
    files.appendToFile(in("log"), "two\n");
    EXPECT_EQ(runtime::autoreleased(), before) << "appendToFile";
    files.createDirectory(in("folder"));
    EXPECT_EQ(runtime::autoreleased(), before) << "createDirectory";
    files.fileExists(in("log"));
    EXPECT_EQ(runtime::autoreleased(), before) << "fileExists";
    files.applicationSupportDirectory();
    EXPECT_EQ(runtime::autoreleased(), before) << "applicationSupportDirectory";
    PropertyListFile().dictionaryWithContentsOfFile(in("list.plist"));
    EXPECT_EQ(runtime::autoreleased(), before) << "dictionaryWithContentsOfFile";
}

struct MacPreferences : MacFiles {
    std::chrono::steady_clock::time_point time;
    bool isRefused = false;
    PreferenceFiles preferences{DispatchQueues().makeSerialQueue("preferences"), [this] { return time; },
                                [this](const std::string&) { return isRefused; }};

    std::optional<PropertyListDictionary> asked(const char* name) {
        return preferences.dictionaryWithContentsOfFile(in(name));
    }
};

TEST_F(MacPreferences, AreReadOnTheQueueAndAnsweredFromMemory) {
    write("list.plist", "bytes");
    world.propertyLists[in("list.plist")] = {{"text", "HIGH"}};
    EXPECT_FALSE(preferences.fileExistsAtPath(in("list.plist")));
    EXPECT_EQ(asked("list.plist"), std::nullopt) << "nothing is known yet";
    settle();
    EXPECT_TRUE(preferences.fileExistsAtPath(in("list.plist")));
    EXPECT_EQ(std::get<std::string>(asked("list.plist")->at("text")), "HIGH");
    world.propertyLists[in("list.plist")] = {{"text", "LOSSLESS"}};
    asked("list.plist");
    settle();
    EXPECT_EQ(std::get<std::string>(asked("list.plist")->at("text")), "HIGH") << "for some seconds";
    time += PreferenceFiles::keptFor;
    asked("list.plist");
    settle();
    EXPECT_EQ(std::get<std::string>(asked("list.plist")->at("text")), "LOSSLESS");
    std::filesystem::remove(in("list.plist"));
    time += PreferenceFiles::keptFor;
    asked("list.plist");
    settle();
    EXPECT_FALSE(preferences.fileExistsAtPath(in("list.plist")));
}

TEST_F(MacPreferences, OnlyARefusalCountsAsOne) {
    write("list.plist", "bytes");
    EXPECT_FALSE(PreferenceFiles::isRefused(in("list.plist")));
    EXPECT_FALSE(PreferenceFiles::isRefused(in("missing.plist")));
}

TEST_F(MacPreferences, ARefusalIsRemembered) {
    write("list.plist", "bytes");
    world.propertyLists[in("list.plist")] = {{"text", "HIGH"}};
    isRefused = true;
    asked("list.plist");
    settle();
    EXPECT_EQ(asked("list.plist"), std::nullopt);
    isRefused = false;
    time += std::chrono::hours(1);
    asked("list.plist");
    settle();
    EXPECT_EQ(asked("list.plist"), std::nullopt) << "asking again would ask the user again";
}

TEST_F(MacFiles, TheHomeFolder) {
    FoundationFileSystem system;
    world.home = "/Users/someone";
    EXPECT_EQ(system.homeDirectory(), "/Users/someone");
    EXPECT_EQ(stringByExpandingTildeInPath(system, "~/Library"), "/Users/someone/Library");
    world.home = "~";
    EXPECT_EQ(system.homeDirectory(), std::nullopt);
    EXPECT_FALSE(system.fileExistsAtPath(in("x")));
    write("x", "");
    EXPECT_TRUE(system.fileExistsAtPath(in("x")));
}

TEST_F(MacFiles, PropertyLists) {
    write("list.plist", "bytes");
    world.propertyLists[in("list.plist")] = {{"text", "HIGH"},
                                             {"integer", std::int64_t{-3}},
                                             {"real", 1.5},
                                             {"yes", true},
                                             {"data", standins::OtherValue{}}};
    const PropertyListDictionary expected = {{"text", std::string("HIGH")},
                                             {"integer", std::int64_t{-3}},
                                             {"real", OtherPropertyListType{}},
                                             {"yes", true},
                                             {"data", OtherPropertyListType{}}};
    PropertyListFile lists;
    EXPECT_EQ(lists.dictionaryWithContentsOfFile(in("list.plist")), expected);
}

TEST_F(MacFiles, WhatIsNoPropertyListGivesNone) {
    PropertyListFile lists;
    EXPECT_EQ(lists.dictionaryWithContentsOfFile(in("missing.plist")), std::nullopt);
    write("malformed.plist", "?");
    EXPECT_EQ(lists.dictionaryWithContentsOfFile(in("malformed.plist")), std::nullopt);
    std::filesystem::create_directory(in("folder.plist"));
    world.propertyLists[in("folder.plist")] = {};
    EXPECT_EQ(lists.dictionaryWithContentsOfFile(in("folder.plist")), std::nullopt);
    write("large.plist", "");
    std::filesystem::resize_file(in("large.plist"), PropertyListFile::largestFile + 1);
    world.propertyLists[in("large.plist")] = {};
    EXPECT_EQ(lists.dictionaryWithContentsOfFile(in("large.plist")), std::nullopt);
}

}  // namespace
}  // namespace purlock::host_macos
