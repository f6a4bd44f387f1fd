#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/serial_queue.h"
#include "core/playback.h"

namespace purlock::host_linux {

/// Reads the files that players play, one at a time, on a queue whose work may wait for a disk.
///
/// A file that was read is known by its place, size and time of change, and is not read again while they are
/// the same; the last few are kept. After `maximumCutShort` files that had to be cut short no file is read
/// any more: they cost memory. Only regular files are opened, and nothing else is ever waited for. Any
/// thread; owned by the host.
class PlayedFiles {
  public:
    /// Absent when the file cannot be read or is of no known kind. On the queue.
    using Found = std::function<void(std::optional<PlayedFile> file)>;

    static constexpr int maximumCutShort = 16;

    explicit PlayedFiles(std::shared_ptr<SerialQueue> queue);

    /// Reads the file at an absolute path. A new question replaces an earlier one that still waits: only the
    /// last track counts, and `onFound` of the others never runs.
    void read(std::string path, Found onFound);

  private:
    class Reader;

    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<Reader> reader_;
};

/// Opens the file and reads it as `PlayedFiles` does, here and now.
std::optional<PlayedFile> readPlayedFile(const std::string& path);

}  // namespace purlock::host_linux
