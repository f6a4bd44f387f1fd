// The main function itself: it never returns on a Mac, and what it makes lives as long as the process. So it
// runs in a process of its own.

#include <unistd.h>

#include "tests/macos/objc/mac_fixture.h"
#include "tests/macos/simulated/accessibility.h"
#include "tests/macos/simulated/bundles.h"
#include "tests/macos/simulated/hal.h"
#include "tests/macos/simulated/io_registry.h"
#include "tests/macos/standins/inspection.h"
#include "tests/support/temporary_folder.h"

/// main.mm is built with this name here.
int purlockMain();

namespace purlock {
namespace {

/// Ends the process: with 0 when the system found somebody to launch, and a status item came of it.
[[noreturn]] void launchAndEnd(standins::World& world) {
    purlockMain();
    bool launched = false;
    for (const std::string& call : world.calls) launched = launched || call == "setActivationPolicy: 1";
    _exit(launched && standins::itemsInBar().size() == 1 ? 0 : 1);
}

TEST(MacMain, KeepsTheDelegateThatTheApplicationHoldsWeakly) {
    const auto run = [] {
        test::ManualQueues queues;
        test::ManualRunLoop loop;
        const simulated::Dispatch dispatch{queues, &loop};
        standins::World world{loop};
        test::FakeAudioHardware hardware;
        const simulated::Hal hal{hardware};
        const simulated::IORegistry registry{{}};
        const simulated::Accessibility application{{}, false};
        const simulated::Bundles bundles{"/nowhere", {}};
        const test::TemporaryFolder folder;
        world.home = folder.path();
        launchAndEnd(world);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace purlock
