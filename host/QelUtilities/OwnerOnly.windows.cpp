#include "host/QelUtilities/OwnerOnly.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include <windows.h>
// Must follow windows.h.
#include <sddl.h>

#include "host/QelUtilities/SystemError.h"

namespace qel::utilities {
namespace {

struct LocalMemory {
  void operator()(void* memory) const { LocalFree(memory); }
};

/// Reports why nothing was created. An existing file is no error.
bool notCreated(std::error_code& error) {
  error = lastSystemError();
  if (error == std::errc::file_exists) {
    error.clear();
  }
  return false;
}

/// The text of the security identifier of this process's user; empty if it cannot be read.
std::wstring userOfProcess() {
  alignas(TOKEN_USER) std::array<std::byte, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> user{};
  DWORD size = 0;
  wchar_t* text = nullptr;
  if (GetTokenInformation(GetCurrentProcessToken(), TokenUser, user.data(),
                          static_cast<DWORD>(user.size()), &size) == 0 ||
      ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, &text) == 0) {
    return {};
  }
  return std::unique_ptr<wchar_t, LocalMemory>(text).get();
}

/// A security descriptor that gives full access to this process's user and to the system account,
/// and inherits nothing. It names no owner, because a server may refuse an owner that it does not
/// know. `flags` are the inheritance flags of its entries.
class OwnerRights {
 public:
  explicit OwnerRights(const std::wstring& flags) {
    const std::wstring user = userOfProcess();
    const std::wstring entry = L"(A;" + flags + L";FA;;;";
    const std::wstring text = L"D:P" + entry + L"SY)" + entry + user + L")";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!user.empty() && ConvertStringSecurityDescriptorToSecurityDescriptorW(
                             text.c_str(), SDDL_REVISION_1, &descriptor, nullptr) != 0) {
      descriptor_.reset(descriptor);
      attributes_ = {sizeof(SECURITY_ATTRIBUTES), descriptor, FALSE};
    }
  }

  /// Null if the rights could not be determined. The thread's last error is then the reason.
  SECURITY_ATTRIBUTES* attributes() { return descriptor_ ? &attributes_ : nullptr; }

 private:
  std::unique_ptr<void, LocalMemory> descriptor_;
  SECURITY_ATTRIBUTES attributes_{};
};

}  // namespace

/// The flag for reparse points makes the call fail if the name is a symbolic link, even if the
/// link's target does not exist.
bool createForOwnerAlone(const std::filesystem::path& file, std::error_code& error) {
  OwnerRights rights(L"");
  if (rights.attributes() == nullptr) {
    return notCreated(error);
  }
  const HANDLE created =
      CreateFileW(file.c_str(), GENERIC_WRITE, 0, rights.attributes(), CREATE_NEW,
                  FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (created == INVALID_HANDLE_VALUE) {
    return notCreated(error);
  }
  CloseHandle(created);
  error.clear();
  return true;
}

bool createDirectoryForOwnerAlone(const std::filesystem::path& directory, std::error_code& error) {
  OwnerRights rights(L"OICI");
  if (rights.attributes() == nullptr ||
      CreateDirectoryW(directory.c_str(), rights.attributes()) == 0) {
    return notCreated(error);
  }
  error.clear();
  return true;
}

}  // namespace qel::utilities
