#include "host/QelUtilities/ProcessEnd.h"

#include <cstdlib>

namespace qel::utilities {

void keepLoaded(void (*)()) {}

void beforeExit(void (*action)()) { std::atexit(action); }

}  // namespace qel::utilities
