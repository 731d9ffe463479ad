#pragma once

#include <string>
#include <utility>
#include <vector>

namespace qel::db::sql {

/// Whether a statement succeeded, and the reason of a failure. A new object means success.
class ResultBase {
 public:
  /// Whether the statement ran to its end.
  /// @{
  bool boSuccess() const { return success_; }
  void vSuccessSet(bool success) { success_ = success; }
  /// @}
  /// The reason of a failure. May quote the statement.
  /// @{
  const std::string& sErrorMessageGet() const { return errorMessage_; }
  void vErrorMessageSet(const std::string& message) { errorMessage_ = message; }
  /// @}

 private:
  bool success_ = true;
  std::string errorMessage_;
};

/// The rows of a statement, with one text per column, in column order. NULL becomes the empty text.
class Result : public ResultBase {
 public:
  /// In the statement's order.
  using Rows = std::vector<std::vector<std::string>>;

  /// The rows, none after a failure. The reference is valid as long as this object exists.
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
