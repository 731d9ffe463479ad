#include "Application/Log/Analytics/Database/DatabaseAdapter.h"

#include <algorithm>
#include <exception>
#include <new>
#include <stdexcept>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "Application/Log/Analytics/Database/DatabaseFormat.h"
#include "Core/Utilities/Assertions/FailedCheck.h"
#include "host/QelAssert/Assert.h"
#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Patience.h"
#include "host/QelUtilities/TypeName.h"

namespace qel::log::analytics::details {
namespace {

using qel::db::sql::Result;

std::string insertStatement(const std::string& json, const std::string& table) {
  constexpr std::string_view beforeTable = "INSERT into ";
  constexpr std::string_view beforeText = "(json) VALUES ('";
  constexpr std::string_view afterText = "')";
  const auto quotes = static_cast<std::size_t>(std::count(json.begin(), json.end(), '\''));
  std::string statement;
  statement.reserve(beforeTable.size() + table.size() + beforeText.size() + json.size() + quotes +
                    afterText.size());
  statement.append(beforeTable).append(table).append(beforeText);
  for (std::size_t begin = 0;;) {
    const auto quote = json.find('\'', begin);
    if (quote == std::string::npos) {
      return statement.append(json, begin).append(afterText);
    }
    statement.append(json, begin, quote - begin).append("''");
    begin = quote + 1;
  }
}

/// Converts like `std::stoi`, but the exception messages do not depend on the standard library.
int idFrom(const std::string& text) {
  try {
    return std::stoi(text);
  } catch (const std::invalid_argument&) {
    throw std::invalid_argument("invalid stoi argument");
  } catch (const std::out_of_range&) {
    throw std::out_of_range("stoi argument out of range");
  }
}

std::map<int, std::string> rowMapFrom(Result result) {
  std::map<int, std::string> rows;
  if (!result.boSuccess()) {
    return rows;
  }
  for (auto& row : std::move(result).result()) {
    // Rows usually arrive in ascending order of their IDs, so the end is the likely position.
    rows.emplace_hint(rows.end(), idFrom(row[0]), std::move(row[1]));
  }
  return rows;
}

std::string joined(const std::vector<int>& ids) {
  std::string list;
  for (const int id : ids) {
    if (!list.empty()) {
      list += ',';
    }
    list += std::to_string(id);
  }
  return list;
}

constexpr util::CheckedClass thisClass{"qel::log::analytics::details::DatabaseAdapter",
                                       "Application/Log/Analytics/Database/DatabaseAdapter"};
constexpr int insertCheck = 85;

void reportInsertFailure(const std::string& adapterType, const char* what) {
  if (!assert::Assert::isEnabled()) {
    return;
  }
  std::string message =
      "An error happened in insert database. Please tell Tools Team:\nException in thread(" +
      adapterType + ")";
  if (what != nullptr) {
    message.append(": ").append(what);
  }
  report(thisClass, {"insert", insertCheck, message});
}

}  // namespace

DatabaseAdapter::DatabaseAdapter(std::shared_ptr<qel::db::sql::SqlDatabaseInterface> db)
    : db_(std::move(db)) {
  execute("PRAGMA auto_vacuum = INCREMENTAL;");
}

void DatabaseAdapter::addTableIfNotExists(const std::string& table) {
  execute("CREATE TABLE IF NOT EXISTS " + table +
          " (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT)");
}

void DatabaseAdapter::insert(const std::string& json, const std::string& table) {
  try {
    insertOrFail(json, table);
  } catch (const std::exception& failure) {
    reportInsertFailure(utilities::typeName(typeid(*this)), failure.what());
  } catch (...) {
    reportInsertFailure(utilities::typeName(typeid(*this)), nullptr);
  }
}

void DatabaseAdapter::insertOrFail(const std::string& json, const std::string& table) {
  std::string statement;
  try {
    statement = insertStatement(json, table);
  } catch (const std::bad_alloc&) {
    execute({});  // Fails, so that a transaction is not committed without this row.
    throw;
  }
  execute(statement);
}

std::map<int, std::string> DatabaseAdapter::getAll(const std::string& table) {
  return rowMapFrom(db_->selectAll(table));
}

std::map<int, std::string> DatabaseAdapter::getAllFromSession(const std::string& table,
                                                              const std::string& sessionId) {
  return rowMapFrom(execute("SELECT * FROM " + table + " WHERE instr(json, '" +
                            format::sessionMark(sessionId) + "') > 0"));
}

void DatabaseAdapter::deleteByIds(const std::vector<int>& ids, const std::string& table) {
  const Result result = db_->deleteIds(table, joined(ids));
  if (!result.boSuccess()) {
    if (utilities::Patience::mustStop()) {
      return;
    }
    LogManager::instance()
        .getLogger("qel.log.analytics.details.DatabaseAdapter")
        ->log(Level::Error, "Could not delete all entries by id from " + table +
                                " database. Error: " + result.sErrorMessageGet());
    return;
  }
  resetIds(table);
}

void DatabaseAdapter::vacuum() { execute("PRAGMA incremental_vacuum;"); }

ScopeGuard DatabaseAdapter::createTransaction() { return db_->beginTransaction(); }

Result DatabaseAdapter::execute(const std::string& statement) {
  if (db_) {
    return db_->execute(statement);
  }
  Result result;
  result.vSuccessSet(false);
  result.vErrorMessageSet("Pointer to database is empty.");
  return result;
}

void DatabaseAdapter::resetIds(const std::string& table) {
  execute("DELETE FROM sqlite_sequence WHERE name = '" + table + "'");
}

}  // namespace qel::log::analytics::details
