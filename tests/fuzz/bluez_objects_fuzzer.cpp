#include <cstdlib>

#include "platform/linux/bluetooth/bluez_objects.h"
#include "tests/fuzz/byte_values.h"

namespace {

constexpr const char* words[] = {
    "org.bluez.Device1", "Paired",           "Connected", "Name", "Alias", "Address", "/d", "/e",
    "00:11:22:33:44:55", "00-11-22-33-44-55"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider bytes(data, size);
    purlock::host_linux::BlueZObjects objects;
    while (bytes.remaining_bytes() > 0) {
        const auto first = purlock::test::valueFrom(bytes, words);
        const auto second = purlock::test::valueFrom(bytes, words);
        const std::string path = bytes.ConsumeBool() ? "/d" : "/e";
        switch (bytes.ConsumeIntegralInRange(0, 3)) {
            case 0:
                objects.replaceAll(first);
                break;
            case 1:
                objects.add(path, first);
                break;
            case 2:
                objects.remove(path, first);
                break;
            default:
                objects.change(path, first, second);
        }
        for (const auto& device : objects.pairedDevices()) {
            if (device.name && device.name != device.nameOrAddress) std::abort();
        }
    }
    return 0;
}
