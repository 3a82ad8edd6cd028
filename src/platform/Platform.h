// Platform.h - the one internal interface between the library and the operating system.
//
// Nothing outside src/platform/ includes a system header (<windows.h>, <unistd.h>, ...);
// subsystem code asks this layer instead. Two implementations exist, chosen by the build:
// posix/ for Linux and win32/ for Windows. Each service has the same meaning on both.
//
// Thread safety: every function here may be called from any thread unless its comment says
// otherwise. The layer is internal: it is never installed and none of it is exported.
//
// Replacing services in tests: each group of services that touches the outside world (files,
// the settings hive, dialogs, names and folders, network forms of paths) is reached through
// a table of function pointers, `XxxServices& Xxx()`, filled with the system's functions at
// start-up. A test overwrites entries of the table (to make the K-th write fail, a rename
// fail, the disk fill up, or a drive table or mount table hold what it needs) and puts the
// saved table back when it ends; ScopedServices<T> below does both. Memory and the mutex are
// called directly: a test has no reason to replace them.
#pragma once

#include <cstddef>
#include <vector>

namespace fileio::platform {

// ---------------------------------------------------------------------------------------
// System memory
// ---------------------------------------------------------------------------------------

/// Returns `bytes` bytes of system memory, aligned for any fundamental type. The contents
/// are unspecified. Never returns null: when the system cannot supply the memory the
/// process ends (see Fatal). A request of 0 bytes returns a unique non-null pointer.
void* AllocateSystemMemory(unsigned long long bytes);

/// Gives back memory from AllocateSystemMemory. Null is ignored.
void ReleaseSystemMemory(void* p) noexcept;

/// Ends the process at once after writing `why` to the standard error stream (and to the
/// debugger trace on Windows). Used for conditions the library does not report: exhausted
/// memory and a pool asked to free a pointer it never handed out.
[[noreturn]] void Fatal(const char* why) noexcept;

// ---------------------------------------------------------------------------------------
// Mutual exclusion
// ---------------------------------------------------------------------------------------

/// A non-recursive lock: a critical section on Windows (spin count 0), a pthread mutex on
/// POSIX. Not copyable. Constructing one cannot fail in a way the caller sees: a system
/// refusal ends the process.
class Mutex {
public:
    Mutex() noexcept;
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void Lock() noexcept;
    void Unlock() noexcept;

private:
    // Large and aligned enough for a CRITICAL_SECTION (40 bytes) or a pthread_mutex_t (40
    // bytes on x86-64 glibc); each implementation checks this with a static_assert.
    alignas(8) unsigned char storage_[64];
};

/// Holds a Mutex for the lifetime of the guard.
class MutexGuard {
public:
    explicit MutexGuard(Mutex& m) noexcept : mutex_(m) { mutex_.Lock(); }
    ~MutexGuard() { mutex_.Unlock(); }
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

private:
    Mutex& mutex_;
};

/// Replaces a service table for the lifetime of the guard and restores the saved one after.
/// Usage: `ScopedServices<FileServices> guard(Files()); Files().write = FailingWrite;`
template <class Table>
class ScopedServices {
public:
    explicit ScopedServices(Table& table) : table_(table), saved_(table) {}
    ~ScopedServices() { table_ = saved_; }
    ScopedServices(const ScopedServices&) = delete;
    ScopedServices& operator=(const ScopedServices&) = delete;

private:
    Table& table_;
    Table saved_;
};

// ---------------------------------------------------------------------------------------
// Files and folders
// ---------------------------------------------------------------------------------------

// ---------------------------------------------------------------------------------------
// Settings hive
// ---------------------------------------------------------------------------------------

// ---------------------------------------------------------------------------------------
// Dialogs
// ---------------------------------------------------------------------------------------

// ---------------------------------------------------------------------------------------
// Names, folders and traces of the system
// ---------------------------------------------------------------------------------------

// ---------------------------------------------------------------------------------------
// Network forms of paths
// ---------------------------------------------------------------------------------------

// ---------------------------------------------------------------------------------------
// Icons
// ---------------------------------------------------------------------------------------

/// An icon's pixels, as the streams store them: the colour image at 32 bits a pixel (blue,
/// green, red, alpha) and the mask at 1 bit a pixel (set where the icon is transparent),
/// each bottom row first, mask rows padded to 32 bits.
struct IconImage {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> color; ///< width x height x 4 bytes
    std::vector<unsigned char> mask;  ///< ((width + 31) / 32) x 4 x height bytes
};

/// Icons exist only on Windows: elsewhere every entry reports that it cannot.
struct IconServices {
    /// The pixels of an icon (an HICON). False for a null or invalid icon, or where icons
    /// do not exist.
    bool (*iconToImage)(void* icon, IconImage& image);
    /// A new icon made of the pixels, owned by the caller (destroyIcon); null when it
    /// cannot be made.
    void* (*imageToIcon)(const IconImage& image);
    /// Destroys an icon made by imageToIcon. Null is ignored.
    void (*destroyIcon)(void* icon);
};

/// The process's icon services.
IconServices& Icons();

} // namespace fileio::platform
