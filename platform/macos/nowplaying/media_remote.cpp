#include "platform/macos/nowplaying/media_remote.h"

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

#include <utility>

#include "platform/macos/corefoundation/text.h"
#include "platform/macos/dispatch/native_queue.h"
#include "platform/macos/nowplaying/information.h"

namespace purlock::host_macos {

namespace {

// The framework's functions, as others have found them; no header tells.
using NativeGetInfo = void (*)(dispatch_queue_t queue, void (^block)(CFDictionaryRef information));
using NativeRegister = void (*)(dispatch_queue_t queue);
using NativeGetPID = void (*)(dispatch_queue_t queue, void (^block)(int pid));

using Bundle = std::shared_ptr<const Owned<CFBundleRef>>;

/// Each function keeps the bundle: releasing it could unload the function's code.
class MediaRemote final : public NowPlayingFramework {
  public:
    explicit MediaRemote(Owned<CFBundleRef> bundle)
        : bundle_(std::make_shared<const Owned<CFBundleRef>>(std::move(bundle))) {}

    GetInfoFunction getInfoFunctionForName(std::string_view name) override {
        const auto function = reinterpret_cast<NativeGetInfo>(find(name));
        if (function == nullptr) return {};
        return [bundle = bundle_, function](const Queue& queue, InfoBlock block) {
            function(nativeQueue(*queue), ^(CFDictionaryRef information) {
              block(dictionaryOf(information));
            });
        };
    }

    RegisterFunction registerFunctionForName(std::string_view name) override {
        const auto function = reinterpret_cast<NativeRegister>(find(name));
        if (function == nullptr) return {};
        return [bundle = bundle_, function](const Queue& queue) { function(nativeQueue(*queue)); };
    }

    GetPIDFunction getPIDFunctionForName(std::string_view name) override {
        const auto function = reinterpret_cast<NativeGetPID>(find(name));
        if (function == nullptr) return {};
        return [bundle = bundle_, function](const Queue& queue, PIDBlock block) {
            function(nativeQueue(*queue), ^(int pid) {
              block(pid);
            });
        };
    }

  private:
    void* find(std::string_view name) const {
        const auto text = makeText(name);
        return text ? CFBundleGetFunctionPointerForName(bundle_->get(), text.get()) : nullptr;
    }

    const Bundle bundle_;
};

}  // namespace

std::shared_ptr<NowPlayingFramework> MediaRemoteLoader::openNowPlayingFramework(std::string_view path) {
    const auto text = makeText(path);
    if (!text) return nullptr;
    const Owned url(
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, text.get(), kCFURLPOSIXPathStyle, true));
    if (!url) return nullptr;
    // Whether the file is there says nothing: the system keeps its frameworks' code in one common cache.
    Owned bundle(CFBundleCreate(kCFAllocatorDefault, url.get()));
    if (!bundle) return nullptr;
    return std::make_shared<MediaRemote>(std::move(bundle));
}

}  // namespace purlock::host_macos
