#pragma once

#include <map>
#include <string>

namespace purlock::simulated {

/// What bundles there are on the disk: one, at `path`, with these functions. Its references count among the
/// live objects of CoreFoundation.
class Bundles {
  public:
    Bundles(std::string path, std::map<std::string, void*> functions);
    ~Bundles();
    Bundles(const Bundles&) = delete;
    Bundles& operator=(const Bundles&) = delete;

    const std::string& path() const { return path_; }
    const std::map<std::string, void*>& functions() const { return functions_; }

  private:
    const std::string path_;
    const std::map<std::string, void*> functions_;
};

}  // namespace purlock::simulated
