#include "platform/linux/pipewire/hardware/client_identity.h"

#include <gtest/gtest.h>

namespace purlock::host_linux {
namespace {

/// One application that runs, as process 500, and nothing else.
class OneApplication final : public RunningApplications {
  public:
    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) override {
        ++questions;
        if (pid != 500 || !isKnown) return std::nullopt;
        return RunningApplication{500, "org.example.Player", "Player"};
    }
    std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(std::string_view id) override {
        if (id != "org.example.Player") return {};
        return {{500, "org.example.Player", "Player"}};
    }
    int questions = 0;
    bool isKnown = true;
};

struct IdentityCase {
    const char* name;
    ClientProperties client;
    NodeProperties stream;
    ClientIdentity expected;
};

TEST(ClientIdentity, Rows) {
    const IdentityCase cases[] = {
        {"native", {.claimedProcess = 7, .connectedProcess = 500}, {}, {500, "org.example.Player"}},
        {"native, without the kernel's word", {.claimedProcess = 500}, {}, {500, "org.example.Player"}},
        {"native, unknown program", {.connectedProcess = 8}, {}, {8, std::nullopt}},
        {"unknown program that names itself", {.application = "mpv", .connectedProcess = 8}, {}, {8, "mpv"}},
        {"unknown program whose stream is named",
         {.connectedProcess = 8},
         {.application = "mpv"},
         {8, "mpv"}},
        {"through the PulseAudio server",
         {.api = "pipewire-pulse", .claimedProcess = 500, .connectedProcess = 9},
         {},
         {500, "org.example.Player"}},
        {"through it, told by the stream only",
         {.api = "pipewire-pulse", .connectedProcess = 9},
         {.processIdentifier = 500},
         {500, "org.example.Player"}},
        {"through it, from another machine",
         {.api = "pipewire-pulse", .host = "elsewhere", .claimedProcess = 500, .connectedProcess = 9},
         {},
         {0, std::nullopt}},
        {"a sandbox behind its portal",
         {.portalApplication = "org.example.Player", .claimedProcess = 2, .connectedProcess = 30},
         {},
         {500, "org.example.Player"}},
        {"a sandbox of which no instance is found",
         {.portalApplication = "org.example.Other", .claimedProcess = 2, .connectedProcess = 30},
         {},
         {2, "org.example.Other"}},
        {"a sandbox through the PulseAudio server",
         {.api = "pipewire-pulse",
          .application = "org.example.Player",
          .access = "flatpak",
          .claimedProcess = 2},
         {},
         {500, "org.example.Player"}},
        {"nothing known", {}, {}, {0, std::nullopt}},
    };
    for (const IdentityCase& row : cases) {
        SCOPED_TRACE(row.name);
        OneApplication applications;
        ClientIdentities identities(applications, "here");
        EXPECT_EQ(identities.identityOf({1, row.client}, row.stream), row.expected);
    }
}

TEST(ClientIdentity, IsAskedForOnceAndAFewTimesWhileThereIsNone) {
    OneApplication applications;
    ClientIdentities identities(applications, "here");
    for (int i = 0; i < 20; ++i) identities.identityOf({1, {.connectedProcess = 500}}, {});
    EXPECT_EQ(applications.questions, 1);
    for (int i = 0; i < 20; ++i) identities.identityOf({2, {.connectedProcess = 8}}, {});
    EXPECT_EQ(applications.questions, 5);
    identities.identityOf({1, {.connectedProcess = 8}}, {});
    EXPECT_EQ(applications.questions, 6) << "its properties changed";
}

/// Its control group or its script may be known only a moment later.
TEST(ClientIdentity, AnApplicationThatIsKnownLaterTakesThePlaceOfTheNameThatTheClientGives) {
    OneApplication applications;
    applications.isKnown = false;
    ClientIdentities identities(applications, "here");
    const ClientRecord client{1, {.application = "python3", .connectedProcess = 500}};
    EXPECT_EQ(identities.identityOf(client, {}), (ClientIdentity{500, "python3"}));
    EXPECT_TRUE(identities.isAnyUnresolved());
    applications.isKnown = true;
    EXPECT_EQ(identities.identityOf(client, {}), (ClientIdentity{500, "org.example.Player"}));
    EXPECT_FALSE(identities.isAnyUnresolved());
}

}  // namespace
}  // namespace purlock::host_linux
