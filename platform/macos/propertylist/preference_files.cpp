#include "platform/macos/propertylist/preference_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <mutex>
#include <utility>

#include "platform/macos/propertylist/property_list_file.h"

namespace purlock::host_macos {

namespace {

using Time = std::chrono::steady_clock::time_point;

}  // namespace

struct PreferenceFiles::Seen {
    bool exists = false;
    std::optional<PropertyListDictionary> dictionary;
};

class PreferenceFiles::Shared {
  public:
    explicit Shared(Refusal refusal) : refusal_(std::move(refusal)) {}

    Seen seen(const std::string& path) {
        const std::lock_guard lock(mutex_);
        return files_[path].seen;
    }

    /// True if the file is to be looked at now; then it counts as being looked at.
    bool isDue(const std::string& path, Time now) {
        const std::lock_guard lock(mutex_);
        File& file = files_[path];
        if (file.isRefused || file.isBeingRead) return false;
        if (file.looked && now - *file.looked < keptFor) return false;
        file.looked = now;
        return file.isBeingRead = true;
    }

    /// On the queue; the mutex is not held meanwhile.
    void look(const std::string& path) {
        const bool refused = refusal_(path);
        Seen seen;
        if (!refused) {
            seen.exists = FoundationFileSystem().fileExistsAtPath(path);
            if (seen.exists) seen.dictionary = PropertyListFile().dictionaryWithContentsOfFile(path);
        }
        const std::lock_guard lock(mutex_);
        File& file = files_[path];
        file.isBeingRead = false;
        file.isRefused = refused;
        file.seen = std::move(seen);
    }

  private:
    struct File {
        Seen seen;
        std::optional<Time> looked;
        bool isBeingRead = false;
        bool isRefused = false;
    };

    const Refusal refusal_;
    std::mutex mutex_;
    std::map<std::string, File> files_;  // guarded by mutex_; the introspectors ask for three
};

PreferenceFiles::PreferenceFiles(std::shared_ptr<SerialQueue> queue, Now now, Refusal refusal)
    : queue_(std::move(queue)), now_(std::move(now)), shared_(std::make_shared<Shared>(std::move(refusal))) {}

PreferenceFiles::~PreferenceFiles() = default;

bool PreferenceFiles::isRefused(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return errno == EPERM || errno == EACCES;
    ::close(descriptor);
    return false;
}

PreferenceFiles::Seen PreferenceFiles::seen(const std::string& path) {
    if (shared_->isDue(path, now_())) {
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
    return FoundationFileSystem().homeDirectory();
}

std::optional<PropertyListDictionary> PreferenceFiles::dictionaryWithContentsOfFile(const std::string& path) {
    return seen(path).dictionary;
}

}  // namespace purlock::host_macos
