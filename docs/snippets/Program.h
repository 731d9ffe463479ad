#pragma once

#include <memory>
#include <string>

#include "Application/Log/Analytics/Items/EnvironmentItem.h"
#include "Application/Log/Analytics/Reports/WebUpdateReporterInterface.h"

/// The embedding program, as far as the example needs it.
class Program {
 public:
  virtual ~Program() = default;

  virtual void run() = 0;
  virtual std::string dataDirectory() const = 0;
  virtual std::string installationId() const = 0;
  virtual std::string serverUser() const = 0;
  virtual std::string serverSecret() const = 0;
  virtual bool customerTakesPart() const = 0;
  virtual bool supportCopyAllowed() const = 0;
  virtual qel::log::analytics::reports::WebUpdateReporterInterface& webUpdates() = 0;
  virtual std::unique_ptr<qel::log::analytics::items::EnvironmentItem> describeMachine() const = 0;
};
