// RegistryProfile.h - the library's ready application profile, backed by the settings
// store under "Software\Varn, Inc.\" followed by an application name.
//
// Section S of application A is the key "Software\Varn, Inc.\A\S" of the current user's
// settings (the registry on Windows, the settings file on Linux); each entry is a string
// value of that key. Binary data are stored as a string of two upper-case hexadecimal
// digits per byte ("01FF" for the bytes 0x01 0xFF).
//
// A host installs it in one call:
//     InstallRegistryProfile("Animator");
//
// Thread safety: none; profile settings belong to the host's main thread.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"
#include "fileio/settings/ApplicationProfile.h"

class FILEIO_API RegistryProfile : public ApplicationProfile {
public:
    /// A profile for the application named `applicationName`.
    explicit RegistryProfile(const String& applicationName);
    ~RegistryProfile() override;

    String GetProfileString(const char* section, const char* entry,
                            const char* defaultValue) override;
    int WriteProfileString(const char* section, const char* entry, const char* value) override;
    int GetProfileBinary(const char* section, const char* entry, unsigned char** data,
                         unsigned int* bytes) override;
    int WriteProfileBinary(const char* section, const char* entry, const unsigned char* data,
                           unsigned int bytes) override;

    /// The store key of the application: "Software\Varn, Inc.\" + application name.
    [[nodiscard]] String GetApplicationKey() const;
    /// The store key of `section`: the application's key + "\" + section.
    [[nodiscard]] String GetSectionKey(const char* section) const;

private:
    String m_applicationName;
};

/// Installs the library's own RegistryProfile for `applicationName` and returns the
/// profile object installed before. The object is the library's and lives as long as the
/// process; a second call renames it (and installs it again).
FILEIO_API ApplicationProfile* InstallRegistryProfile(const String& applicationName);
