#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "tools/collector/AdminPage.h"
#include "tools/collector/QueryThread.h"
#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// What readers see: the files of the page, the reports of sessions, and the interface under
/// "/api/". docs/collector-api.md describes the interface.
///
/// **Threads.** Questions about the store are answered on a thread of this object. The operations
/// are thread-safe.
class Page {
 public:
  /// Receives an answer, on the calling thread or on the page's.
  using Done = std::function<void(AdminPage page)>;

  /// `system` makes the figure "system", on the thread that calls `get`. A question that the store
  /// has not answered after `limit` fails.
  Page(OpenReader open, std::function<ResultTable()> system,
       std::chrono::milliseconds limit = std::chrono::seconds(10));

  /// Answers a GET of this path and query.
  void get(std::string_view target, Done done);

  /// Interrupts the question in progress, and forgets the others: their `done` is not called.
  void stop() { queries_.stop(); }

 private:
  void answerApi(std::string_view figure, std::string_view query, Done done);
  void answerSession(std::string_view part, Done done);

  const std::function<ResultTable()> system_;
  QueryThread queries_;
};

}  // namespace qel::collector
