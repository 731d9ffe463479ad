#pragma once

#include <string>
#include <utility>
#include <vector>

namespace qel::db::sql {

/// Whether a statement succeeded, and the reason if it failed. A newly constructed object
/// represents success.
class ResultBase {
 public:
  /// Whether the statement succeeded.
  /// @{
  bool boSuccess() const { return success_; }
  void vSuccessSet(bool success) { success_ = success; }
  /// @}
  /// The reason for a failure. It may quote the statement.
  /// @{
  const std::string& sErrorMessageGet() const { return errorMessage_; }
  void vErrorMessageSet(const std::string& message) { errorMessage_ = message; }
  /// @}

 private:
  bool success_ = true;
  std::string errorMessage_;
};

/// The rows of a statement, with one string per column, in column order. NULL becomes an empty
/// string.
class Result : public ResultBase {
 public:
  /// The rows in the order in which the statement returned them.
  using Rows = std::vector<std::vector<std::string>>;

  /// The rows; empty after a failure. The reference is valid as long as this object exists.
  /// @{
  const Rows& result() const& { return rows_; }
  /// The rows, moved out of the result.
  Rows result() && { return std::move(rows_); }
  void resultSet(Rows rows) { rows_ = std::move(rows); }
  /// @}

 private:
  Rows rows_;
};

}  // namespace qel::db::sql
