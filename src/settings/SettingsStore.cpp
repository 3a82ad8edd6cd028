// SettingsStore.cpp - the settings layer's access to the settings hive.

#include "settings/SettingsStore.h"

#include "fileio/handlers/LogHandler.h"
#include "platform/Platform.h"

#include <string>

namespace fileio::detail {

namespace {

/// Posts each line of the hive's damage report to the log handler (dropped when none is
/// installed).
void ReportDamage() {
    const std::string report = platform::Hive().takeDamageReport();
    for (std::size_t start = 0; start < report.size();) {
        std::size_t end = report.find('\n', start);
        if (end == std::string::npos)
            end = report.size();
        LogHandler::Post(String(report.substr(start, end - start)));
        start = end + 1;
    }
}

} // namespace

bool ReadStoreString(const String& key, const String& name, String& value) {
    std::string text;
    const bool found = platform::Hive().readString(TextOf(key), TextOf(name), text);
    ReportDamage();
    if (found)
        value = String(text);
    return found;
}

bool WriteStoreString(const String& key, const String& name, const String& value) {
    const bool written = platform::Hive().writeString(TextOf(key), TextOf(name), TextOf(value));
    ReportDamage();
    return written;
}

bool DeleteStoreValue(const String& key, const String& name) {
    const bool removed = platform::Hive().deleteValue(TextOf(key), TextOf(name));
    ReportDamage();
    return removed;
}

bool DeleteStoreKey(const String& parent, const String& name) {
    const bool removed = platform::Hive().deleteKey(TextOf(parent), TextOf(name));
    ReportDamage();
    return removed;
}

} // namespace fileio::detail
