#pragma once

/// Names of the files that qel-sample-host keeps in its directory in addition to the recordings.
namespace qel::tools {

inline constexpr const char* sampleHostLog = "qel-sample-host.log";
inline constexpr const char* installationIdFile = "installation-id";

}  // namespace qel::tools
