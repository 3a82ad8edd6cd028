// RuntimeClass.cpp - the registry of serialisable classes.

#include "fileio/stream/RuntimeClass.h"

#include "platform/Platform.h"

#include <algorithm>
#include <cstring>

namespace {

/// The registry's lock (the framework's global lock of the original), guarding every list.
fileio::platform::Mutex& RegistryLock() {
    static fileio::platform::Mutex lock;
    return lock;
}

/// The attached module lists, in the order they were attached.
std::vector<RuntimeClassList*>& ModuleLists() {
    static std::vector<RuntimeClassList*> lists;
    return lists;
}

bool HasName(const RuntimeClass& runtimeClass, const char* name, unsigned long long length) {
    return runtimeClass.name != nullptr && std::strlen(runtimeClass.name) == length &&
           std::memcmp(runtimeClass.name, name, static_cast<std::size_t>(length)) == 0;
}

} // namespace

void RuntimeClassList::Add(const RuntimeClass& runtimeClass) {
    fileio::platform::MutexGuard guard(RegistryLock());
    if (std::find(m_classes.begin(), m_classes.end(), &runtimeClass) == m_classes.end())
        m_classes.push_back(&runtimeClass);
}

void RuntimeClassList::Remove(const RuntimeClass& runtimeClass) {
    fileio::platform::MutexGuard guard(RegistryLock());
    m_classes.erase(std::remove(m_classes.begin(), m_classes.end(), &runtimeClass),
                    m_classes.end());
}

const RuntimeClass* RuntimeClassList::Find(const char* name, unsigned long long length) const {
    for (const RuntimeClass* runtimeClass : m_classes) {
        if (HasName(*runtimeClass, name, length))
            return runtimeClass;
    }
    return nullptr;
}

RuntimeClassList& GetApplicationClasses() {
    static RuntimeClassList list;
    return list;
}

void AttachModuleClasses(RuntimeClassList& list) {
    fileio::platform::MutexGuard guard(RegistryLock());
    std::vector<RuntimeClassList*>& lists = ModuleLists();
    if (std::find(lists.begin(), lists.end(), &list) == lists.end())
        lists.push_back(&list);
}

void DetachModuleClasses(RuntimeClassList& list) {
    fileio::platform::MutexGuard guard(RegistryLock());
    std::vector<RuntimeClassList*>& lists = ModuleLists();
    lists.erase(std::remove(lists.begin(), lists.end(), &list), lists.end());
}

const RuntimeClass* FindRuntimeClass(const char* name, unsigned long long length) {
    fileio::platform::MutexGuard guard(RegistryLock());
    if (const RuntimeClass* found = GetApplicationClasses().Find(name, length))
        return found;
    for (const RuntimeClassList* list : ModuleLists()) {
        if (const RuntimeClass* found = list->Find(name, length))
            return found;
    }
    return nullptr;
}
