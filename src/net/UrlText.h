// UrlText.h - the URLs the internet helpers hand to the system: pure text functions.
#pragma once

#include <string>
#include <string_view>

namespace fileio::net {

/// The URL LaunchBrowser opens for `text`, or empty when it opens none. Text without a
/// scheme (or with a host and port, "localhost:8080/x") gets "http://"; a scheme other
/// than http or https is refused. Blanks, control bytes, non-ASCII bytes and the bytes
/// never allowed in a URL (" < > \ ^ ` { | }) become %XX; everything else, "%" included,
/// is kept, since the URL's own escapes and delimiters must survive.
///
///     "www.example.com/a b"  => "http://www.example.com/a%20b"
///     "HTTPS://x/?q=1&r=2"   => "HTTPS://x/?q=1&r=2"
///     "file:///etc/passwd"   => ""
std::string BrowserUrl(std::string_view text);

/// The "mailto:" URL of a new message. The address keeps its letters, digits and
/// "-._~@!$'*+,;=" and escapes the rest; subject and body keep only letters, digits and
/// "-._~". Any line end (CR LF, LF or CR) becomes "%0D%0A". Empty fields are left out.
///
///     ("ann@x.org", "Q&A", "a b")  => "mailto:ann@x.org?subject=Q%26A&body=a%20b"
std::string MailUrl(std::string_view address, std::string_view subject, std::string_view body);

/// The revision number in a version-control client's answer: decimal digits with white
/// space around them, at most INT_MAX; -1 for anything else.
int ParseRevision(std::string_view answer);

} // namespace fileio::net
