// StringTestSupport.h - shared pieces of the String tests: a fixture that checks every test
// gives all of its string memory back, and the text of a String with null marked.
#pragma once

#include "fileio/core/String.h"
#include "memory/NamedPoolObjects.h"

#include <gtest/gtest.h>

#include <string>

/// Fails a test that leaves string-pool memory behind (every String it made must have
/// freed its buffer by the end of the test body).
///
/// The fixture holds one string of its own for the whole test, as a host always has strings
/// alive: otherwise each release of a test's last string would hand the pool's block back
/// to the system and the next string would fetch a new one, which makes loops over
/// thousands of values crawl under the sanitizers.
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

/// The text of a String as std::string, with a marker for null ("<null>") so that a null
/// result never passes for an empty buffer.
inline std::string TextOf(const String& s) {
    return s.Get() ? std::string(s.Get()) : std::string("<null>");
}
