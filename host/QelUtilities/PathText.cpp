#include "host/QelUtilities/PathText.h"

namespace qel::utilities {

std::filesystem::path pathFromUtf8(const std::string& text) {
  return plainPath(std::u8string(text.begin(), text.end()));
}

}  // namespace qel::utilities
