#pragma once

#include "Core/DiagnosticsReport.h"

#include <string>
#include <string_view>

namespace ringwell {

// The diagnostics report offered as a plain-text file ("Share Diagnostics").
namespace DiagnosticsExport {

inline constexpr std::string_view fileName = "Ringwell Diagnostics.txt";
inline constexpr std::string_view previewTitle = "Ringwell Diagnostics";

// The file's bytes: the report's text in UTF-8, without a final line break.
inline std::string contents(const DiagnosticsReport& report) {
    return report.text();
}

} // namespace DiagnosticsExport
} // namespace ringwell
