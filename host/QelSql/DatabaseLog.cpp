#include "host/QelSql/DatabaseLog.h"

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/PathText.h"

namespace qel::db::sql {

DatabaseLog::DatabaseLog(const std::filesystem::path& file)
    : name_("database \"" + utilities::utf8FromPath(file) + '"'),
      outOfMemoryText_(name_ + ": out of memory, and what was to be stored may be lost"),
      logger_(log::LogManager::instance().getLogger("qel.db.sql.SqlDatabaseAdapter")) {}

void DatabaseLog::warn(std::string_view text) const noexcept {
  try {
    logger_->log(log::Level::Warning, std::string(name_).append(text));
  } catch (const std::bad_alloc&) {
    return;
  }
}

void DatabaseLog::outOfMemory() const noexcept {
  logger_->log(log::Level::Error, outOfMemoryText_);
}

}  // namespace qel::db::sql
