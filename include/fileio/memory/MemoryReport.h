// MemoryReport.h - the pool-memory report: how much memory each named pool holds.
//
// The report has nineteen figures, each an unsigned decimal byte count without unit or
// grouping: first the total of all memory the library obtained from the system (TotalRAM,
// not the sum of the lines below it), then, in this order, the Act, Att, Chor, Seg, Ext,
// Patch, Particle, Bitmap, Z-Buffer, Subpatch, Shadow, Radiosity, Test, Light Buffer
// (LBuff), Temp, Undo, Propertie (Prop) and Poly pools. A block pool's figure is the bytes
// its allocations use, chunk headers included; a scratch pool's figure is the bytes of the
// chunks it took. The String and GAssist pools and the OGL buffer are not reported.
//
// The figures are read without locking: a report taken while other threads allocate is a
// set of independent snapshots.
//
// Must run on the host's main thread (it uses the handler slots).
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// Sends the report to the installed log handler as nineteen lines, "Total Pool Memory = "
/// followed by the total, then "  Act Pool Memory = " and so on (two leading blanks). The
/// handler is fetched again before each line, and a line is skipped when none is installed
/// then; with no handler installed nothing happens at all.
FILEIO_API void LogPoolMemory();

/// Replaces out by the report as one text of nineteen lines joined by line feeds; the
/// eighteen pool lines are indented by five blanks and padded so that their "=" fall in
/// one column:
///     "Total Pool Memory       = 123\n     Act Pool Memory       = 0\n ..."
/// The text ends with the last figure. Works with or without a log handler.
FILEIO_API void LogPoolMemory(String& out);

/// Shows caption + ": Total Memory:" + TotalRAM() ("Scene: Total Memory:1048576") through
/// MessageRequest with type 0 and the application's caption.
FILEIO_API void PrintMemoryMessage(const String& caption);
