#include "Application/Log/Analytics/SystemEnvironment/SystemEnvironment.h"

#include "host/QelPlatformWindows/SystemInformation.h"

namespace qel::log::analytics::systemenvironment {

SystemEnvironment::SystemEnvironment()
    : currentUser_(platform::windows::SystemInformation::getUserName()) {}

}  // namespace qel::log::analytics::systemenvironment
