#include "platform/linux/playedfile/played_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <deque>
#include <mutex>
#include <utility>

#include "platform/linux/playedfile/audio_file_reader.h"
#include "platform/linux/system/file_descriptor.h"

namespace purlock::host_linux {

namespace {

/// Tells a file from another one that was at its place before.
struct FileKey {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t size = 0;
    std::int64_t changedSeconds = 0;
    std::int64_t changedNanoseconds = 0;

    bool operator==(const FileKey&) const = default;
};

/// A regular file, open for reading; neither a pipe's writer nor a device is waited for.
struct OpenFile {
    FileDescriptor descriptor;
    FileKey key;
};

std::optional<OpenFile> openFile(const std::string& path) {
    // A look before it is opened: opening a device may do something to it.
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    OpenFile file{FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)), {}};
    if (!file.descriptor || fstat(file.descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    file.key = {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
    return file;
}

AudioReading readOpen(const OpenFile& file) {
    return readAudioFile(file.descriptor.get(), static_cast<std::uint64_t>(file.key.size));
}

}  // namespace

class PlayedFiles::Reader {
  public:
    void ask(std::string path, Found onFound) {
        const std::lock_guard lock(mutex_);
        wanted_ = {std::move(path), std::move(onFound)};
    }

    /// On the queue.
    void readWanted() {
        Question question;
        {
            const std::lock_guard lock(mutex_);
            if (!wanted_) return;
            question = std::move(*wanted_);
            wanted_.reset();
        }
        question.second(find(question.first));
    }

  private:
    using Question = std::pair<std::string, Found>;
    static constexpr std::size_t maximumKept = 8;

    std::optional<PlayedFile> find(const std::string& path) {
        const auto file = openFile(path);
        if (!file) return std::nullopt;
        for (const auto& [key, known] : kept_) {
            if (key == file->key) return known;
        }
        if (cutShort_ >= maximumCutShort) return std::nullopt;
        const AudioReading reading = readOpen(*file);
        if (reading.isCutShort) ++cutShort_;
        kept_.emplace_back(file->key, reading.file);
        if (kept_.size() > maximumKept) kept_.pop_front();
        return reading.file;
    }

    std::mutex mutex_;
    std::optional<Question> wanted_;                                  // guarded by mutex_
    std::deque<std::pair<FileKey, std::optional<PlayedFile>>> kept_;  // on the queue
    int cutShort_ = 0;                                                // likewise
};

PlayedFiles::PlayedFiles(std::shared_ptr<SerialQueue> queue)
    : queue_(std::move(queue)), reader_(std::make_shared<Reader>()) {}

void PlayedFiles::read(std::string path, Found onFound) {
    reader_->ask(std::move(path), std::move(onFound));
    queue_->async([weak = std::weak_ptr(reader_)] {
        if (const auto reader = weak.lock()) reader->readWanted();
    });
}

std::optional<PlayedFile> readPlayedFile(const std::string& path) {
    const auto file = openFile(path);
    return file ? readOpen(*file).file : std::nullopt;
}

}  // namespace purlock::host_linux
