// Internet.h - the internet helpers: the browser, the mail program, the version-control
// revision of a file, downloads, and the connection test.
//
// Programs are started with an argument vector, never through a shell, so no text given
// here is ever read as a command: xdg-open on Linux, the handler the system registered for
// the URL's scheme on Windows. Downloads use libcurl on Linux and WinHTTP on Windows.
//
// Text is taken as the bytes the host gives. Where it becomes part of a URL, each byte that
// may not stand there as it is is written as %XX, so a non-ASCII character becomes the
// %XX of each of its bytes (the bytes of UTF-8 on Linux, of the system code page on
// Windows).
//
// Dial-up: the library once dialled a modem connection before a transfer. No current system
// has one to dial: the network is up or down at the system's level, and a program that asks
// first only learns something that may have changed by the time it acts. So the library
// reports the connection as present, and a transfer that finds no network fails with the
// system's own reason.
//
// Thread safety: any thread; DownloadFile's progress goes to the status handler, which
// belongs to the thread that shows the status line.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// The largest download DownloadFile accepts unless told otherwise: 256 MiB.
inline constexpr unsigned long long kDefaultDownloadLimit = 256ull * 1024 * 1024;
/// How long DownloadFile waits for a whole transfer unless told otherwise: 5 minutes.
inline constexpr int kDefaultDownloadTimeoutMs = 5 * 60 * 1000;
/// How long SVNGetRevision waits for the version-control client unless told otherwise.
inline constexpr int kDefaultRevisionTimeoutMs = 10 * 1000;

/// Opens `url` in the user's web browser and returns at once. A URL without a scheme gets
/// "http://" ("www.example.com/a b" opens "http://www.example.com/a%20b"); blanks, control
/// and non-ASCII bytes are percent-encoded, the rest is kept as written. Only http and
/// https URLs are opened: any other scheme ("file:", "javascript:" ...) gives false, as does
/// an empty URL or a system without a browser handler.
FILEIO_API bool LaunchBrowser(const String& url);

/// Opens the user's mail program on a new message to `address` with `subject` and `body`
/// filled in (a "mailto:" URL: each field percent-encoded, line ends as CR LF; empty
/// fields are left out). Returns at once; false when no mail program could be started.
FILEIO_API bool LaunchMail(const String& address, const String& subject, const String& body);

/// The revision in which the file at `path` last changed, asked of the version-control
/// client ("svn") as a child process, which is ended after `timeoutMs`. -1 when the file is
/// not in a working copy (SVNIsVersioned), no client is installed, the client fails or does
/// not answer in time, or its answer is not a revision number.
FILEIO_API int SVNGetRevision(const String& path, int timeoutMs = kDefaultRevisionTimeoutMs);

/// Downloads `url` (http or https, redirections followed) to the file `path`, replacing
/// it only when the whole body has arrived: the new file is written beside it, flushed to
/// the disk and renamed over it, so that on any failure (no connection, an HTTP error, a
/// truncated transfer, a body above `sizeLimit` bytes, `timeoutMs` passed, a full disk)
/// the old file is left as it was and nothing else is left behind. The transfer's progress
/// is shown through StatusMessage. False on failure, with the reason in `*why` when given
/// ("HTTP 404", "the server sent 500 of 1000 bytes", ...).
FILEIO_API bool DownloadFile(const String& url, const String& path, String* why = nullptr,
                             unsigned long long sizeLimit = kDefaultDownloadLimit,
                             int timeoutMs = kDefaultDownloadTimeoutMs);

/// Always true: the connection is reported as present (see dial-up above).
FILEIO_API bool IsConnectedToInternet();

/// Where a dial-up connection was made: does nothing and returns true (see above).
FILEIO_API bool ConnectToInternet();
