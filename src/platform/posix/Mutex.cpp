// Mutex.cpp - the library's lock, POSIX implementation (a default pthread mutex).

#include "platform/Platform.h"

#include <new>
#include <pthread.h>

namespace fileio::platform {

namespace {
pthread_mutex_t* Native(unsigned char* storage) {
    return std::launder(reinterpret_cast<pthread_mutex_t*>(storage));
}
} // namespace

Mutex::Mutex() noexcept {
    static_assert(sizeof(pthread_mutex_t) <= sizeof(m_storage), "pthread_mutex_t does not fit");
    static_assert(alignof(pthread_mutex_t) <= 8, "pthread_mutex_t needs stronger alignment");
    auto* m = new (m_storage) pthread_mutex_t;
    if (pthread_mutex_init(m, nullptr) != 0)
        Fatal("FileIO: cannot create a mutex");
}

Mutex::~Mutex() {
    pthread_mutex_destroy(Native(m_storage));
}

void Mutex::Lock() noexcept {
    if (pthread_mutex_lock(Native(m_storage)) != 0)
        Fatal("FileIO: cannot take a mutex");
}

void Mutex::Unlock() noexcept {
    pthread_mutex_unlock(Native(m_storage));
}

} // namespace fileio::platform
