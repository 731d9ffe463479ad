#include "host/QelC/Recordings.h"

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::c {

void removeAllRecordings(const std::string& directory) {
  expectRemoved(log::analytics::removeRecordings(utilities::pathFromUtf8(directory)));
}

void expectRemoved(const std::vector<log::analytics::RemovedFile>& files) {
  for (const auto& removed : files) {
    if (removed.error) {
      throw qel::exception("cannot remove " + utilities::utf8FromPath(removed.file) + ": " +
                           utilities::systemMessage(removed.error));
    }
  }
}

}  // namespace qel::c
