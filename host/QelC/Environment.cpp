#include "host/QelC/Environment.h"

#include <tuple>
#include <utility>
#include <vector>

#include "Application/Log/Analytics/SystemEnvironment/ThisMachine.h"
#include "host/QelC/CallError.h"
#include "host/QelC/qel_analytics.h"
#include "host/QelNotification/Fields.h"

namespace qel::c {
namespace {

namespace items = log::analytics::items;
using items::details::ApplicationInfo;
using items::details::HardwareEnvironmentInfo;
using items::details::OsEnvironmentInfo;
using items::details::QelEnvironmentInfo;
using notification::Fields;
using Texts = std::map<std::string, std::string>;

constexpr double highestDpi = 100'000;

std::string text(Fields& fields, const std::string& name) {
  return fields.has(name) ? fields.text(name) : std::string();
}

bool flag(Fields& fields, const std::string& name) { return fields.has(name) && fields.flag(name); }

Texts texts(Fields& fields, const std::string& name) {
  return fields.has(name) ? fields.texts(name) : Texts();
}

OsEnvironmentInfo operatingSystem(Fields& fields) {
  return {text(fields, "Name"),
          text(fields, "Bitness"),
          text(fields, "Language"),
          text(fields, "BuildNumber"),
          flag(fields, "IsTerminalServer"),
          text(fields, "ScreenResolution"),
          fields.has("ScreenDPI") ? static_cast<int>(fields.number("ScreenDPI", 0, highestDpi)) : 0,
          text(fields, "GraphicCardDriver")};
}

HardwareEnvironmentInfo hardware(Fields& fields) {
  return {text(fields, "CPU"), text(fields, "GraphicCard"), texts(fields, "Memory")};
}

ApplicationInfo application(Fields& fields) {
  return {.name = text(fields, "Name"),
          .version = text(fields, "Version"),
          .exeVersion = text(fields, "ExeVersion"),
          .exeDate = text(fields, "ExeDate"),
          .exeConfig = text(fields, "ExeConfig"),
          .language = text(fields, "Language"),
          .bitness = text(fields, "Bitness")};
}

/// An element of `InstalledApplications`.
struct Installed {
  ApplicationInfo application;
  std::string webUpdate;
  std::vector<std::string> userFiles;
  Texts iniFiles;
  Texts startSettings;
};

Installed installed(Fields& fields) {
  return {application(fields), text(fields, "WebUpdate"),
          fields.has("UserFiles") ? fields.textList("UserFiles") : std::vector<std::string>(),
          texts(fields, "IniFiles"), texts(fields, "StartSettings")};
}

bool isSame(const ApplicationInfo& one, const ApplicationInfo& other) {
  const auto members = [](const ApplicationInfo& of) {
    return std::tie(of.name, of.version, of.exeVersion, of.exeDate, of.exeConfig, of.language,
                    of.bitness);
  };
  return members(one) == members(other);
}

/// The installed applications, of which the one that is running is marked.
std::vector<QelEnvironmentInfo> applications(Fields& fields) {
  std::vector<Installed> all;
  if (fields.has("InstalledApplications")) {
    all = fields.objects("InstalledApplications", installed);
  }
  std::vector<QelEnvironmentInfo> described;
  const bool isRunningKnown = fields.has("CurrentActiveApplication");
  const auto running =
      isRunningKnown ? fields.object("CurrentActiveApplication", application) : ApplicationInfo();
  bool isMarked = !isRunningKnown;
  for (const auto& one : all) {
    const bool isCurrent = !isMarked && isSame(one.application, running);
    isMarked = isMarked || isCurrent;
    described.emplace_back(one.application, isCurrent, one.webUpdate, one.userFiles, one.iniFiles,
                           one.startSettings);
  }
  if (!isMarked) {
    described.insert(described.begin(), {running, true, "", {}, {}, {}});
  }
  return described;
}

std::unique_ptr<items::EnvironmentItem> environment(Fields& fields) {
  const auto machine = fields.has("OS") ? fields.object("OS", operatingSystem)
                                        : OsEnvironmentInfo("", "", "", "", false, "", 0, "");
  const auto parts =
      fields.has("Hardware") ? fields.object("Hardware", hardware) : HardwareEnvironmentInfo();
  return std::make_unique<items::EnvironmentItem>(machine, parts, applications(fields),
                                                  flag(fields, "IsInternal"));
}

}  // namespace

std::unique_ptr<items::EnvironmentItem> readEnvironment(const std::string& json) {
  if (json.empty()) {
    return nullptr;
  }
  try {
    const auto object = notification::parseJson(json);
    Fields fields(object);
    auto item = environment(fields);
    fields.expectAllRead();
    return item;
  } catch (const notification::NotificationError& fault) {
    throw CallError(QEL_ANALYTICS_INVALID_JSON, std::string("environment: ") + fault.what());
  }
}

std::string describeMachine(const std::string& program, const std::string& version) {
  ApplicationInfo running;
  running.name = program;
  running.version = version;
  const auto machine = log::analytics::systemenvironment::describeThisMachine(std::move(running));
  return json::JsonObject()
      .addJsonObject("CurrentActiveApplication",
                     machine->getQelEnvironmentInfo().front().application().asJsonObject())
      .addJsonObject("OS", machine->getOsEnvironmentInfo().asJsonObject())
      .addJsonObject("Hardware", machine->getHardwareEnvironmentInfo().asJsonObject())
      .toString();
}

}  // namespace qel::c
