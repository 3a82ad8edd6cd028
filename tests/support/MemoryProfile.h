// MemoryProfile.h - an application profile held in memory, which records what it is asked,
// for tests of the profile settings and of the code that uses them.
#pragma once

#include "fileio/settings/ApplicationProfile.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace fileio::test {

class MemoryProfile : public ApplicationProfile {
public:
    /// One call of GetProfileString or WriteProfileString, as the profile received it
    /// (nullopt for a null pointer).
    struct Call {
        std::string operation;
        std::string section;
        std::optional<std::string> entry;
        std::optional<std::string> text; // the default read, or the value written
    };

    String GetProfileString(const char* section, const char* entry,
                            const char* defaultValue) override {
        calls.push_back({"get", section, Optional(entry), Optional(defaultValue)});
        const auto found = values.find({section, entry});
        return String(found != values.end() ? found->second.c_str() : defaultValue);
    }

    int WriteProfileString(const char* section, const char* entry, const char* value) override {
        calls.push_back({"write", section, Optional(entry), Optional(value)});
        if (failWrites)
            return 0;
        if (entry == nullptr)
            return std::erase_if(values, [&](const auto& v) { return v.first.first == section; })
                       ? 1
                       : 0;
        if (value == nullptr)
            return values.erase({section, entry}) != 0 ? 1 : 0;
        values[{section, entry}] = value;
        return 1;
    }

    int GetProfileBinary(const char*, const char*, unsigned char** data,
                         unsigned int* bytes) override {
        *data = binaryAnswer.empty() ? nullptr : binaryAnswer.data();
        *bytes = static_cast<unsigned int>(binaryAnswer.size());
        return binaryAnswer.empty() ? 0 : 7;
    }

    int WriteProfileBinary(const char* section, const char* entry, const unsigned char* data,
                           unsigned int bytes) override {
        binaryWrites.push_back({section, entry, std::vector<unsigned char>(data, data + bytes)});
        return 5;
    }

    /// The stored text of an entry, nullopt when absent.
    std::optional<std::string> Stored(const std::string& section, const std::string& entry) const {
        const auto found = values.find({section, entry});
        return found == values.end() ? std::nullopt : std::optional<std::string>(found->second);
    }

    struct BinaryWrite {
        std::string section, entry;
        std::vector<unsigned char> data;
    };

    std::map<std::pair<std::string, std::string>, std::string> values;
    std::vector<Call> calls;
    bool failWrites = false;
    std::vector<unsigned char> binaryAnswer;
    std::vector<BinaryWrite> binaryWrites;

private:
    static std::optional<std::string> Optional(const char* text) {
        return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
    }
};

} // namespace fileio::test
