#include "tools/sample-host/SessionSummary.h"

#include <iomanip>
#include <ostream>

#include "Application/Log/Analytics/Database/DatabaseFormat.h"

namespace qel::samplehost {
namespace {

namespace format = qel::log::analytics::format;

void printLine(std::ostream& output, const std::string& label, std::int64_t number,
               const std::string& meaning) {
  output << std::left << std::setw(16) << label << std::right << std::setw(8) << number << "  "
         << meaning << '\n';
}

void addMissing(std::vector<std::string>& failures, const std::string& file, std::int64_t stored,
                std::int64_t handed) {
  if (stored < handed) {
    failures.push_back(file + " stored " + std::to_string(stored) + " of " +
                       std::to_string(handed) + " rows.");
  }
}

}  // namespace

std::vector<std::string> storageFailures(const SessionSummary& summary) {
  std::vector<std::string> failures;
  if (summary.storageEnded) {
    failures.emplace_back(
        "Storage has ended before the session did: more than 10000 items were waiting to be "
        "written, or writing failed. What was waiting then, and every item since, is lost.");
  }
  if (summary.after.fullMarkers > summary.before.fullMarkers) {
    failures.push_back(std::string(format::sendingDatabase) +
                       " has reached its largest size: rows were dropped.");
  }
  addMissing(failures, format::sendingDatabase, summary.storedForSending(),
             summary.handedForSending);
  addMissing(failures, format::supportDatabase, summary.storedForSupport(),
             summary.handedForSupport);
  return failures;
}

void print(const SessionSummary& summary, std::ostream& output) {
  output << "session           " << summary.sessionId << '\n';
  printLine(output, "broadcast", summary.broadcast,
            summary.interrupted ? "notifications, until the session was interrupted"
                                : "notifications of the script");
  printLine(output, "stored", summary.storedForSending(),
            "rows for sending: items, environments and the client's own reports");
  printLine(output, "sent", summary.sent, "rows that the server accepted");
  printLine(output, "left", summary.after.forSending, "rows that still wait to be sent");
  if (summary.before.forSending > 0) {
    printLine(output, "left before", summary.before.forSending,
              "rows of earlier sessions, which waited to be sent already");
  }
  printLine(output, "for support", summary.storedForSupport(), "rows stored for support");
}

}  // namespace qel::samplehost
