#include "platform/linux/system/unused_memory.h"

#include <fcntl.h>
#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/linux/system/file_descriptor.h"

namespace purlock::host_linux {

namespace {

/// Addresses of whole pages.
struct Pages {
    std::uintptr_t begin;
    std::uintptr_t end;
};

std::uintptr_t pageSize() {
    static const auto size = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    return size;
}

Pages pagesOf(const dl_phdr_info& object, const ElfW(Phdr) & segment) {
    const std::uintptr_t begin = object.dlpi_addr + segment.p_vaddr;
    return {begin / pageSize() * pageSize(), begin + segment.p_filesz};
}

/// True if no page was changed in this process alone, by a debugger's breakpoints for example; such a change
/// would be lost. The kernel tells by a number for each page (Documentation/admin-guide/mm/pagemap.rst).
bool areAsInFile(const FileDescriptor& pagemap, const Pages& pages) {
    constexpr std::uint64_t present = std::uint64_t{1} << 63;
    constexpr std::uint64_t swapped = std::uint64_t{1} << 62;
    constexpr std::uint64_t ofFile = std::uint64_t{1} << 61;
    std::array<std::uint64_t, 512> numbers;
    std::uintptr_t page = pages.begin / pageSize();
    const std::uintptr_t end = (pages.end + pageSize() - 1) / pageSize();
    while (page < end) {
        const std::size_t wanted = std::min<std::uintptr_t>(end - page, numbers.size()) * sizeof numbers[0];
        const auto place = static_cast<off_t>(page * sizeof numbers[0]);
        const ssize_t count = ::pread(pagemap.get(), numbers.data(), wanted, place);
        if (count != static_cast<ssize_t>(wanted)) return false;
        const std::size_t read = wanted / sizeof numbers[0];
        const bool isChanged = std::any_of(numbers.begin(), numbers.begin() + read, [](std::uint64_t number) {
            return (number & (present | swapped)) != 0 && (number & ofFile) == 0;
        });
        if (isChanged) return false;
        page += read;
    }
    return true;
}

/// Called with the dynamic linker's lock held: no object comes or goes meanwhile.
int giveBackSegments(dl_phdr_info* object, std::size_t /*size*/, void* pagemap) {
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const auto& segment = object->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) continue;
        const Pages pages = pagesOf(*object, segment);
        if (!areAsInFile(*static_cast<const FileDescriptor*>(pagemap), pages)) continue;
        // NOLINTNEXTLINE(performance-no-int-to-ptr): a program header has addresses as numbers
        madvise(reinterpret_cast<void*>(pages.begin), pages.end - pages.begin, MADV_DONTNEED);
    }
    return 0;
}

}  // namespace

void keepFreeMemorySmall() {
    constexpr int largePiece = 256 * 1024;
    mallopt(M_MMAP_THRESHOLD, largePiece);
    mallopt(M_TRIM_THRESHOLD, largePiece);
    mallopt(M_ARENA_MAX, 1);
}

void giveBackUnusedMemory() {
    malloc_trim(0);
    FileDescriptor pagemap(::open("/proc/self/pagemap", O_RDONLY | O_CLOEXEC));
    if (pagemap) dl_iterate_phdr(giveBackSegments, &pagemap);
}

}  // namespace purlock::host_linux
