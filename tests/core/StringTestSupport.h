// Shared pieces of the String tests.
#pragma once

#include "fileio/core/String.h"
#include "memory/NamedPoolObjects.h"

#include <gtest/gtest.h>

#include <string>

/// Fails a test that leaves string-pool memory behind. Its own string keeps the pool's block
/// alive, as a host's do, so that loops over many values do not crawl under the sanitizers.
class StringPoolTest : public ::testing::Test {
protected:
    static unsigned long long StringPoolTotal() {
        return fileio::detail::NamedVarnPool(fileio::detail::VarnPoolKind::String).GetTotal();
    }
    void SetUp() override { m_before = StringPoolTotal(); }
    void TearDown() override { EXPECT_EQ(StringPoolTotal(), m_before) << "string memory leaked"; }

private:
    String m_resident{"keeps the string pool's block alive"};
    unsigned long long m_before = 0;
};

/// The text of a String, "<null>" for null so that null never passes for an empty buffer.
inline std::string TextOf(const String& s) {
    return s.Get() ? std::string(s.Get()) : std::string("<null>");
}
