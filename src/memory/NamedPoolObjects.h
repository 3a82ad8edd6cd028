// NamedPoolObjects.h - the library's own access to the named pool objects, for the memory
// report and the tests. Not exported.
#pragma once

#include "fileio/memory/Pool.h"

namespace fileio::detail {

/// The named VarnPool kinds.
enum class VarnPoolKind {
    Act,
    Att,
    Bitmap,
    Chor,
    Ext,
    GAssist,
    LBuff,
    Particle,
    Patch,
    Poly,
    Prop,
    Radiosity,
    Seg,
    Shadow,
    String,
    Test,
    Undo,
};
inline constexpr int kVarnPoolKindCount = 17;

/// The named SimplePool kinds.
enum class SimplePoolKind { SubPatch, Temp, Z };
inline constexpr int kSimplePoolKindCount = 3;

/// The pool of a kind; built on first use, never destroyed.
VarnPool& NamedVarnPool(VarnPoolKind kind) noexcept;
SimplePool& NamedSimplePool(SimplePoolKind kind) noexcept;

} // namespace fileio::detail
