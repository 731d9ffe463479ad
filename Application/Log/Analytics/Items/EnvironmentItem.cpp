#include "Application/Log/Analytics/Items/EnvironmentItem.h"

#include <algorithm>
#include <utility>

#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items {
namespace {

details::ApplicationInfo currentOf(const std::vector<details::QelEnvironmentInfo>& applications) {
  const auto current = std::find_if(applications.begin(), applications.end(),
                                    [](const auto& candidate) { return candidate.isCurrent(); });
  return current == applications.end() ? details::ApplicationInfo() : current->application();
}

}  // namespace

// NOLINTBEGIN(modernize-pass-by-value): the exported signature is fixed.
EnvironmentItem::EnvironmentItem(const details::OsEnvironmentInfo& os,
                                 const details::HardwareEnvironmentInfo& hardware,
                                 const std::vector<details::QelEnvironmentInfo>& applications,
                                 bool isInternal)
    : os_(os),
      hardware_(hardware),
      applications_(applications),
      currentApplication_(currentOf(applications)),
      isInternal_(isInternal) {}
// NOLINTEND(modernize-pass-by-value)

std::string EnvironmentItem::toJson() const {
  std::vector<json::JsonObject> installed;
  for (const auto& application : applications_) {
    installed.push_back(application.asJsonObject());
  }
  json::JsonObject json;
  addOrigin(json);
  json.addBool("IsInternal", isInternal_)
      .addJsonObject("CurrentActiveApplication", currentApplication_.asJsonObject())
      .addJsonObject("OS", os_.asJsonObject())
      .addJsonObject("Hardware", hardware_.asJsonObject())
      .addJsonObjectVector("InstalledApplications", installed);
  return std::move(json).toString();
}

}  // namespace qel::log::analytics::items
