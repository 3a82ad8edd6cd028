// FileIO.h - the umbrella header: includes every public header of the library.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"
#include "fileio/core/Time.h"
#include "fileio/core/Vectors.h"
#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"
#include "fileio/path/VersionControl.h"
#include "fileio/stream/BitmapTypes.h"
#include "fileio/stream/DateTypes.h"
#include "fileio/stream/MemoryStream.h"
#include "fileio/stream/RuntimeClass.h"
#include "fileio/stream/StreamBOOL.h"
#include "fileio/stream/Token.h"
#include "fileio/stream/VarnStream.h"
#include "fileio/stream/Vocabulary.h"
#include "fileio/ui/DataExchange.h"
