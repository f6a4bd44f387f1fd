#include "platform/linux/system/unused_memory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <fstream>
#include <string>

namespace purlock::host_linux {
namespace {

/// KiB of files that are mapped and present.
long residentOfFiles() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word != "RssFile:") continue;
        long kibibytes = 0;
        status >> kibibytes;
        return kibibytes;
    }
    return -1;
}

constexpr std::size_t page = 4096;
alignas(page) const char constants[page] = {'a', 'b'};

/// What is in memory now, not what the compiler knows.
char constant(std::size_t index) {
    return static_cast<const volatile char*>(constants)[index];
}

TEST(UnusedMemory, LeavesCodeToTheCacheOfFiles) {
    const long before = residentOfFiles();
    giveBackUnusedMemory();
    const long little = residentOfFiles();  // with the code that this has needed
    volatile long sum = 0;
    for (std::size_t i = 0; i < page; ++i) sum = sum + constant(i);
    ASSERT_EQ(sum, 'a' + 'b');
    EXPECT_LT(little, before * 3 / 4);
    EXPECT_GT(residentOfFiles(), little);
}

/// As a debugger's breakpoint does.
TEST(UnusedMemory, KeepsWhatWasChangedInThisProcess) {
    auto* const changed = const_cast<char*>(constants);
    ASSERT_EQ(mprotect(changed, page, PROT_READ | PROT_WRITE), 0);
    changed[1] = 'c';
    ASSERT_EQ(mprotect(changed, page, PROT_READ), 0);
    giveBackUnusedMemory();
    EXPECT_EQ(constant(1), 'c');
    ASSERT_EQ(mprotect(changed, page, PROT_READ | PROT_WRITE), 0);
    changed[1] = 'b';
    ASSERT_EQ(mprotect(changed, page, PROT_READ), 0);
}

}  // namespace
}  // namespace purlock::host_linux
