#include "host/QelPlatformWindows/MachineFacts.h"

#include <array>
#include <charconv>
#include <string>
#include <string_view>

#include <windows.h>

#include "host/QelUtilities/PathText.h"

namespace qel::platform::windows {
namespace {

constexpr const wchar_t* versionKey = LR"(SOFTWARE\Microsoft\Windows NT\CurrentVersion)";
constexpr const wchar_t* processorKey = LR"(HARDWARE\DESCRIPTION\System\CentralProcessor\0)";

/// A text of the machine's registry; empty if there is none.
std::string registryText(const std::wstring& key, const wchar_t* name) {
  std::array<wchar_t, 512> text{};
  DWORD size = sizeof(text);
  const auto result = RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, RRF_RT_REG_SZ, nullptr,
                                   text.data(), &size);
  return result == ERROR_SUCCESS ? utilities::utf8FromPath(text.data()) : "";
}

/// For example "Windows 10 Pro". The registry of Windows 11 contains the name of Windows 10.
std::string productName(const std::string& build) {
  constexpr std::string_view oldName = "Windows 10";
  constexpr int firstBuildOfWindows11 = 22000;
  auto name = registryText(versionKey, L"ProductName");
  int number = 0;
  std::from_chars(build.data(), build.data() + build.size(), number);
  if (number >= firstBuildOfWindows11 && name.starts_with(oldName)) {
    name.replace(0, oldName.size(), "Windows 11");
  }
  return name;
}

/// The size of the primary screen in pixels, for example "1920x1080".
std::string screenResolution() {
  DEVMODEW mode{};
  mode.dmSize = sizeof(mode);
  if (EnumDisplaySettingsW(nullptr, ENUM_CURRENT_SETTINGS, &mode) == 0) {
    return {};
  }
  return std::to_string(mode.dmPelsWidth) + 'x' + std::to_string(mode.dmPelsHeight);
}

DISPLAY_DEVICEW primaryGraphicCard() {
  DISPLAY_DEVICEW device{};
  device.cb = sizeof(device);
  for (DWORD number = 0; EnumDisplayDevicesW(nullptr, number, &device, 0) != 0; ++number) {
    if ((device.StateFlags & DISPLAY_DEVICE_PRIMARY_DEVICE) != 0) {
      return device;
    }
  }
  return {};
}

/// The version of the card's driver.
std::string graphicCardDriver() {
  constexpr std::wstring_view machine = LR"(\Registry\Machine\)";
  const std::wstring key = primaryGraphicCard().DeviceKey;
  if (key.size() <= machine.size()) {
    return {};
  }
  return registryText(key.substr(machine.size()), L"DriverVersion");
}

/// All physical memory.
std::string memory() {
  constexpr unsigned bytesPerKB = 1024;
  MEMORYSTATUSEX status{};
  status.dwLength = sizeof(status);
  return GlobalMemoryStatusEx(&status) == 0
             ? ""
             : std::to_string(status.ullTotalPhys / bytesPerKB) + " kB";
}

std::string language() {
  std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
  GetUserDefaultLocaleName(name.data(), static_cast<int>(name.size()));
  return utilities::utf8FromPath(name.data());
}

}  // namespace

MachineFacts readMachineFacts() {
  const auto build = registryText(versionKey, L"CurrentBuild");
  return {
      .systemName = productName(build),
      .systemBuild = build,
      .language = language(),
      .isRemoteSession = GetSystemMetrics(SM_REMOTESESSION) != 0,
      .screenResolution = screenResolution(),
      .screenDpi = static_cast<int>(GetDpiForSystem()),
      .graphicCard = utilities::utf8FromPath(primaryGraphicCard().DeviceString),
      .graphicCardDriver = graphicCardDriver(),
      .processor = registryText(processorKey, L"ProcessorNameString"),
      .memory = memory(),
  };
}

std::filesystem::path programFile() {
  std::wstring name(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
    if (length < name.size()) {
      name.resize(length);
      return name;
    }
    name.resize(name.size() * 2);
  }
}

}  // namespace qel::platform::windows
