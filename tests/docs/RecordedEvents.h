#pragma once

#include <string>
#include <vector>

namespace qel::test {

/// What stands for texts and detail keys that are the host's own.
inline const std::string hostsText = "host's text";
inline const std::string hostsKeys = "host's keys";

/// The JSON texts of what is recorded when everything happens that the listeners and the memory
/// observer know of, once with all that can be missing and once without.
std::vector<std::string> producedEvents();

/// The JSON texts of every item class's every kind, those without a name included, whether anything
/// makes such an item or not. A `SaveItem` holds whatever it is given, so it is not among them.
std::vector<std::string> eventsOfAllClasses();

}  // namespace qel::test
