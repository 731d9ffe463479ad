#pragma once

#include <string>
#include <utility>
#include <vector>

namespace qel::db::sql {

/// Whether a statement succeeded, and if not, why. A new one tells success.
class ResultBase {
 public:
  /// Whether the statement was run to its end.
  /// @{
  bool boSuccess() const { return success_; }
  void vSuccessSet(bool success) { success_ = success; }
  /// @}
  /// Why it was not; may quote the statement.
  /// @{
  const std::string& sErrorMessageGet() const { return errorMessage_; }
  void vErrorMessageSet(const std::string& message) { errorMessage_ = message; }
  /// @}

 private:
  bool success_ = true;
  std::string errorMessage_;
};

/// What a statement yielded: its rows, one text per column, in column order. A NULL reads as the
/// empty text.
class Result : public ResultBase {
 public:
  /// In the order in which the statement yielded them.
  using Rows = std::vector<std::vector<std::string>>;

  /// The rows, none after a failure. The reference is valid as long as this object.
  /// @{
  const Rows& result() const& { return rows_; }
  /// The rows, moved out of a result that is no longer needed.
  Rows result() && { return std::move(rows_); }
  void resultSet(Rows rows) { rows_ = std::move(rows); }
  /// @}

 private:
  Rows rows_;
};

}  // namespace qel::db::sql
