#include "platform/linux/playedfile/played_files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tests/host-linux/playedfile/made_files.h"
#include "tests/support/manual_queues.h"
#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

class PlayedFilesTest : public ::testing::Test {
  protected:
    std::string path(const char* name) const { return folder_.path() / name; }

    PlayedFiles::Found note() {
        return [this](std::optional<PlayedFile> file) { found_.push_back(std::move(file)); };
    }
    double rateFound() const {
        return found_.empty() || !found_.back() ? 0 : found_.back()->sampleRate.value_or(0);
    }

    const test::TemporaryFolder folder_;
    const std::shared_ptr<test::ManualSerialQueue> queue_ =
        std::make_shared<test::ManualSerialQueue>("files");
    PlayedFiles files_{queue_};
    std::vector<std::optional<PlayedFile>> found_;
};

TEST_F(PlayedFilesTest, AnswersOnTheQueueAndOnlyTheLastQuestion) {
    ASSERT_TRUE(test::makeSound(path("a.wav"), 44100, 16, 2));
    ASSERT_TRUE(test::makeSound(path("b.wav"), 96000, 24, 2));
    files_.read(path("a.wav"), note());
    files_.read(path("b.wav"), note());
    EXPECT_TRUE(found_.empty());
    queue_->run();
    ASSERT_EQ(found_.size(), 1U);
    EXPECT_EQ(rateFound(), 96000);
    files_.read(path("none.wav"), note());
    queue_->run();
    ASSERT_EQ(found_.size(), 2U);
    EXPECT_EQ(found_.back(), std::nullopt);
}

/// Another file at the same place, or the same file changed, is read anew; one that is as it was is not.
TEST_F(PlayedFilesTest, AFileIsKnownByPlaceSizeAndTime) {
    ASSERT_TRUE(test::makeSound(path("a.wav"), 44100, 16, 2));
    files_.read(path("a.wav"), note());
    queue_->run();
    EXPECT_EQ(rateFound(), 44100);

    const auto time = std::filesystem::last_write_time(path("a.wav"));
    std::string bytes = test::contentsOf(path("a.wav"));
    bytes[24] = static_cast<char>(0x80);  // the rate's lowest bytes: 48000
    bytes[25] = static_cast<char>(0xBB);
    const auto overwrite = [&] {  // in place
        std::fstream file(path("a.wav"), std::ios::binary | std::ios::in | std::ios::out);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    };
    overwrite();
    std::filesystem::last_write_time(path("a.wav"), time);
    files_.read(path("a.wav"), note());
    queue_->run();
    EXPECT_EQ(rateFound(), 44100) << "nothing tells that it has changed";

    std::filesystem::last_write_time(path("a.wav"), time + std::chrono::nanoseconds(1000));
    files_.read(path("a.wav"), note());
    queue_->run();
    EXPECT_EQ(rateFound(), 48000);
}

TEST_F(PlayedFilesTest, MayEndBeforeTheFileIsRead) {
    auto early = std::make_unique<PlayedFiles>(queue_);
    early->read(path("a.wav"), note());
    early.reset();
    queue_->run();
    EXPECT_TRUE(found_.empty());
}

}  // namespace
}  // namespace purlock::host_linux
