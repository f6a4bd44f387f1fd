#include "platform/linux/propertylist/preference_files.h"

#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <mutex>
#include <utility>

#include "platform/linux/propertylist/posix_file_system.h"
#include "platform/linux/propertylist/property_list_file_reader.h"

namespace purlock::host_linux {

namespace {

using Clock = std::chrono::steady_clock;

/// Tells a file from another one that was at its place before; all zero when there is none.
using FileKey = std::array<std::int64_t, 5>;

FileKey keyOf(const std::string& path) {
    struct stat status {};
    if (path.find('\0') != std::string::npos || stat(path.c_str(), &status) != 0) return {};
    return {static_cast<std::int64_t>(status.st_dev), static_cast<std::int64_t>(status.st_ino),
            status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

}  // namespace

struct PreferenceFiles::Seen {
    bool exists = false;
    std::optional<PropertyListDictionary> dictionary;
};

class PreferenceFiles::Shared {
  public:
    explicit Shared(std::chrono::milliseconds pause) : pause_(pause) {}

    Seen seen(const std::string& path) {
        const std::lock_guard lock(mutex_);
        const auto file = files_.find(path);
        return file != files_.end() ? file->second.seen : Seen{};
    }

    /// True if the file is to be looked at now; then it counts as being looked at.
    bool isDue(const std::string& path) {
        const std::lock_guard lock(mutex_);
        if (!files_.contains(path) && files_.size() >= maximumFiles) return false;
        File& file = files_[path];
        const auto now = Clock::now();
        if (file.isBeingRead || (file.wasRead && now - file.looked < pause_)) return false;
        file.looked = now;
        return file.isBeingRead = true;
    }

    /// On the queue; the mutex is not held meanwhile.
    void look(const std::string& path) {
        const FileKey key = keyOf(path);
        const bool isNew = isAnother(path, key);
        std::optional<PropertyListDictionary> dictionary;
        if (isNew) dictionary = PropertyListFileReader().dictionaryWithContentsOfFile(path);
        const std::lock_guard lock(mutex_);
        File& file = files_[path];
        file.isBeingRead = false;
        file.wasRead = true;
        if (!isNew) return;
        file.key = key;
        file.seen = {key != FileKey{}, std::move(dictionary)};
    }

  private:
    struct File {
        Seen seen;
        FileKey key{};
        bool isBeingRead = false;
        bool wasRead = false;
        Clock::time_point looked{};
    };
    static constexpr std::size_t maximumFiles = 16;

    bool isAnother(const std::string& path, const FileKey& key) {
        const std::lock_guard lock(mutex_);
        return files_[path].key != key;
    }

    const std::chrono::milliseconds pause_;
    std::mutex mutex_;
    std::map<std::string, File> files_;  // guarded by mutex_
};

PreferenceFiles::PreferenceFiles(std::shared_ptr<SerialQueue> queue, std::chrono::milliseconds pause)
    : queue_(std::move(queue)), shared_(std::make_shared<Shared>(pause)) {}

PreferenceFiles::~PreferenceFiles() = default;

PreferenceFiles::Seen PreferenceFiles::seen(const std::string& path) {
    if (shared_->isDue(path)) {
        queue_->async([weak = std::weak_ptr(shared_), path] {
            if (const auto shared = weak.lock()) shared->look(path);
        });
    }
    return shared_->seen(path);
}

bool PreferenceFiles::fileExistsAtPath(const std::string& path) {
    return seen(path).exists;
}

std::optional<std::string> PreferenceFiles::homeDirectory() {
    return PosixFileSystem().homeDirectory();
}

std::optional<PropertyListDictionary> PreferenceFiles::dictionaryWithContentsOfFile(const std::string& path) {
    return seen(path).dictionary;
}

}  // namespace purlock::host_linux
