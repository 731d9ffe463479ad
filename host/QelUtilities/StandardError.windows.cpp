#include "host/QelUtilities/StandardError.h"

#include <windows.h>

namespace qel::utilities {

bool standardErrorTakesLine() {
  return GetFileType(GetStdHandle(STD_ERROR_HANDLE)) != FILE_TYPE_UNKNOWN;
}

}  // namespace qel::utilities
