#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/collector/PackageReader.h"

namespace qel::collector {

/// Who sent a text, and when.
struct Origin {
  std::string_view user;
  std::chrono::system_clock::time_point received;
};

/// The rows of one insert into each table, in ClickHouse's format RowBinary. The columns are those
/// of `ClickHouseSchema.h`, in its order.
class ClickHouseRows {
 public:
  void addEvent(const Row& row, const Origin& origin);
  void addEnvironment(const Row& row, const Origin& origin);
  void addRefused(const RefusedText& text, const Origin& origin);
  void clear();

  const std::string& events() const { return events_; }
  const std::string& environments() const { return environments_; }
  const std::string& refused() const { return refused_; }

 private:
  void addDetails(std::string_view text);

  std::uint32_t place_ = 0;  ///< of the next row, also after `clear`
  std::string events_;
  std::string environments_;
  std::string refused_;
  // Of one row; members, so that their memory is used again.
  std::string keys_;
  std::string values_;
  std::string storage_;
};

}  // namespace qel::collector
