#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/serial_queue.h"
#include "source/file_system.h"
#include "source/property_list_reader.h"

namespace purlock::host_macos {

/// The preference files of other applications, without waiting for them: a question is answered with what was
/// last seen and has the file looked at on `queue`. So the first question finds nothing.
///
/// The file of a sandboxed application lies in its container, and the system may ask the user whether Purlock
/// may look there; the read waits for the answer. A file that was refused is left alone until the program
/// ends, for each further try would be a question again. Owned by the host; main thread.
class PreferenceFiles final : public FileSystem, public PropertyListReader {
  public:
    /// How long what was seen counts as the present.
    static constexpr std::chrono::seconds keptFor{5};
    using Now = std::function<std::chrono::steady_clock::time_point()>;

    /// True if the system lets this process read no file at that place. Waits while the user is asked.
    static bool isRefused(const std::string& path);
    using Refusal = std::function<bool(const std::string& path)>;

    explicit PreferenceFiles(std::shared_ptr<SerialQueue> queue, Now now = std::chrono::steady_clock::now,
                             Refusal refusal = isRefused);
    ~PreferenceFiles() override;

    bool fileExistsAtPath(const std::string& path) override;
    std::optional<std::string> homeDirectory() override;
    std::optional<PropertyListDictionary> dictionaryWithContentsOfFile(const std::string& path) override;

  private:
    struct Seen;
    class Shared;

    const std::shared_ptr<SerialQueue> queue_;
    const Now now_;
    const std::shared_ptr<Shared> shared_;

    Seen seen(const std::string& path);
};

}  // namespace purlock::host_macos
