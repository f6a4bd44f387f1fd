#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "base/serial_queue.h"
#include "source/file_system.h"
#include "source/property_list_reader.h"

namespace purlock::host_linux {

/// The preference files of applications, without waiting for their disk: a question is answered with what was
/// last seen and has the file looked at on `queue`. So the first question finds nothing.
///
/// A file is read again when its place, size or time has changed. The first few paths that are asked for are
/// followed; there are three. Owned by the host; any thread.
class PreferenceFiles final : public FileSystem, public PropertyListReader {
  public:
    /// How long what was seen counts as the present.
    static constexpr std::chrono::milliseconds usualPause{5000};

    explicit PreferenceFiles(std::shared_ptr<SerialQueue> queue,
                             std::chrono::milliseconds pause = usualPause);
    ~PreferenceFiles() override;

    bool fileExistsAtPath(const std::string& path) override;
    std::optional<std::string> homeDirectory() override;
    std::optional<PropertyListDictionary> dictionaryWithContentsOfFile(const std::string& path) override;

  private:
    struct Seen;
    class Shared;

    Seen seen(const std::string& path);

    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<Shared> shared_;
};

}  // namespace purlock::host_linux
