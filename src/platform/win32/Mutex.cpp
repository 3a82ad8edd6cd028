// Mutex.cpp - the library's lock, Win32 implementation (a critical section, spin count 0).

#include "platform/Platform.h"

#include <new>
#include <windows.h>

namespace fileio::platform {

namespace {
CRITICAL_SECTION* Native(unsigned char* storage) {
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}
} // namespace

Mutex::Mutex() noexcept {
    static_assert(sizeof(CRITICAL_SECTION) <= sizeof(m_storage), "CRITICAL_SECTION does not fit");
    auto* cs = new (m_storage) CRITICAL_SECTION;
    if (!InitializeCriticalSectionAndSpinCount(cs, 0))
        Fatal("FileIO: cannot create a critical section");
}

Mutex::~Mutex() {
    DeleteCriticalSection(Native(m_storage));
}

void Mutex::Lock() noexcept {
    EnterCriticalSection(Native(m_storage));
}

void Mutex::Unlock() noexcept {
    LeaveCriticalSection(Native(m_storage));
}

} // namespace fileio::platform
