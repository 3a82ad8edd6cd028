// LogFileName.cpp - the name of the log file the host's log handler writes.

#include "fileio/core/String.h"

#include "platform/Platform.h"

#include <string>

String String::GetLogFileName() {
    // Computed once: the name stays the same for the life of the process, even if the
    // application's folder would later read differently.
    static const String name = [] {
        std::string path = fileio::platform::System().applicationFolder();
        path += fileio::platform::NativeSeparator();
        path += "tollan.log";
        return String(path);
    }();
    return name;
}
