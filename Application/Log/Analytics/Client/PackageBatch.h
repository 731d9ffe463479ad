#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qel::log::analytics::details {

/// The rows of one table that go into one package. Stores their IDs and pointers to their JSON
/// texts.
class PackageBatch {
 public:
  explicit PackageBatch(std::size_t sizeLimit) : sizeLimit_(sizeLimit) {}

  /// Adds a row. `json` must outlive the batch.
  void add(int id, const std::string& json) {
    texts_.push_back(&json);
    ids_.push_back(id);
    size_ += json.size();
  }
  /// Whether the total size of the texts has reached the limit, so that the batch must be sent. The
  /// row that reached the limit is part of the batch.
  bool isFull() const { return size_ >= sizeLimit_; }
  /// The total size of the texts in bytes.
  std::size_t size() const { return size_; }
  void clear() {
    texts_.clear();
    ids_.clear();
    size_ = 0;
  }

  const std::vector<const std::string*>& texts() const { return texts_; }
  std::vector<int>& ids() { return ids_; }

 private:
  const std::size_t sizeLimit_;
  std::size_t size_ = 0;
  std::vector<const std::string*> texts_;
  std::vector<int> ids_;
};

}  // namespace qel::log::analytics::details
