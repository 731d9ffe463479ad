#pragma once

#include <cstdint>
#include <optional>

#include "Application/Log/Analytics/Reports/WebUpdateReporterInterface.h"
#include "tools/sample-host/SessionScript.h"

namespace qel::samplehost {

/// Reports the web updates that the script specifies.
class ScriptedWebUpdates : public log::analytics::reports::WebUpdateReporterInterface {
 public:
  void set(const WebUpdate& update) { update_ = update; }

  bool isInformationAvailable() const override { return update_.has_value(); }
  void reset() override { update_.reset(); }
  std::uint64_t getSuccessCount() const override { return update_.value_or(WebUpdate{}).success; }
  std::uint64_t getCorruptPackageCount() const override {
    return update_.value_or(WebUpdate{}).corrupt;
  }

 private:
  std::optional<WebUpdate> update_;
};

}  // namespace qel::samplehost
