#include "tests/macos/simulated/bundles.h"

#include <CoreFoundation/CoreFoundation.h>

#include <set>
#include <utility>

#include "tests/macos/simulated/core_foundation.h"

namespace purlock::simulated {

namespace {

Bundles* current = nullptr;

/// The paths of URLs, for as long as the process runs.
const std::string* kept(const std::string& path) {
    static std::set<std::string> paths;
    return &*paths.insert(path).first;
}

}  // namespace

Bundles::Bundles(std::string path, std::map<std::string, void*> functions)
    : path_(std::move(path)), functions_(std::move(functions)) {
    current = this;
}

Bundles::~Bundles() {
    current = nullptr;
}

}  // namespace purlock::simulated

using namespace purlock::simulated;

extern "C" {

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef, CFStringRef filePath, CFURLPathStyle pathStyle,
                                       Boolean isDirectory) {
    if (pathStyle != kCFURLPOSIXPathStyle || !isDirectory) return nullptr;  // a bundle is a folder
    return static_cast<CFURLRef>(makeObject(urlType, kept(utf8Of(filePath))));
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef bundleURL) {
    const auto& path = *static_cast<const std::string*>(payloadOf(bundleURL));
    if (current == nullptr || path != current->path()) return nullptr;
    return static_cast<CFBundleRef>(const_cast<void*>(makeObject(bundleType, current)));
}

void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName) {
    const auto& functions = static_cast<const Bundles*>(payloadOf(bundle))->functions();
    const auto found = functions.find(utf8Of(functionName));
    return found == functions.end() ? nullptr : found->second;
}
}
