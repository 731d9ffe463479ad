#pragma once

#include "Application/Log/Analytics/SystemEnvironment/SystemEnvironmentInterface.h"

namespace qel::log::analytics::systemenvironment {

/// Provides the name of the current user, which the constructor reads. All other facts are empty
/// and exist only to complete the interface. The object never changes, so it is thread-safe.
class QEL_ANALYTICS_EXPORT SystemEnvironment : public SystemEnvironmentInterface {
 public:
  /// Throws `qel::exception` if the name of the user is unknown.
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
