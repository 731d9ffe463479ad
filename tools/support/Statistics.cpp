#include "tools/support/Statistics.h"

#include <functional>
#include <set>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Database/RecordedFiles.h"
#include "Application/Log/Analytics/Items/PackageFormat.h"
#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/PathText.h"
#include "tools/records/Moment.h"

namespace qel::support {
namespace {

using log::analytics::format::packageSizeLimit;
using records::RecordFile;
using records::Row;
using records::Table;

std::string messageOf(std::string_view text) {
  const auto record = nlohmann::json::parse(text);
  static const nlohmann::json::json_pointer place("/Details/Message");
  return record.contains(place) && record[place].is_string() ? record[place] : "";
}

std::vector<std::filesystem::path> filesSetAside(const std::filesystem::path& directory) {
  std::error_code error;
  if (!std::filesystem::is_directory(directory, error)) {
    return {};
  }
  auto files = log::analytics::recordedFiles(directory);
  std::erase_if(files, [](const std::filesystem::path& file) {
    return utilities::utf8FromPath(file.filename()).find(db::sql::setAsideMark) ==
           std::string::npos;
  });
  return files;
}

/// Counts the rows of databases and collects their markers.
class Counter {
 public:
  explicit Counter(std::map<std::string, Marker>& markers) : markers_(markers) {}

  FileStatistics read(RecordFile& source, WaitingRows* waiting) {
    FileStatistics file;
    std::error_code ignored;
    file.name = utilities::utf8FromPath(source.path().filename());
    file.bytes = std::filesystem::file_size(source.path(), ignored);
    file.refused = source.refused();
    for (const auto table : {Table::Environments, Table::Events}) {
      auto& rows = table == Table::Events ? file.events : file.environments;
      std::size_t package = packageSizeLimit;  // bytes in the current package
      source.forEachRow(table, [&](const Row& row) {
        rows += row.count;
        if (waiting != nullptr) {
          countPending(*waiting, package, row.text.size());
        }
        return row.isRecord && readInto(file, table, row);
      });
    }
    return file;
  }

 private:
  /// Counts a pending row. If its package is full, the row begins a new one.
  static void countPending(WaitingRows& waiting, std::size_t& package, std::size_t size) {
    ++waiting.rows;
    waiting.bytes += static_cast<std::int64_t>(size);
    if (package >= packageSizeLimit) {
      ++waiting.packages;
      package = 0;
    }
    package += size;
  }

  bool readInto(FileStatistics& file, Table table, const Row& row) {
    records::widen(file.oldest, file.newest, row.time);
    if (table == Table::Events) {
      file.eventsByCategory[std::string(row.category)] += row.count;
    }
    if (row.category == "CIP" && seen_.emplace(row.text).second) {
      Marker& marker = markers_[std::string(row.subcategory).append(" / ").append(row.event)];
      marker.count += row.count;
      records::widen(marker.first, marker.last, row.time);
      marker.message = messageOf(row.text);
    }
    return true;
  }

  std::map<std::string, Marker>& markers_;
  /// The markers that have been counted. Both databases may contain the same marker.
  std::set<std::string, std::less<>> seen_;
};

}  // namespace

std::string_view meaningOf(const std::string& marker) {
  if (marker == "Database / CriticalLarge") {
    return "The sending database had reached 30,720,000 bytes. Events from then on were not kept "
           "for sending, until some had been sent; the support database has them if copies were "
           "permitted.";
  }
  if (marker == "InsertingItems / CriticalLarge") {
    return "10,000 events waited to be written: too many came at once, or the disk did not follow. "
           "Nothing was recorded from then on until the program was started again.";
  }
  if (marker == "SendingItems / Exception") {
    return "Sending failed. Nothing is lost: the rows wait for the next attempt.";
  }
  return "Trouble of the client itself that this program does not know.";
}

Statistics gatherStatistics(records::Recordings& recordings) {
  Statistics statistics;
  Counter counter(statistics.markers);
  for (const auto& file : recordings.files) {
    const bool waits = file.get() == recordings.sending && file->whyUnreadable().empty();
    statistics.files.push_back(
        counter.read(*file, waits ? &statistics.waiting.emplace() : nullptr));
  }
  if (statistics.waiting) {
    statistics.waiting->complete = recordings.sending->isReadWholly();
  }
  statistics.warnings = recordings.remarks();
  statistics.aside = filesSetAside(recordings.place);
  return statistics;
}

}  // namespace qel::support
