#pragma once

#include <string>
#include <utility>
#include <vector>

namespace qel::db::sql {

/// Whether a statement succeeded, and if not, why. A new one tells success.
class ResultBase {
 public:
  bool boSuccess() const { return success_; }
  void vSuccessSet(bool success) { success_ = success; }
  const std::string& sErrorMessageGet() const { return errorMessage_; }
  void vErrorMessageSet(const std::string& message) { errorMessage_ = message; }

 private:
  bool success_ = true;
  std::string errorMessage_;
};

/// What a statement yielded: its rows, one text per column, in column order. A NULL reads as the
/// empty text.
class Result : public ResultBase {
 public:
  using Rows = std::vector<std::vector<std::string>>;

  const Rows& result() const& { return rows_; }
  /// The rows, moved out of a result that is no longer needed.
  Rows result() && { return std::move(rows_); }
  void resultSet(Rows rows) { rows_ = std::move(rows); }

 private:
  Rows rows_;
};

}  // namespace qel::db::sql
