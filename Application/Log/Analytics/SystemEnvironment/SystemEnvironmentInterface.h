#pragma once

#include <string>
#include <vector>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::systemenvironment {

/// Facts about the machine and its user, as they were gathered.
class QEL_ANALYTICS_EXPORT SystemEnvironmentInterface {
 public:
  struct OS {
    std::string name;
    std::string bitness;
    std::string language;
    std::string buildNumber;
    int screenDpi = 0;
  };

  struct GraphicCard {
    std::string name;
    std::string vendor;
    std::string driver;
    std::string driverVersion;
    std::string driverDate;
    std::string memory;
  };

  struct Hardware {
    std::string cpu;
    std::string memory;
    std::vector<GraphicCard> graphicCards;
  };

  struct Application {
    std::string name;
    std::string version;
    std::string language;
    std::string bitness;
  };

  struct ConfigurationFile {
    std::string path;
  };

  virtual ~SystemEnvironmentInterface() = default;

  virtual const std::vector<std::string>& getIpAddresses() const = 0;
  virtual const std::string& getScreenResolution() const = 0;
  virtual const std::string& getCurrentUser() const = 0;
  virtual const OS& getOS() const = 0;
  virtual const Hardware& getHardware() const = 0;
  virtual const std::vector<Application>& getInstalledApplications() const = 0;
  virtual const std::vector<ConfigurationFile>& getApplicationConfigurationFiles() const = 0;
};

}  // namespace qel::log::analytics::systemenvironment
