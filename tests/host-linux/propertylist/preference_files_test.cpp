#include "platform/linux/propertylist/preference_files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "base/worker_pool.h"
#include "tests/support/hanging_mount.h"
#include "tests/support/manual_queues.h"
#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;

std::string listWith(const std::string& quality) {
    return "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>audioQuality</key><string>" + quality +
           "</string></dict></plist>";
}

class PreferenceFilesTest : public ::testing::Test {
  protected:
    std::string quality() {
        const auto dictionary = files_.dictionaryWithContentsOfFile(path_);
        if (!dictionary || !dictionary->contains("audioQuality")) return "";
        return std::get<std::string>(dictionary->at("audioQuality"));
    }

    const test::TemporaryFolder folder_;
    const std::string path_ = folder_.path() / "a.plist";
    const std::shared_ptr<test::ManualSerialQueue> queue_ =
        std::make_shared<test::ManualSerialQueue>("preferences");
    PreferenceFiles files_{queue_, 0ms};
};

TEST_F(PreferenceFilesTest, AnswersWithWhatWasLastSeen) {
    folder_.write("a.plist", listWith("HIGH"));
    EXPECT_FALSE(files_.fileExistsAtPath(path_));
    EXPECT_EQ(quality(), "");
    queue_->run();
    EXPECT_TRUE(files_.fileExistsAtPath(path_));
    EXPECT_EQ(quality(), "HIGH");

    folder_.write("a.plist", listWith("LOSSLESS"));
    EXPECT_EQ(quality(), "HIGH");
    queue_->run();
    EXPECT_EQ(quality(), "LOSSLESS");

    std::filesystem::remove(path_);
    quality();
    queue_->run();
    EXPECT_FALSE(files_.fileExistsAtPath(path_));
    EXPECT_EQ(quality(), "");
}

TEST_F(PreferenceFilesTest, LooksOnceForManyQuestionsAndAtAFewPathsOnly) {
    PreferenceFiles patient(queue_, 1h);
    for (int i = 0; i < 10; ++i) patient.fileExistsAtPath(path_);
    EXPECT_EQ(queue_->run(), 1U);
    patient.fileExistsAtPath(path_);
    EXPECT_EQ(queue_->run(), 0U);
    for (int i = 0; i < 100; ++i) patient.fileExistsAtPath(path_ + std::to_string(i));
    EXPECT_LE(queue_->run(), 16U);
}

TEST_F(PreferenceFilesTest, ADiskThatHangsIsNotWaitedFor) {
    const auto mount = std::make_unique<test::HangingMount>(folder_.path() / "hanging");
    if (!mount->isThere()) GTEST_SKIP() << "needs root and FUSE";
    WorkerPool pool(1);
    PreferenceFiles files(pool.makeSerialQueue("preferences"));
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(files.fileExistsAtPath(folder_.path() / "hanging/a.plist"));
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_FALSE(pool.finishWithin(100ms));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s) << "nothing waits for the folder";
}

}  // namespace
}  // namespace purlock::host_linux
