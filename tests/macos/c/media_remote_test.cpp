#include "platform/macos/nowplaying/media_remote.h"

#include <Block.h>
#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

#include "platform/macos/corefoundation/owned.h"
#include "platform/macos/dispatch/dispatch_queue.h"
#include "platform/macos/nowplaying/information.h"
#include "tests/macos/c/no_leak.h"
#include "tests/macos/simulated/bundles.h"
#include "tests/support/manual_queues.h"

namespace purlock::host_macos {
namespace {

constexpr const char* path = "/System/Library/PrivateFrameworks/MediaRemote.framework";

// The framework's functions, as the system would have them: they answer on the queue that they are given.

int registrations = 0;

void getInformation(dispatch_queue_t queue, void (^block)(CFDictionaryRef information)) {
    const auto target = simulated::targetOf(queue);
    void (^const kept)(CFDictionaryRef) = Block_copy(block);
    target->async([kept] {
        const Owned information(simulated::makeDictionary(
            {{"kMRMediaRemoteNowPlayingInfoTitle", simulated::makeString("Song")}}));
        kept(information.get());
        Block_release(kept);
    });
}

void registerForNotifications(dispatch_queue_t queue) {
    if (simulated::targetOf(queue)) ++registrations;
}

void getPID(dispatch_queue_t queue, void (^block)(int pid)) {
    const auto target = simulated::targetOf(queue);
    void (^const kept)(int) = Block_copy(block);
    target->async([kept] {
        kept(1234);
        Block_release(kept);
    });
}

struct MediaRemote : test::NoLeak {
    test::ManualQueues queues;
    simulated::Dispatch dispatch{queues};
    simulated::Bundles bundles{
        path,
        {{"MRMediaRemoteGetNowPlayingInfo", reinterpret_cast<void*>(getInformation)},
         {"MRMediaRemoteRegisterForNowPlayingNotifications",
          reinterpret_cast<void*>(registerForNotifications)},
         {"MRMediaRemoteGetNowPlayingApplicationPID", reinterpret_cast<void*>(getPID)}}};
    MediaRemoteLoader loader;
    std::shared_ptr<SerialQueue> queue = DispatchQueues().makeSerialQueue("q");
};

TEST_F(MediaRemote, IsOpenedByItsPath) {
    EXPECT_NE(loader.openNowPlayingFramework(path), nullptr);
    EXPECT_EQ(loader.openNowPlayingFramework("/System/Library/PrivateFrameworks/Other.framework"), nullptr);
}

TEST_F(MediaRemote, ItsFunctionsAreFoundByName) {
    const auto framework = loader.openNowPlayingFramework(path);
    EXPECT_FALSE(framework->getInfoFunctionForName("MRMediaRemoteGetSomethingElse"));
    EXPECT_FALSE(framework->registerFunctionForName(""));
    EXPECT_FALSE(framework->getPIDFunctionForName("\xFF"));
    EXPECT_TRUE(framework->getInfoFunctionForName("MRMediaRemoteGetNowPlayingInfo"));
}

TEST_F(MediaRemote, AnswersComeOnTheQueueWithoutTheFrameworkObject) {
    auto framework = loader.openNowPlayingFramework(path);
    const auto getInfo = framework->getInfoFunctionForName("MRMediaRemoteGetNowPlayingInfo");
    const auto getPIDOfApplication =
        framework->getPIDFunctionForName("MRMediaRemoteGetNowPlayingApplicationPID");
    const auto registerOnce =
        framework->registerFunctionForName("MRMediaRemoteRegisterForNowPlayingNotifications");
    framework.reset();
    NowPlayingDictionary seen;
    std::int32_t pid = 0;
    getInfo(queue, [&seen](const NowPlayingDictionary& information) { seen = information; });
    getPIDOfApplication(queue, [&pid](std::int32_t answer) { pid = answer; });
    registrations = 0;
    registerOnce(queue);
    EXPECT_EQ(registrations, 1);
    EXPECT_TRUE(seen.empty()) << "not before the queue runs";
    queues.run();
    EXPECT_EQ(std::get<std::string>(seen.at("kMRMediaRemoteNowPlayingInfoTitle")), "Song");
    EXPECT_EQ(pid, 1234);
}

int asked = 0;

void neverAnswer(dispatch_queue_t /*queue*/, void (^/*block*/)(CFDictionaryRef information)) {
    ++asked;
}

TEST_F(MediaRemote, AServiceThatHangsIsNotAskedWithoutEnd) {
    const simulated::Bundles hung{path,
                                  {{"MRMediaRemoteGetNowPlayingInfo", reinterpret_cast<void*>(neverAnswer)}}};
    std::chrono::steady_clock::time_point time;
    MediaRemoteLoader patient([&time] { return time; });
    const auto getInfo =
        patient.openNowPlayingFramework(path)->getInfoFunctionForName("MRMediaRemoteGetNowPlayingInfo");
    asked = 0;
    for (int i = 0; i < 100; ++i) {
        time += std::chrono::milliseconds(500);
        getInfo(queue, [](const NowPlayingDictionary&) {});
    }
    EXPECT_EQ(asked, 8);
    time += std::chrono::seconds(60);
    getInfo(queue, [](const NowPlayingDictionary&) {});
    EXPECT_EQ(asked, 9) << "it may be well again";
}

TEST_F(MediaRemote, OneThatAnswersIsAskedEachTime) {
    const auto getInfo =
        loader.openNowPlayingFramework(path)->getInfoFunctionForName("MRMediaRemoteGetNowPlayingInfo");
    int answers = 0;
    for (int i = 0; i < 100; ++i) {
        getInfo(queue, [&answers](const NowPlayingDictionary&) { ++answers; });
        queues.run();
    }
    EXPECT_EQ(answers, 100);
}

TEST_F(MediaRemote, ValuesOfEveryKind) {
    const Owned information(simulated::makeDictionary({
        {"text", simulated::makeString("x")},
        {"number", simulated::makeNumber(0.0011)},
        {"boolean", CFRetain(kCFBooleanTrue)},
        {"artwork", simulated::makeOther()},
    }));
    const NowPlayingDictionary expected = {
        {"text", std::string("x")}, {"number", 0.0011}, {"boolean", 1.0}, {"artwork", OtherNowPlayingType{}}};
    EXPECT_EQ(dictionaryOf(information.get()), expected);
    EXPECT_TRUE(dictionaryOf(nullptr).empty());
}

}  // namespace
}  // namespace purlock::host_macos
