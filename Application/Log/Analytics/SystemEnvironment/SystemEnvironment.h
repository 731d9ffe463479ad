#pragma once

#include "Application/Log/Analytics/SystemEnvironment/SystemEnvironmentInterface.h"

namespace qel::log::analytics::systemenvironment {

/// The current user's name, gathered at construction. All other facts stay empty; they are there so
/// that hosts can rely on the interface. Never changes, so any thread may ask.
class QEL_ANALYTICS_EXPORT SystemEnvironment : public SystemEnvironmentInterface {
 public:
  /// Throws `qel::exception` when the user's name cannot be found out.
  SystemEnvironment();

  const std::vector<std::string>& getIpAddresses() const override { return ipAddresses_; }
  const std::string& getScreenResolution() const override { return screenResolution_; }
  const std::string& getCurrentUser() const override { return currentUser_; }
  const OS& getOS() const override { return os_; }
  const Hardware& getHardware() const override { return hardware_; }
  const std::vector<Application>& getInstalledApplications() const override {
    return installedApplications_;
  }
  const std::vector<ConfigurationFile>& getApplicationConfigurationFiles() const override {
    return applicationConfigurationFiles_;
  }

 private:
  std::vector<std::string> ipAddresses_;
  std::string screenResolution_;
  std::string currentUser_;
  OS os_;
  Hardware hardware_;
  std::vector<Application> installedApplications_;
  std::vector<ConfigurationFile> applicationConfigurationFiles_;
};

}  // namespace qel::log::analytics::systemenvironment
