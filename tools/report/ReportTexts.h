#pragma once

namespace qel::report {

/// The files "report.mustache", "plot.mustache" and "report.css", which the build embeds.
extern const char* const reportTemplate;
extern const char* const plotTemplate;
extern const char* const reportStyle;

}  // namespace qel::report
