// PoolReport.cpp - the lines of the pool-memory report: their labels and figures.

#include "memory/PoolReport.h"

#include "fileio/memory/NamedPools.h"
#include "memory/NamedPoolObjects.h"

namespace fileio::detail {

namespace {

template <VarnPoolKind kind> unsigned long long VarnFigure() {
    return NamedVarnPool(kind).GetTotal();
}

template <SimplePoolKind kind> unsigned long long SimpleFigure() {
    return NamedSimplePool(kind).GetTotal();
}

} // namespace

const std::array<PoolReportLine, kPoolReportLines>& PoolReport() {
    static constexpr std::array<PoolReportLine, kPoolReportLines> kReport = {{
        {"Total Pool Memory = ", "Total Pool Memory       = ", &TotalRAM},
        {"  Act Pool Memory = ", "\n     Act Pool Memory       = ", &VarnFigure<VarnPoolKind::Act>},
        {"  Att Pool Memory = ", "\n     Att Pool Memory       = ", &VarnFigure<VarnPoolKind::Att>},
        {"  Chor Pool Memory = ", "\n     Chor Pool Memory      = ",
         &VarnFigure<VarnPoolKind::Chor>},
        {"  Seg Pool Memory = ", "\n     Seg Pool Memory       = ", &VarnFigure<VarnPoolKind::Seg>},
        {"  Ext Pool Memory = ", "\n     Ext Pool Memory       = ", &VarnFigure<VarnPoolKind::Ext>},
        {"  Patch Pool Memory = ", "\n     Patch Pool Memory     = ",
         &VarnFigure<VarnPoolKind::Patch>},
        {"  Particle Pool Memory = ", "\n     Particle Pool Memory  = ",
         &VarnFigure<VarnPoolKind::Particle>},
        {"  Bitmap Pool Memory = ", "\n     Bitmap Pool Memory    = ",
         &VarnFigure<VarnPoolKind::Bitmap>},
        {"  Z-Buffer Pool Memory = ", "\n     Z-Buffer Pool Memory  = ",
         &SimpleFigure<SimplePoolKind::Z>},
        {"  Subpatch Pool Memory = ", "\n     Subpatch Pool Memory  = ",
         &SimpleFigure<SimplePoolKind::SubPatch>},
        {"  Shadow Pool Memory = ", "\n     Shadow Pool Memory    = ",
         &VarnFigure<VarnPoolKind::Shadow>},
        {"  Radiosity Pool Memory = ", "\n     Radiosity Pool Memory = ",
         &VarnFigure<VarnPoolKind::Radiosity>},
        {"  Test Pool Memory = ", "\n     Test Pool Memory      = ",
         &VarnFigure<VarnPoolKind::Test>},
        {"  Light Buffer Memory = ", "\n     Light Buffer Memory   = ",
         &VarnFigure<VarnPoolKind::LBuff>},
        {"  Temp Pool Memory = ", "\n     Temp Pool Memory      = ",
         &SimpleFigure<SimplePoolKind::Temp>},
        {"  Undo Pool Memory = ", "\n     Undo Pool Memory      = ",
         &VarnFigure<VarnPoolKind::Undo>},
        {"  Propertie Pool Memory = ", "\n     Propertie Pool Memory = ",
         &VarnFigure<VarnPoolKind::Prop>},
        {"  Poly Pool Memory = ", "\n     Poly Pool Memory      = ",
         &VarnFigure<VarnPoolKind::Poly>},
    }};
    return kReport;
}

} // namespace fileio::detail
