// ApplicationProfile.h - the host application's profile operations, and their slot.
//
// The profile settings (RegistrySettings.h) are read and written through an object the
// host installs: four operations that land under whatever key the host has chosen for its
// profile. RegistryProfile.h has a ready implementation backed by the settings store.
//
// The library never owns the installed object: the host uninstalls it (installs null or
// another one) before destroying it. An implementation must not throw out of these
// operations, and must not call the profile settings functions from inside them.
//
// Thread safety: the slot is a plain pointer that belongs to the host's main thread.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

class FILEIO_API ApplicationProfile {
public:
    ApplicationProfile() = default;
    virtual ~ApplicationProfile();

    /// The text of `entry` in `section`, or `defaultValue` (null reads as empty) when the
    /// entry is absent.
    virtual String GetProfileString(const char* section, const char* entry,
                                    const char* defaultValue) = 0;
    /// Stores `value` as the text of `entry` in `section`. A null `value` removes the
    /// entry; a null `entry` removes the whole section. Non-zero on success.
    virtual int WriteProfileString(const char* section, const char* entry, const char* value) = 0;
    /// Reads binary data stored by WriteProfileBinary. On success returns non-zero and sets
    /// *data to a buffer from `new unsigned char[]` (the caller releases it with delete[])
    /// and *bytes to its size; otherwise returns 0 with *data null and *bytes 0.
    virtual int GetProfileBinary(const char* section, const char* entry, unsigned char** data,
                                 unsigned int* bytes) = 0;
    /// Stores `bytes` bytes of binary data as `entry` in `section`. Non-zero on success.
    virtual int WriteProfileBinary(const char* section, const char* entry,
                                   const unsigned char* data, unsigned int bytes) = 0;

protected:
    ApplicationProfile(const ApplicationProfile&) = default;
    ApplicationProfile& operator=(const ApplicationProfile&) = default;
};

/// The installed profile object, null when none is installed.
FILEIO_API ApplicationProfile* GetApplicationProfile();
/// Installs `profile` (null uninstalls) and returns the object installed before.
FILEIO_API ApplicationProfile* SetApplicationProfile(ApplicationProfile* profile);
