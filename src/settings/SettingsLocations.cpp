// SettingsLocations.cpp - the three process-wide location strings.

#include "fileio/settings/SettingsLocations.h"

namespace {

String& ProfileLocation() {
    static String location;
    return location;
}
String& FoldersLocation() {
    static String location;
    return location;
}
String& LocalRegistryProfile() {
    static String profile;
    return profile;
}

} // namespace

String GetProfileLocation() {
    return ProfileLocation();
}
void SetProfileLocation(const String& location) {
    ProfileLocation() = location;
}
void FreeProfileLocation() {
    ProfileLocation() = String();
}

String GetFoldersLocation() {
    return FoldersLocation();
}
void SetFoldersLocation(const String& location) {
    FoldersLocation() = location;
}
void FreeFoldersLocation() {
    FoldersLocation() = String();
}

String GetLocalRegistryProfile() {
    return LocalRegistryProfile();
}
void SetLocalRegistryProfile(const String& profile) {
    LocalRegistryProfile() = profile;
}
void FreeLocalRegistryProfile() {
    LocalRegistryProfile() = String();
}
