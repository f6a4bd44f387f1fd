#include "platform/linux/storage/json_user_defaults.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "app/settings_store.h"
#include "tests/support/malformed_utf8.h"
#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

namespace fs = std::filesystem;
using test::contentsOf;
using test::writeFile;

class JsonUserDefaultsTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder_;
    const fs::path file_ = folder_.path() / "Purlock" / "defaults.json";
    const fs::path backup_ = folder_.path() / "Purlock" / "defaults.json.malformed";
};

TEST_F(JsonUserDefaultsTest, TypesAreKeptApart) {
    writeFile(file_, R"({"t":"x","b":true,"n":1,"f":0.0,"z":null,"a":["x"],"o":{"t":"x"},"e":""})");
    const JsonUserDefaults defaults(file_);
    EXPECT_EQ(defaults.objectForKey("t"), DefaultsValue("x"));
    EXPECT_EQ(defaults.objectForKey("b"), DefaultsValue(true));
    EXPECT_EQ(defaults.objectForKey("e"), DefaultsValue(""));
    for (const char* key : {"n", "f", "z", "a", "o"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ(defaults.objectForKey(key), DefaultsValue(OtherDefaultsValue{}));
        EXPECT_EQ(defaults.stringForKey(key), std::nullopt);
    }
    EXPECT_EQ(defaults.objectForKey("missing"), std::nullopt);
    EXPECT_EQ(defaults.stringForKey("b"), std::nullopt);
    EXPECT_EQ(defaults.stringForKey("t"), "x");
}

TEST_F(JsonUserDefaultsTest, EachChangeIsOnDiskAtOnceAndReadsBack) {
    JsonUserDefaults defaults(file_);
    EXPECT_FALSE(fs::exists(file_)) << "reading writes nothing";
    defaults.setObject("alsa_output.usb", "pinnedDeviceUID");
    EXPECT_EQ(contentsOf(file_), "{\n  \"pinnedDeviceUID\": \"alsa_output.usb\"\n}\n");
    defaults.setBool(false, "logEnabled");
    EXPECT_EQ(JsonUserDefaults(file_).objectForKey("logEnabled"), DefaultsValue(false));
    defaults.removeObjectForKey("pinnedDeviceUID");
    EXPECT_EQ(contentsOf(file_), "{\n  \"logEnabled\": false\n}\n");
    defaults.removeObjectForKey("never there");
    EXPECT_EQ(contentsOf(file_), "{\n  \"logEnabled\": false\n}\n");
}

TEST_F(JsonUserDefaultsTest, KeysThatItDoesNotKnowAreKept) {
    writeFile(file_, R"({"future":{"list":[1,2.5,null,"é"]},"big":18446744073709551615,"logEnabled":7})");
    JsonUserDefaults defaults(file_);
    defaults.setBool(true, "panelPinned");
    const std::string written = contentsOf(file_);
    for (const char* part : {"\"future\"", "2.5", "null", "é", "18446744073709551615", "\"logEnabled\": 7"}) {
        EXPECT_NE(written.find(part), std::string::npos) << part;
    }
}

struct MalformedRow {
    const char* name;
    std::string contents;
};

TEST_F(JsonUserDefaultsTest, AMalformedFileReadsAsNoSettingsAndIsKeptBeside) {
    const MalformedRow rows[] = {
        {"empty", ""},
        {"truncated", R"({"logEnabled": fal)"},
        {"not JSON", "logEnabled = false"},
        {"not an object", R"(["logEnabled"])"},
        {"something after it", "{} {}"},
        {"malformed UTF-8", "{\"pinnedDeviceUID\": \"\xFF\"}"},
        {"deeply nested", std::string(100000, '[')},
        {"too large", "{\"a\":\"" + std::string(JsonUserDefaults::largestFile, 'x') + "\"}"},
    };
    for (const MalformedRow& row : rows) {
        SCOPED_TRACE(row.name);
        writeFile(file_, row.contents);
        JsonUserDefaults defaults(file_);
        EXPECT_EQ(defaults.objectForKey("logEnabled"), std::nullopt);
        EXPECT_EQ(contentsOf(file_), row.contents) << "reading changes nothing";
        defaults.setBool(false, "logEnabled");
        EXPECT_EQ(contentsOf(backup_), row.contents);
        EXPECT_EQ(contentsOf(file_), "{\n  \"logEnabled\": false\n}\n");
        defaults.setBool(true, "logEnabled");
        EXPECT_EQ(contentsOf(backup_), row.contents) << "a good file does not replace the backup";
    }
}

TEST_F(JsonUserDefaultsTest, AMalformedFileThatCannotBeKeptIsNotReplaced) {
    writeFile(file_, "precious");
    writeFile(backup_ / "in the way", "");
    JsonUserDefaults defaults(file_);
    defaults.setBool(false, "logEnabled");
    EXPECT_EQ(contentsOf(file_), "precious");
    EXPECT_EQ(defaults.objectForKey("logEnabled"), DefaultsValue(false)) << "the value holds for this run";
    fs::remove_all(backup_);
    defaults.setBool(true, "panelPinned");
    EXPECT_EQ(contentsOf(backup_), "precious");
    EXPECT_EQ(contentsOf(file_), "{\n  \"logEnabled\": false,\n  \"panelPinned\": true\n}\n");
}

TEST_F(JsonUserDefaultsTest, WhatIsNoRegularFileReadsAsNoSettingsAndIsLeftAlone) {
    fs::create_directories(file_);
    JsonUserDefaults folderInItsPlace(file_);
    EXPECT_EQ(folderInItsPlace.objectForKey("logEnabled"), std::nullopt);
    folderInItsPlace.setBool(true, "logEnabled");
    EXPECT_TRUE(fs::is_directory(file_));

    fs::remove(file_);
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    JsonUserDefaults pipeInItsPlace(file_);
    EXPECT_EQ(pipeInItsPlace.objectForKey("logEnabled"), std::nullopt);
    pipeInItsPlace.setBool(true, "logEnabled");
    EXPECT_TRUE(fs::is_fifo(file_));
}

TEST_F(JsonUserDefaultsTest, AMalformedFileThatCannotBeLookedForIsNotReplaced) {
    writeFile(file_, "precious");
    JsonUserDefaults defaults(file_);
    const fs::path home = file_.parent_path();
    const fs::path elsewhere = folder_.path() / "elsewhere";
    fs::rename(home, elsewhere);
    fs::create_directory_symlink(home, home);  // nobody finds the end of that
    defaults.setBool(true, "logEnabled");
    EXPECT_EQ(defaults.objectForKey("logEnabled"), DefaultsValue(true));
    EXPECT_EQ(contentsOf(elsewhere / file_.filename()), "precious");

    fs::remove(home);
    fs::rename(elsewhere, home);
    defaults.setBool(false, "logEnabled");
    EXPECT_EQ(contentsOf(backup_), "precious");
    EXPECT_EQ(contentsOf(file_), "{\n  \"logEnabled\": false\n}\n");
}

TEST_F(JsonUserDefaultsTest, AWriteThatFailsIsDroppedAndMadeGoodByTheNext) {
    writeFile(folder_.path() / "Purlock", "a file where the folder should be");
    JsonUserDefaults defaults(file_);
    defaults.setObject("dac", "pinnedDeviceUID");
    EXPECT_EQ(defaults.stringForKey("pinnedDeviceUID"), "dac");
    fs::remove(folder_.path() / "Purlock");
    defaults.setBool(false, "logEnabled");
    const JsonUserDefaults again(file_);
    EXPECT_EQ(again.stringForKey("pinnedDeviceUID"), "dac");
    EXPECT_EQ(again.objectForKey("logEnabled"), DefaultsValue(false));
}

TEST_F(JsonUserDefaultsTest, MalformedTextIsStoredReadable) {
    for (const auto& [name, text] : test::malformedUtf8()) {
        SCOPED_TRACE(name);
        JsonUserDefaults(file_).setObject(text, "pinnedDeviceUID");
        EXPECT_TRUE(JsonUserDefaults(file_).stringForKey("pinnedDeviceUID"));
        EXPECT_FALSE(fs::exists(backup_));
    }
}

TEST_F(JsonUserDefaultsTest, CarriesTheSettingsStoreOverARestart) {
    {
        SettingsStore store(std::make_shared<JsonUserDefaults>(file_));
        store.setPinnedDeviceUID("Kopfhörer \"1\"\n");
        store.setLogEnabled(false);
        store.setPanelPinned(true);
    }
    {
        SettingsStore store(std::make_shared<JsonUserDefaults>(file_));
        EXPECT_EQ(store.pinnedDeviceUID().value(), "Kopfhörer \"1\"\n");
        EXPECT_FALSE(store.logEnabled().value());
        EXPECT_TRUE(store.panelPinned().value());
        store.setPinnedDeviceUID("");
    }
    EXPECT_EQ(SettingsStore(std::make_shared<JsonUserDefaults>(file_)).pinnedDeviceUID().value(),
              std::nullopt);
}

}  // namespace
}  // namespace purlock::host_linux
