// StreamState.h - library-wide state of the streams (internal).
#pragma once

#include "fileio/core/String.h"

namespace fileio::detail {

/// The shared scratch token: text number and bool readers parse a token into it when it is
/// too long for their own buffer. Freed by FreeVarnFileToken.
String& FileToken();

} // namespace fileio::detail
