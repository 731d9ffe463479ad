#pragma once

namespace qel::support {

/// The files "report.mustache", "plot.mustache" and "report.css", which the build puts into the
/// program.
extern const char* const reportTemplate;
extern const char* const plotTemplate;
extern const char* const reportStyle;

}  // namespace qel::support
