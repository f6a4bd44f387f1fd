#include "platform/macos/nowplaying/media_remote.h"

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

#include <atomic>
#include <utility>

#include "platform/macos/corefoundation/text.h"
#include "platform/macos/dispatch/autorelease_pool.h"
#include "platform/macos/dispatch/native_queue.h"
#include "platform/macos/nowplaying/information.h"

namespace purlock::host_macos {

namespace {

// The framework's functions, as others have found them; no header tells.
using NativeGetInfo = void (*)(dispatch_queue_t queue, void (^block)(CFDictionaryRef information));
using NativeRegister = void (*)(dispatch_queue_t queue);
using NativeGetPID = void (*)(dispatch_queue_t queue, void (^block)(int pid));

using Bundle = std::shared_ptr<const Owned<CFBundleRef>>;

/// How many questions wait for their answers. A service that hangs would collect one every 0.8 s, with its
/// block, for as long as it hangs. Asked on the main thread, answered on any.
class OpenQuestions {
  public:
    explicit OpenQuestions(MediaRemoteLoader::Now now) : now_(std::move(now)) {}

    /// True if one more may be asked; it counts then.
    bool mayAsk() {
        const auto now = now_();
        if (now - lastAsked_ >= MediaRemoteLoader::patience) open_ = 0;  // they will not be answered any more
        if (open_ >= MediaRemoteLoader::mostQuestions) return false;
        lastAsked_ = now;
        ++open_;
        return true;
    }
    void answered() {
        if (open_ > 0) --open_;
    }

  private:
    const MediaRemoteLoader::Now now_;
    std::atomic<int> open_ = 0;
    std::chrono::steady_clock::time_point lastAsked_;
};

/// Each function keeps the bundle: releasing it could unload the function's code.
class MediaRemote final : public NowPlayingFramework {
  public:
    MediaRemote(Owned<CFBundleRef> bundle, MediaRemoteLoader::Now now)
        : bundle_(std::make_shared<const Owned<CFBundleRef>>(std::move(bundle))), now_(std::move(now)) {}

    GetInfoFunction getInfoFunctionForName(std::string_view name) override {
        const auto function = reinterpret_cast<NativeGetInfo>(find(name));
        if (function == nullptr) return {};
        const auto questions = std::make_shared<OpenQuestions>(now_);
        return [bundle = bundle_, function, questions](const Queue& queue, InfoBlock block) {
            if (!questions->mayAsk()) return;
            function(nativeQueue(*queue), ^(CFDictionaryRef information) {
              const AutoreleasePool pool;
              questions->answered();
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
              const AutoreleasePool pool;
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
    const MediaRemoteLoader::Now now_;
};

}  // namespace

std::shared_ptr<NowPlayingFramework> MediaRemoteLoader::openNowPlayingFramework(std::string_view path) {
    const auto text = makeText(path);
    if (!text) return nullptr;
    const Owned url(
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, text.get(), kCFURLPOSIXPathStyle, true));
    if (!url) return nullptr;
    // The file's presence says nothing: the system keeps its frameworks' code in one common cache.
    Owned bundle(CFBundleCreate(kCFAllocatorDefault, url.get()));
    if (!bundle) return nullptr;
    return std::make_shared<MediaRemote>(std::move(bundle), now_);
}

}  // namespace purlock::host_macos
