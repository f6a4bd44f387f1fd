#include "tests/support/panel_states.h"

#include <chrono>

#include "tests/ui/shell_fixture.h"

namespace purlock::test {

namespace {

using namespace std::chrono_literals;

constexpr std::int32_t player = 100;

/// A machine with a USB converter as its default device, under a program that has just been opened.
class Scene {
  public:
    explicit Scene(const SystemWords& words) : machine_({.words = words}) {
        machine_.applications.setRunning({{player, "com.qobuz.player", "Qobuz"}});
        machine_.usb.list.set({{UsbDevice{"Topaz Audio", "Topaz E30"}}});
    }

    Scene& device(const FakeDevice& device) {
        device.addTo(machine_.hardware);
        machine_.setDevices({device.id, 60});
        machine_.setDefault(device.id);
        return *this;
    }

    Scene& mixes(const MixerWork& work) {
        machine_.hardware.setMixerWork(70, work);
        return *this;
    }

    Scene& hiddenBy(const std::string& program) {
        machine_.hardware.remove(71, kAudioStreamPropertyVirtualFormat, globalScope);
        return mixes(MixerWork{.alterations = {}, .unseenProgram = program});
    }

    Scene& noDevices() {
        machine_.setDevices({});
        machine_.setDefault(0);
        return *this;
    }

    Scene& plays(const std::string& title, const std::string& artist, const std::string& album,
                 const char* application = "com.qobuz.player", const char* name = "Qobuz") {
        machine_.applications.setRunning({{player, application, name}});
        machine_.framework->setAnswer(
            {{titleKey, title}, {artistKey, artist}, {albumKey, album}, {rateKey, 1.0}}, player);
        FakeProcess{90, player, application, true, {70}}.addTo(machine_.hardware);
        machine_.hardware.setObjects(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList,
                                     globalScope, {90});
        return *this;
    }

    Scene& pinned(const std::string& uid) {
        machine_.shell->settings()->setPinnedDeviceUID(uid);
        return *this;
    }

    Scene& withoutAccessibility() {
        machine_.introspection.accessibility.setTrusted(false);
        return *this;
    }

    Scene& panelPinned() {
        machine_.shell->settings()->setPanelPinned(true);
        return *this;
    }

    View panel() {
        machine_.launch();
        machine_.desktop.clickStatusItem();
        machine_.pass(700ms);  // past the report and the flash that it makes
        return *machine_.desktop.content;
    }

  private:
    ShellFixture machine_;
};

FakeDevice usb(double mixerRate, double deviceRate, std::uint32_t bits, bool running) {
    return {70,
            "Topaz E30",
            "AppleUSBAudioEngine:Topaz Audio:Topaz E30:1",
            71,
            floatStream(mixerRate),
            integerStream(deviceRate, bits),
            running,
            kAudioDeviceTransportTypeUSB};
}

FakeDevice headphones() {
    return {70,
            "Aurora Headphones",
            "00-11-22-33-44-55:output",
            71,
            floatStream(96000),
            integerStream(44100, 16),
            true,
            kAudioDeviceTransportTypeBluetooth};
}

}  // namespace

std::vector<PanelState> panelStates(const SystemWords& words) {
    const std::string longTitle =
        "Variations on a Theme That Never Quite Ends, Movement the Fourteenth: "
        "Andante con moto, ma non troppo, played <b>twice</b> & once more";
    return {
        {"nothing-playing", Scene(words).device(usb(48000, 48000, 32, false)).panel()},
        {"bit-perfect", Scene(words)
                            .device(usb(96000, 96000, 32, true))
                            .plays("Evening Tide", "Mara Lind", "Harbour Lights")
                            .panel()},
        {"resampling", Scene(words)
                           .device(usb(44100, 96000, 16, true))
                           .plays("Evening Tide", "Mara Lind", "Harbour Lights")
                           .panel()},
        {"altered",
         Scene(words)
             .device(usb(48000, 48000, 32, true))
             .mixes(MixerWork{{alteration::Mixed{{"Firefox"}}, alteration::DeviceVolume{"Topaz E30", 0.4}}})
             .plays("Evening Tide", "Mara Lind", "Harbour Lights")
             .panel()},
        {"not-known", Scene(words).device(usb(48000, 48000, 32, true)).hiddenBy("aplay").panel()},
        {"bluetooth", Scene(words)
                          .device(headphones())
                          .plays("Evening Tide", "Mara Lind", "Harbour Lights", "com.tidal.desktop", "Tidal")
                          .panel()},
        {"no-device", Scene(words).noDevices().panel()},
        {"unplugged-pin",
         Scene(words).device(usb(48000, 48000, 32, true)).pinned("gone").panelPinned().panel()},
        {"accessibility-banner",
         Scene(words).device(usb(48000, 48000, 32, false)).withoutAccessibility().panel()},
        {"long-and-right-to-left",
         Scene(words)
             .device(usb(48000, 48000, 32, true))
             .plays(longTitle, "موسيقى الليل الطويلة جدا والتي لا تنتهي أبدا في هذه المدينة", "אלבום ארוך")
             .panel()},
    };
}

}  // namespace purlock::test
