#include "benchmarks/Activation.h"

namespace qel::benchmarks {
namespace {

class NoWebUpdates : public log::analytics::reports::WebUpdateReporterInterface {
 public:
  bool isInformationAvailable() const override { return false; }
  void reset() override {}
  std::uint64_t getSuccessCount() const override { return 0; }
  std::uint64_t getCorruptPackageCount() const override { return 0; }
};

}  // namespace

log::analytics::parameters::ActivateParameter activation(const std::string& directory,
                                                         bool isSendingAllowed) {
  static NoWebUpdates webUpdates;
  return {.webUpdateReporter = webUpdates,
          .databasePath = directory,
          .installationId = "QEL-20417",
          .sessionId = qel::Guid::create(),
          .serverSecret = {},
          .serverUser = {},
          .createEnvironmentItem = {},
          .isSendingAllowed = [isSendingAllowed] { return isSendingAllowed; },
          .databaseCallback = [] { return true; }};
}

}  // namespace qel::benchmarks
