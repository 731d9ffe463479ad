#pragma once

#include <string>
#include <vector>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::systemenvironment {

/// Facts about the machine and its user, as they were gathered. What was not gathered is empty.
class QEL_ANALYTICS_EXPORT SystemEnvironmentInterface {
 public:
  /// The operating system.
  struct OS {
    /// In the system's own words.
    /// @{
    std::string name;
    std::string bitness;
    std::string language;
    std::string buildNumber;
    /// @}
    int screenDpi = 0;  ///< dots per inch, 0 if not gathered
  };

  /// One graphic card.
  struct GraphicCard {
    /// In the system's own words, the memory with its unit.
    /// @{
    std::string name;
    std::string vendor;
    std::string driver;
    std::string driverVersion;
    std::string driverDate;
    std::string memory;
    /// @}
  };

  /// The machine itself.
  struct Hardware {
    /// In the system's own words, the memory with its unit.
    /// @{
    std::string cpu;
    std::string memory;
    /// @}
    std::vector<GraphicCard> graphicCards;  ///< one for each card
  };

  /// One installed application.
  struct Application {
    /// In the application's own words.
    /// @{
    std::string name;
    std::string version;
    std::string language;
    std::string bitness;
    /// @}
  };

  /// A file that the host application is configured with.
  struct ConfigurationFile {
    std::string path;  ///< UTF-8
  };

  virtual ~SystemEnvironmentInterface() = default;

  /// What was gathered once: nothing is gathered anew. References live as long as the object.
  /// @{
  virtual const std::vector<std::string>& getIpAddresses() const = 0;
  virtual const std::string& getScreenResolution() const = 0;
  /// Login name (UTF-8).
  virtual const std::string& getCurrentUser() const = 0;
  virtual const OS& getOS() const = 0;
  virtual const Hardware& getHardware() const = 0;
  virtual const std::vector<Application>& getInstalledApplications() const = 0;
  virtual const std::vector<ConfigurationFile>& getApplicationConfigurationFiles() const = 0;
  /// @}
};

}  // namespace qel::log::analytics::systemenvironment
