#include "platform/linux/pipewire/hardware/listener_table.h"

#include <gtest/gtest.h>

#include "tests/support/manual_queues.h"

namespace purlock::host_linux {
namespace {

TEST(ListenerTable, TellsThoseWhoListenUntilTheSameBlockIsRemoved) {
    ListenerTable table;
    const auto queue = std::make_shared<test::ManualSerialQueue>("test");
    const auto other = std::make_shared<test::ManualSerialQueue>("other");
    int count = 0;
    const ListenerBlock block = std::make_shared<const std::function<void()>>([&count] { ++count; });
    const ListenerBlock twin = std::make_shared<const std::function<void()>>([&count] { ++count; });
    const PropertyAddress address{kAudioDevicePropertyStreams, kAudioObjectPropertyScopeOutput, 0};
    const PropertyAddress global{kAudioDevicePropertyStreams, kAudioObjectPropertyScopeGlobal, 0};
    table.add(2, address, queue, block);
    const Answers::Change change{2, kAudioDevicePropertyStreams};
    const Answers::Change unheard[] = {{3, kAudioDevicePropertyStreams}, {2, kAudioObjectPropertyName}};
    table.notify({&change, 1});
    table.notify(unheard);
    EXPECT_EQ(count, 0) << "only on its queue";
    EXPECT_EQ(queue->run(), 1U);
    EXPECT_EQ(count, 1);
    EXPECT_FALSE(table.remove(2, address, queue, twin));
    EXPECT_FALSE(table.remove(2, global, queue, block));
    EXPECT_FALSE(table.remove(2, address, other, block));
    EXPECT_FALSE(table.remove(3, address, queue, block));
    EXPECT_TRUE(table.remove(2, address, queue, block));
    EXPECT_FALSE(table.remove(2, address, queue, block));
    table.notify({&change, 1});
    EXPECT_EQ(queue->run(), 0U);
    EXPECT_EQ(table.size(), 0U);
    EXPECT_EQ(block.use_count(), 1) << "what was removed is not kept";
}

}  // namespace
}  // namespace purlock::host_linux
