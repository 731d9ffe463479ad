#include "tools/records/Statement.h"

#include <cstddef>

#include <sqlite3.h>

namespace qel::records {

Statement::Statement(sqlite3* database, const std::string& text)
    : code_(sqlite3_prepare_v2(database, text.c_str(), -1, &statement_, nullptr)) {}

Statement::~Statement() { sqlite3_finalize(statement_); }

int Statement::step() { return code_ == SQLITE_OK ? sqlite3_step(statement_) : code_; }

void Statement::restart(std::int64_t parameter) {
  sqlite3_reset(statement_);
  sqlite3_bind_int64(statement_, 1, parameter);
}

void Statement::restart(std::string_view blob) {
  sqlite3_reset(statement_);
  sqlite3_bind_blob(statement_, 1, blob.data(), static_cast<int>(blob.size()), SQLITE_STATIC);
}

bool Statement::isNull(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::int64_t Statement::number(int column) const {
  return sqlite3_column_int64(statement_, column);
}

std::string_view Statement::text(int column) const {
  const auto* const text = sqlite3_column_text(statement_, column);
  return text == nullptr
             ? std::string_view()
             : std::string_view(reinterpret_cast<const char*>(text),
                                static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

std::string_view Statement::blob(int column) const {
  const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  return bytes == nullptr
             ? std::string_view()
             : std::string_view(bytes,
                                static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

}  // namespace qel::records
