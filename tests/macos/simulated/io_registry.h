#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace purlock::simulated {

/// A property of a USB device: none, a text, or something that is no text.
struct NoText {};
using UsbProperty = std::variant<std::monostate, std::string, NoText>;

struct UsbEntry {
    UsbProperty vendor;
    UsbProperty product;
};

/// The I/O registry with USB devices of the test's making. References to services and iterators are counted;
/// using one that has been released stops the process.
class IORegistry {
  public:
    explicit IORegistry(std::vector<UsbEntry> devices);
    ~IORegistry();
    IORegistry(const IORegistry&) = delete;
    IORegistry& operator=(const IORegistry&) = delete;

    /// The query fails.
    void refuse() { refused_ = true; }

    /// The services and iterators that somebody still holds.
    static std::size_t liveObjects();

    const std::vector<UsbEntry>& devices() const { return devices_; }
    bool isRefused() const { return refused_; }

  private:
    const std::vector<UsbEntry> devices_;
    bool refused_ = false;
};

}  // namespace purlock::simulated
