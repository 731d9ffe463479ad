#include "host/QelC/Recordings.h"

#include "Application/Log/Analytics/Database/RecordedFiles.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::c {

void removeAllRecordings(const std::string& directory) {
  for (const auto& removed : log::analytics::removeRecordings(utilities::pathFromUtf8(directory))) {
    if (removed.error) {
      throw qel::exception("cannot remove " + utilities::utf8FromPath(removed.file) + ": " +
                           utilities::systemMessage(removed.error));
    }
  }
}

}  // namespace qel::c
