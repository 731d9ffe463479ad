#pragma once

#include <string>
#include <vector>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::systemenvironment {

/// Facts about the machine and its user. Facts that were not gathered are empty.
class QEL_ANALYTICS_EXPORT SystemEnvironmentInterface {
 public:
  /// The operating system.
  struct OS {
    /// Values as the system reports them.
    /// @{
    std::string name;
    std::string bitness;
    std::string language;
    std::string buildNumber;
    /// @}
    int screenDpi = 0;  ///< dots per inch, 0 if not gathered
  };

  /// One graphics card.
  struct GraphicCard {
    /// Values as the system reports them. The value of `memory` includes a unit.
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
    /// Values as the system reports them. The value of `memory` includes a unit.
    /// @{
    std::string cpu;
    std::string memory;
    /// @}
    std::vector<GraphicCard> graphicCards;  ///< one entry for each card
  };

  /// One installed application.
  struct Application {
    /// Values as the application reports them.
    /// @{
    std::string name;
    std::string version;
    std::string language;
    std::string bitness;
    /// @}
  };

  /// A configuration file of the host application.
  struct ConfigurationFile {
    std::string path;  ///< UTF-8
  };

  virtual ~SystemEnvironmentInterface() = default;

  /// The facts are gathered once. The references are valid as long as the object lives.
  /// @{
  virtual const std::vector<std::string>& getIpAddresses() const = 0;
  virtual const std::string& getScreenResolution() const = 0;
  /// The login name (UTF-8).
  virtual const std::string& getCurrentUser() const = 0;
  virtual const OS& getOS() const = 0;
  virtual const Hardware& getHardware() const = 0;
  virtual const std::vector<Application>& getInstalledApplications() const = 0;
  virtual const std::vector<ConfigurationFile>& getApplicationConfigurationFiles() const = 0;
  /// @}
};

}  // namespace qel::log::analytics::systemenvironment
