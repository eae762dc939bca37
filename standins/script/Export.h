#ifndef STANDINS_SCRIPT_EXPORT_H_
#define STANDINS_SCRIPT_EXPORT_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "standins/script/Raised.h"

namespace standin {

inline constexpr std::size_t kMostOuts = 2;

/// Everything that the scripted libraries export.
enum class Export {
  kInstallWdmDriver,
  kRunEpromPanel,
  kSilentRestart,
  kIsCpInRing,
  kAddIpAddress,
  kDeleteIpAddress,
  kSampleInstall,
  kSampleDeinstall,
  kSampleRefuse,
  kSampleFault,
  kSampleSlow,
};

struct ExportRow {
  std::string_view name;                           ///< in sections and in the log
  std::array<std::string_view, kMostOuts> outs{};  ///< keys of its output words, in their order
  std::uint32_t usualDelay = 0;                    ///< milliseconds, where no answer is scripted
  Raised usualRaised = Raised::kNothing;           ///< likewise
};

// One table for all libraries, so that one script can serve several of them.
inline constexpr std::array<ExportRow, 11> kExports{{
    {"EINST_InstallWdmDriver"},
    {"RunEpromPanelAsAdmin"},
    {"DllEntryFktSilent"},
    {"EpIsCpInRing", {"out"}},
    {"IE_AddIPAddressEx", {"nte-context", "nte-instance"}},
    {"IE_DeleteIPAddressEx"},
    {"SampleInstall"},
    {"SampleDeinstall"},
    {"SampleRefuse"},
    {"SampleFault", {}, 0, Raised::kAccessViolation},
    {"SampleSlow", {}, 2000},
}};

constexpr std::size_t IndexOf(Export which) { return static_cast<std::size_t>(which); }
constexpr const ExportRow& RowOf(Export which) { return kExports[IndexOf(which)]; }

static_assert(IndexOf(Export::kSampleSlow) + 1 == kExports.size() &&
                  RowOf(Export::kDeleteIpAddress).name == "IE_DeleteIPAddressEx",
              "the rows stand in the order of the enumeration");

}  // namespace standin

#endif  // STANDINS_SCRIPT_EXPORT_H_
