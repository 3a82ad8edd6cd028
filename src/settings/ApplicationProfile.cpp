// ApplicationProfile.cpp - the slot of the host's application profile.

#include "fileio/settings/ApplicationProfile.h"

namespace {
ApplicationProfile* g_profile = nullptr;
} // namespace

ApplicationProfile::~ApplicationProfile() = default;

ApplicationProfile* GetApplicationProfile() {
    return g_profile;
}

ApplicationProfile* SetApplicationProfile(ApplicationProfile* profile) {
    ApplicationProfile* previous = g_profile;
    g_profile = profile;
    return previous;
}
