#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "base/cancellable.h"
#include "base/serial_queue.h"

namespace purlock {

/// A value of the now-playing dictionary that is neither a text nor a number: a date, data, a list.
struct OtherNowPlayingType {
    bool operator==(const OtherNowPlayingType&) const = default;
};

/// Texts are UTF-8; a number object comes as its double value.
using NowPlayingValue = std::variant<OtherNowPlayingType, std::string, double>;
using NowPlayingDictionary = std::map<std::string, NowPlayingValue, std::less<>>;

/// The now-playing framework, once it is open: C functions that are found by name, each of which may be
/// missing.
///
/// Kept open for as long as one of its functions is in use. The functions may be called on any thread, return
/// at once and answer on the queue that they are given; nothing says when, or that they answer at all. On
/// macOS `open` is CFBundleCreate and a lookup is CFBundleGetFunctionPointerForName with a cast to the
/// function's type.
class NowPlayingFramework {
  public:
    using Queue = std::shared_ptr<SerialQueue>;
    using InfoBlock = std::function<void(const NowPlayingDictionary& information)>;
    using PIDBlock = std::function<void(std::int32_t pid)>;

    /// Calls the block once, on the queue, with the current dictionary, which may be empty.
    using GetInfoFunction = std::function<void(const Queue& queue, InfoBlock block)>;

    /// Has the framework post its notifications to the process's notification centre from now on.
    using RegisterFunction = std::function<void(const Queue& queue)>;

    /// Calls the block once, on the queue, with the process identifier of the now-playing application; below
    /// 1: none.
    using GetPIDFunction = std::function<void(const Queue& queue, PIDBlock block)>;

    NowPlayingFramework() = default;
    virtual ~NowPlayingFramework() = default;
    NowPlayingFramework(const NowPlayingFramework&) = delete;
    NowPlayingFramework& operator=(const NowPlayingFramework&) = delete;

    // Each lookup gives an empty function when the framework has none of this name. Main thread.

    virtual GetInfoFunction getInfoFunctionForName(std::string_view name) = 0;
    virtual RegisterFunction registerFunctionForName(std::string_view name) = 0;
    virtual GetPIDFunction getPIDFunctionForName(std::string_view name) = 0;
};

/// Opens frameworks by path. Owned by the host, main thread.
class FrameworkLoader {
  public:
    FrameworkLoader() = default;
    virtual ~FrameworkLoader() = default;
    FrameworkLoader(const FrameworkLoader&) = delete;
    FrameworkLoader& operator=(const FrameworkLoader&) = delete;

    /// Null when there is no such framework or it cannot be opened.
    virtual std::shared_ptr<NowPlayingFramework> openNowPlayingFramework(std::string_view path) = 0;
};

/// The process's default notification centre. Owned by the host, which outlives its users; main thread.
class NotificationCenter {
  public:
    NotificationCenter() = default;
    virtual ~NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    /// Runs `block` on the main run loop after every notification of this name, from any sender, until the
    /// handle is dropped.
    virtual Cancellable addObserverForName(std::string_view name, std::function<void()> block) = 0;
};

}  // namespace purlock
