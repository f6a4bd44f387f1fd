// A USB converter in software, plugged into the kernel's own USB/IP port. It stays until it is told to end,
// or its input ends.
//
//   usb_converter FOLDER [--rates 44100,96000] [--bits 16,24] [--maker TEXT] [--name TEXT] [--serial TEXT]
//                        [--product NUMBER] [--slower MILLIONTHS] [--no-volume] [--no-sound]

#include <sys/signalfd.h>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/linux/system/file_descriptor.h"
#include "tests/kernel/converter/audio_device.h"
#include "tests/kernel/converter/usbip_port.h"

namespace {

using namespace purlock;
using namespace purlock::kernel_lab;

template <typename Number>
std::vector<Number> numbersOf(const std::string& text) {
    std::vector<Number> numbers;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');) {
        numbers.push_back(static_cast<Number>(std::strtoul(part.c_str(), nullptr, 0)));
    }
    return numbers;
}

struct Options {
    ConverterTexts texts;
    ConverterAbilities abilities;
    int millionthsSlower = 0;
};

bool read(const std::vector<std::string>& words, Options& options) {
    auto& [texts, abilities, millionthsSlower] = options;
    for (std::size_t at = 0; at < words.size(); ++at) {
        if (words[at] == "--no-volume") {
            abilities.hasVolume = false;
        } else if (words[at] == "--no-sound") {
            abilities.isSound = false;
        } else if (at + 1 == words.size()) {
            return false;
        } else if (words[at] == "--rates") {
            abilities.rates = numbersOf<std::uint32_t>(words[++at]);
        } else if (words[at] == "--bits") {
            abilities.bits = numbersOf<int>(words[++at]);
        } else if (words[at] == "--maker") {
            texts.maker = words[++at];
        } else if (words[at] == "--name") {
            texts.name = words[++at];
        } else if (words[at] == "--serial") {
            texts.serial = words[++at];
        } else if (words[at] == "--product") {
            texts.product = static_cast<std::uint16_t>(std::strtoul(words[++at].c_str(), nullptr, 0));
        } else if (words[at] == "--slower") {
            millionthsSlower = static_cast<int>(std::strtoul(words[++at].c_str(), nullptr, 0));
        } else {
            return false;
        }
    }
    return !abilities.rates.empty() && !abilities.bits.empty();
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (argc < 2 || !read({argv + 2, argv + argc}, options)) {
        std::cerr << "usb_converter: which folder, rates and bits?\n";
        return 2;
    }
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigaddset(&ends, SIGINT);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    const host_linux::FileDescriptor stop(signalfd(-1, &ends, SFD_CLOEXEC));
    AudioDevice device(options.texts, options.abilities, argv[1]);
    UsbIpPort port(device, options.millionthsSlower);
    if (!port.attach()) {
        std::cerr << "usb_converter: vhci_hcd has no free port\n";
        return 1;
    }
    std::cout << "plugged in" << std::endl;
    port.serve(stop.get());
    return 0;
}
