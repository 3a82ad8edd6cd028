// RuntimeClass.h - the registry of serialisable classes, by name.
//
// A stream can carry the identity of a class (VarnStream::StoreRuntimeClass writes its schema
// number and name; LoadRuntimeClass finds the class again by that name). The classes that may
// appear are registered here: the application registers its own in the application list, and
// each plug-in module registers its classes in a list of its own, attached while the module is
// loaded. A name is looked up exactly (case-sensitive), in the application list first, then in
// the module lists in the order they were attached; the first match wins.
//
// The records are owned by the caller (typically static objects) and must outlive their
// registration. Registration and lookup take one library-wide lock, so they may be called from
// any thread.
//
//     static RuntimeClass modelClass{"Model", 3, &CreateModel};
//     GetApplicationClasses().Add(modelClass);
#pragma once

#include "fileio/Export.h"

#include <vector>

/// One serialisable class: its name, the schema number of its stored form, and a factory
/// that makes a new default object of it (may be null for classes never made by name).
struct RuntimeClass {
    const char* name = nullptr;
    unsigned int schema = 0;
    void* (*create)() = nullptr;
};

/// One module's list of registered classes.
class FILEIO_API RuntimeClassList {
public:
    RuntimeClassList() = default;
    RuntimeClassList(const RuntimeClassList&) = delete;
    RuntimeClassList& operator=(const RuntimeClassList&) = delete;

    /// Registers a class (a second registration of the same record is ignored).
    void Add(const RuntimeClass& runtimeClass);
    /// Unregisters it; unknown records are ignored.
    void Remove(const RuntimeClass& runtimeClass);
    /// The first class of this list whose name is exactly `name`, or null.
    [[nodiscard]] const RuntimeClass* Find(const char* name, unsigned long long length) const;

private:
    std::vector<const RuntimeClass*> m_classes;
};

/// The application's own list, searched first.
FILEIO_API RuntimeClassList& GetApplicationClasses();
/// Attaches a plug-in module's list (searched after the application's and after the lists
/// attached before it). Attaching a list twice has no effect.
FILEIO_API void AttachModuleClasses(RuntimeClassList& list);
/// Detaches it again (when the module unloads).
FILEIO_API void DetachModuleClasses(RuntimeClassList& list);
/// The registered class named exactly `name` (length bytes, no NUL needed), searching the
/// application's list, then the attached modules' lists; null when none.
FILEIO_API const RuntimeClass* FindRuntimeClass(const char* name, unsigned long long length);
