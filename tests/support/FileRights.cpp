#include "tests/support/FileRights.h"

#ifdef _WIN32
#include <windows.h>
// Must follow windows.h.
#include <aclapi.h>
#endif

namespace qel::test {

#ifdef _WIN32

bool isForOwnerAlone(const std::filesystem::path& file) {
  PSID owner = nullptr;
  PACL entries = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  bool isAlone =
      GetNamedSecurityInfoW(file.c_str(), SE_FILE_OBJECT,
                            OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner, nullptr,
                            &entries, nullptr, &descriptor) == ERROR_SUCCESS &&
      entries != nullptr && entries->AceCount > 0;
  for (DWORD i = 0; isAlone && i < entries->AceCount; ++i) {
    void* entry = nullptr;
    GetAce(entries, i, &entry);
    PSID holder = &static_cast<ACCESS_ALLOWED_ACE*>(entry)->SidStart;
    isAlone = EqualSid(holder, owner) || IsWellKnownSid(holder, WinLocalSystemSid);
  }
  LocalFree(descriptor);
  return isAlone;
}

#else

bool isForOwnerAlone(const std::filesystem::path& file) {
  namespace fs = std::filesystem;
  const auto others = fs::perms::group_all | fs::perms::others_all;
  return (fs::status(file).permissions() & others) == fs::perms::none;
}

#endif

}  // namespace qel::test
