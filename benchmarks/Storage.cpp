#include "benchmarks/Storage.h"

#include <algorithm>

#include "benchmarks/Activation.h"
#include "benchmarks/RawDatabase.h"
#include "benchmarks/Workload.h"

namespace qel::benchmarks {
namespace {

class Rendered : public json::ToJsonInterface {
 public:
  explicit Rendered(const std::string& text) : text_(text) {}
  std::string toJson() const override { return text_; }

 private:
  const std::string& text_;
};

}  // namespace

Storage::Storage() { databases_.initialize(activation(directory_.text(), true)); }

void Storage::store(const std::vector<std::string>& texts) {
  for (const auto& text : texts) {
    databases_.insert(std::make_unique<Rendered>(text),
                      log::analytics::CipDatabaseClientInterface::Items);
  }
  databases_.join();
}

std::size_t Storage::rowsStored() const {
  return std::min(RawDatabase(directory_.path(), RawDatabase::sending).rows("Items").size(),
                  RawDatabase(directory_.path(), RawDatabase::support).rows("Items").size());
}

std::vector<std::string> renderedBatch() {
  identifyProcess();
  std::vector<std::string> texts;
  texts.reserve(rowsOfBatch);
  for (int number = 0; number < rowsOfBatch; ++number) {
    texts.push_back(makeItem(number)->toJson());
  }
  return texts;
}

}  // namespace qel::benchmarks
