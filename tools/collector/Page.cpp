#include "tools/collector/Page.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "tools/collector/ApiRequest.h"
#include "tools/collector/ApiText.h"
#include "tools/collector/PageFiles.h"
#include "tools/collector/SessionPage.h"
#include "tools/collector/SessionSearch.h"

namespace qel::collector {
namespace {

using Deadline = std::chrono::steady_clock::time_point;

struct FoundSession {
  records::SessionRecords records;
  bool isShortened = false;
};

AdminPage tablePage(const ApiRequest& request, const ResultTable& table) {
  return request.isCsv ? csvPage(request.figure, table) : jsonPage(request.figure, table);
}

/// Nobody waits for an answer after the deadline.
void requireTime(Deadline deadline) {
  if (std::chrono::steady_clock::now() >= deadline) {
    throw StoreError("the deadline has passed");
  }
}

/// Finds the session by its ID or the beginning of it. Throws `ApiError` if that fails.
FoundSession findSession(StoreReader& reader, std::string id, Deadline deadline) {
  StoredSession stored = reader.session(id, deadline);
  if (stored.records.empty() && !stored.isShortened) {
    id = idBeginningWith(id, reader, deadline);
    stored = reader.session(id, deadline);
  }
  requireTime(deadline);
  FoundSession found{recordsOf(id, stored.records), stored.isShortened};
  requireTime(deadline);
  return found;
}

AdminPage answerFrom(StoreReader& reader, const ApiRequest& request, Deadline deadline) {
  try {
    const ResultTable table = request.id.empty()
                                  ? reader.read(request.figure, request.filter, deadline)
                                  : sessionTable(findSession(reader, request.id, deadline).records);
    requireTime(deadline);
    return tablePage(request, table);
  } catch (const std::invalid_argument& error) {
    return errorPage(400, error.what());
  } catch (const ApiError& error) {
    return errorPage(error.status, error.what());
  }
}

AdminPage reportFrom(StoreReader& reader, const std::string& id, Deadline deadline) {
  try {
    const FoundSession found = findSession(reader, id, deadline);
    return sessionPage(found.records, found.isShortened);
  } catch (const ApiError& error) {
    return messagePage(error.status, error.what(), error.status == 409 ? id : "");
  }
}

}  // namespace

Page::Page(OpenReader open, std::function<ResultTable()> system, std::chrono::milliseconds limit)
    : system_(std::move(system)), queries_(std::move(open), limit) {}

void Page::get(std::string_view target, Done done) {
  constexpr std::string_view api = "/api/";
  constexpr std::string_view session = "/session/";
  const auto mark = std::min(target.find('?'), target.size());
  const auto path = target.substr(0, mark);
  const auto query = target.substr(std::min(mark + 1, target.size()));
  if (path.starts_with(api)) {
    answerApi(path.substr(api.size()), query, std::move(done));
  } else if (path.starts_with(session)) {
    answerSession(path.substr(session.size()), std::move(done));
  } else {
    auto file = pageFile(path);
    done(file ? *std::move(file) : messagePage(404, "There is no such page."));
  }
}

void Page::answerApi(std::string_view figure, std::string_view query, Done done) {
  try {
    const ApiRequest request = parseApiRequest(figure, query);
    if (request.figure == "system") {
      done(tablePage(request, system_()));
      return;
    }
    queries_.add({[request](StoreReader& reader, Deadline deadline) {
                    return answerFrom(reader, request, deadline);
                  },
                  [](int status, const std::string& reason) { return errorPage(status, reason); },
                  std::move(done)});
  } catch (const ApiError& error) {
    done(errorPage(error.status, error.what()));
  } catch (const std::exception& error) {
    done(errorPage(500, error.what()));
  }
}

void Page::answerSession(std::string_view part, Done done) {
  try {
    queries_.add({[id = decodedPart(part)](StoreReader& reader, Deadline deadline) {
                    return reportFrom(reader, id, deadline);
                  },
                  [](int status, const std::string& reason) {
                    return messagePage(
                        status, (status == 503 ? "The store cannot be read: " : "An error: ") +
                                    reason + '.');
                  },
                  std::move(done)});
  } catch (const ApiError& error) {
    done(messagePage(error.status, std::string("No session: ") + error.what() + '.'));
  }
}

}  // namespace qel::collector
