// Memory.cpp - system memory and fatal exits; the same on every platform, since the C
// runtime's allocator is the system allocator on both.

#include "platform/Platform.h"

#include <cstdio>
#include <cstdlib>

namespace fileio::platform {

void* AllocateSystemMemory(unsigned long long bytes) {
    // malloc(0) may return null; ask for one byte so that null always means exhaustion.
    void* p = std::malloc(bytes == 0 ? 1 : static_cast<std::size_t>(bytes));
    if (p == nullptr)
        Fatal("FileIO: out of memory");
    return p;
}

void ReleaseSystemMemory(void* p) noexcept {
    std::free(p);
}

void Fatal(const char* why) noexcept {
    std::fputs(why, stderr);
    std::fputc('\n', stderr);
    std::fflush(stderr);
    std::abort();
}

} // namespace fileio::platform
