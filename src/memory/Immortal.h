// Immortal.h - an object of static storage that is built on first use and never destroyed.
//
// The pools and what stands behind them must outlive every static destructor of the host
// that may still free a string at process exit. A function-local `static Immortal<T>` is
// built, thread-safely, the first time the function runs; Immortal itself is trivially
// destructible, so no exit-time destructor is registered for it and T's never runs.
#pragma once

#include <new>

namespace fileio::detail {

template <class T> class Immortal {
public:
    Immortal() noexcept { ::new (static_cast<void*>(m_storage)) T(); }
    T& Get() noexcept { return *std::launder(reinterpret_cast<T*>(m_storage)); }

private:
    alignas(T) unsigned char m_storage[sizeof(T)];
};

} // namespace fileio::detail
