#pragma once

#include <filesystem>
#include <string>

namespace qel::platform::windows {

/// What the system says about this machine. Texts are UTF-8. Unknown facts are empty or 0.
struct MachineFacts {
  std::string systemName;         ///< such as "Debian GNU/Linux 12 (bookworm)" or "Windows 11 Pro"
  std::string systemBuild;        ///< release of the kernel, or build number of Windows
  std::string language;           ///< of the user: "de_DE" on Linux, "de-DE" on Windows
  bool isRemoteSession = false;   ///< on a terminal server; known on Windows only
  std::string screenResolution;   ///< of the first screen in pixels, such as "1920x1080"
  int screenDpi = 0;              ///< known on Windows only
  std::string graphicCard;        ///< known on Windows only
  std::string graphicCardDriver;  ///< its version; known on Windows only
  std::string processor;          ///< the model
  std::string memory;             ///< all physical memory, such as "16303428 kB"
};

/// Reads the facts at each call. Reads environment variables on Linux, so no other thread may set
/// one at the same time. Throws only `std::bad_alloc`.
MachineFacts readMachineFacts();

/// The file of this program; empty if it is unknown.
std::filesystem::path programFile();

}  // namespace qel::platform::windows
