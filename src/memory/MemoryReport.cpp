// MemoryReport.cpp - the pool-memory report, to the log, into a text or in a message box.

#include "fileio/memory/MemoryReport.h"

#include "fileio/handlers/LogHandler.h"
#include "fileio/handlers/MessageRequest.h"
#include "fileio/memory/NamedPools.h"
#include "handlers/ResourceIds.h"
#include "memory/NamedPoolObjects.h"

#include <array>
#include <string>

namespace {

using fileio::detail::NamedSimplePool;
using fileio::detail::NamedVarnPool;
using fileio::detail::SimplePoolKind;
using fileio::detail::VarnPoolKind;

/// One line of the report: its label in the log, its padded label in the text, and where
/// its figure comes from.
struct ReportLine {
    const char* logLabel;
    const char* paddedLabel;
    unsigned long long (*figure)();
};

template <VarnPoolKind kind> unsigned long long VarnFigure() {
    return NamedVarnPool(kind).GetTotal();
}

template <SimplePoolKind kind> unsigned long long SimpleFigure() {
    return NamedSimplePool(kind).GetTotal();
}

constexpr std::array<ReportLine, 19> kReport = {{
    {"Total Pool Memory = ", "Total Pool Memory       = ", &TotalRAM},
    {"  Act Pool Memory = ", "\n     Act Pool Memory       = ", &VarnFigure<VarnPoolKind::Act>},
    {"  Att Pool Memory = ", "\n     Att Pool Memory       = ", &VarnFigure<VarnPoolKind::Att>},
    {"  Chor Pool Memory = ", "\n     Chor Pool Memory      = ", &VarnFigure<VarnPoolKind::Chor>},
    {"  Seg Pool Memory = ", "\n     Seg Pool Memory       = ", &VarnFigure<VarnPoolKind::Seg>},
    {"  Ext Pool Memory = ", "\n     Ext Pool Memory       = ", &VarnFigure<VarnPoolKind::Ext>},
    {"  Patch Pool Memory = ", "\n     Patch Pool Memory     = ", &VarnFigure<VarnPoolKind::Patch>},
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
    {"  Test Pool Memory = ", "\n     Test Pool Memory      = ", &VarnFigure<VarnPoolKind::Test>},
    {"  Light Buffer Memory = ", "\n     Light Buffer Memory   = ",
     &VarnFigure<VarnPoolKind::LBuff>},
    {"  Temp Pool Memory = ", "\n     Temp Pool Memory      = ",
     &SimpleFigure<SimplePoolKind::Temp>},
    {"  Undo Pool Memory = ", "\n     Undo Pool Memory      = ", &VarnFigure<VarnPoolKind::Undo>},
    {"  Propertie Pool Memory = ", "\n     Propertie Pool Memory = ",
     &VarnFigure<VarnPoolKind::Prop>},
    {"  Poly Pool Memory = ", "\n     Poly Pool Memory      = ", &VarnFigure<VarnPoolKind::Poly>},
}};

} // namespace

void LogPoolMemory() {
    if (GetLogHandler() == nullptr)
        return;
    for (const ReportLine& line : kReport) {
        LogHandler* const handler = GetLogHandler();
        if (handler == nullptr)
            continue;
        const unsigned long long figure = line.figure(); // before the line takes memory
        handler->LogMessage(String(line.logLabel) + String(figure));
    }
}

void LogPoolMemory(String& out) {
    // Every figure is read before the text takes memory of its own.
    std::array<unsigned long long, kReport.size()> figures{};
    for (std::size_t i = 0; i < kReport.size(); ++i)
        figures[i] = kReport[i].figure();
    std::string text;
    text.reserve(kReport.size() * 48);
    for (std::size_t i = 0; i < kReport.size(); ++i) {
        text += kReport[i].paddedLabel;
        text += std::to_string(figures[i]);
    }
    out = text;
}

void PrintMemoryMessage(const String& caption) {
    const unsigned long long total = TotalRAM(); // before the text takes memory
    const String text = caption + ": Total Memory:" + String(total);
    MessageRequest(text, 0, fileio::detail::resource::kApplicationCaption);
}
