#include "tools/support/SessionExport.h"

#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseExporter.h"
#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/OwnerOnly.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"
#include "tools/common/DelayedInterruption.h"
#include "tools/common/InputError.h"
#include "tools/records/ClientDatabase.h"
#include "tools/records/PrivateCopy.h"
#include "tools/support/SessionSource.h"

namespace qel::support {
namespace {

namespace analytics = log::analytics;
using records::Session;
using records::supportDatabaseName;

/// A database that stores each list of rows in one transaction and counts the rows.
class ExportTarget : public analytics::SupportDatabaseClient {
 public:
  ExportTarget() : SupportDatabaseClient({}) {}

  /// The number of rows passed in so far.
  std::int64_t rows() const { return rows_; }

  using SupportDatabaseClient::insertMultiple;
  void insertMultiple(const std::vector<std::string>& jsons, Table table) override {
    std::vector<std::pair<std::string, Table>> rows;
    rows.reserve(jsons.size());
    for (const auto& json : jsons) {
      rows.emplace_back(json, table);
    }
    SupportDatabaseClient::insertMultiple(rows);
    rows_ += static_cast<std::int64_t>(rows.size());
  }

 private:
  std::int64_t rows_ = 0;
};

/// Creates a directory for its owner alone if it does not exist. The destructor removes the
/// directory if this object created it and it is still empty.
class TargetDirectory {
 public:
  explicit TargetDirectory(const std::filesystem::path& path) : path_(path) {
    std::error_code error;
    // Windows denies the creation of a drive's root instead of reporting that it exists.
    if (std::filesystem::is_directory(path, error)) {
      return;
    }
    made_ = utilities::createDirectoryForOwnerAlone(path, error);
    if (!made_) {
      throw qel::exception("cannot make the directory " + utilities::utf8FromPath(path) +
                           (error ? ": " + utilities::systemMessage(error) : ""));
    }
  }
  ~TargetDirectory() {
    std::error_code notEmpty;
    if (made_) {
      std::filesystem::remove(path_, notEmpty);
    }
  }
  TargetDirectory(const TargetDirectory&) = delete;
  TargetDirectory& operator=(const TargetDirectory&) = delete;

 private:
  const std::filesystem::path path_;
  bool made_ = false;
};

void refuseToOverwrite(const std::filesystem::path& directory) {
  for (const char* const name : {supportDatabaseName, records::sendingDatabaseName}) {
    for (const char* const suffix : {"", db::sql::journalSuffix, db::sql::walSuffix}) {
      std::error_code unknown;
      const auto file = directory / (std::string(name) + suffix);
      if (std::filesystem::exists(file, unknown)) {
        throw tools::InputError("--to: there is already " + utilities::utf8FromPath(file));
      }
    }
  }
}

std::int64_t countRows(const std::filesystem::path& file) {
  std::int64_t rows = 0;
  records::ClientDatabase database(std::make_unique<records::ReadOnlyDatabase>(file));
  for (const auto table : {records::Table::Environments, records::Table::Events}) {
    database.forEachRow(table, [&](const records::Row& /*row*/) {
      ++rows;
      return true;
    });
  }
  return rows;
}

/// The exporter does not report SQL failures, so the written rows are counted afterwards.
std::int64_t writeInto(const std::filesystem::path& directory, const Session& session) {
  const auto source = std::make_shared<SessionSource>(session);
  auto target = std::make_shared<ExportTarget>();
  target->initialize(utilities::utf8FromPath(directory));
  if (!analytics::SupportDatabaseExporter(source).exportLastSessionToSqliteFile(session.id,
                                                                                target)) {
    throw qel::exception("no record of the session could be read");
  }
  const auto given = target->rows();
  target.reset();
  const auto written = countRows(directory / supportDatabaseName);
  if (written < given) {
    throw qel::exception("only " + std::to_string(written) + " of " + std::to_string(given) +
                         " rows could be written: the disk may be full");
  }
  return written;
}

}  // namespace

std::int64_t exportSession(const Session& session, const std::filesystem::path& directory) {
  refuseToOverwrite(directory);
  const tools::DelayedInterruption untilComplete;
  const TargetDirectory target(directory);
  const records::PrivateDirectory unfinished(directory);
  const auto rows = writeInto(unfinished.path(), session);
  refuseToOverwrite(directory);
  const auto file = directory / supportDatabaseName;
  std::error_code error;
  std::filesystem::rename(unfinished.path() / supportDatabaseName, file, error);
  if (error) {
    throw qel::exception("cannot write " + utilities::utf8FromPath(file) + ": " +
                         utilities::systemMessage(error));
  }
  return rows;
}

}  // namespace qel::support
