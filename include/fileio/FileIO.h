// FileIO.h - the umbrella header: includes every public header of the library.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"
#include "fileio/core/Vectors.h"
#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"
#include "fileio/path/BasePath.h"
#include "fileio/path/DirectorySearch.h"
#include "fileio/path/FileSystem.h"
#include "fileio/path/UniversalPath.h"
#include "fileio/stream/Token.h"
#include "fileio/stream/Vocabulary.h"
