#include "tools/collector/ClickHouseConnection.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <thread>
#include <utility>

#include <curl/curl.h>

#include "tools/collector/ClickHouseText.h"
#include "tools/collector/Store.h"

namespace qel::collector {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::size_t largestAnswer = std::size_t{64} << 20;
constexpr milliseconds longestConnecting{2000};

/// Older versions confirm only one insert at a time with a quorum.
constexpr std::string_view waitsForQuorum = "Code: 286";
constexpr milliseconds pause{20};

struct CurlEnd {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

std::size_t append(const char* data, std::size_t size, std::size_t count, void* text) {
  auto& answer = *static_cast<std::string*>(text);
  if (answer.size() + size * count > largestAnswer) {
    return 0;
  }
  answer.append(data, size * count);
  return size * count;
}

/// libcurl calls this at least once a second.
int abortIfInterrupted(void* flag, curl_off_t /*toReceive*/, curl_off_t /*received*/,
                       curl_off_t /*toSend*/, curl_off_t /*sent*/) {
  return *static_cast<const std::atomic<bool>*>(flag) ? 1 : 0;
}

/// The settings of a statement: it ends at its deadline, a distributed table confirms no row that
/// only this server has, a repeated insert reaches the views of a replica also if its rows are
/// stored already, and a question may join several distributed tables.
std::string settingsOf(milliseconds left) {
  return "&insert_distributed_sync=1&insert_deduplicate=0&distributed_product_mode=global"
         "&max_execution_time=" +
         std::to_string(std::chrono::ceil<std::chrono::seconds>(left).count());
}

}  // namespace

/// The handle of libcurl, with the options of all exchanges.
class ClickHouseConnection::Transfer {
 public:
  Transfer(const ClickHouseAccess& access, std::atomic<bool>& isInterrupted) {
    static const CURLcode global = curl_global_init(CURL_GLOBAL_DEFAULT);
    handle_.reset(global == CURLE_OK ? curl_easy_init() : nullptr);
    addHeader("X-ClickHouse-User: " + access.user);
    if (!access.password.empty()) {
      addHeader("X-ClickHouse-Key: " + access.password);
    }
    addHeader("Expect:");  // no wait for "100 Continue"
    if (!handle_ || !headers_) {
      throw std::bad_alloc();
    }
    set(CURLOPT_PROTOCOLS_STR, access.isEncrypted ? "https" : "http");
    set(CURLOPT_PROXY, "");
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_QUICK_EXIT, 1L);
    set(CURLOPT_POST, 1L);
    set(CURLOPT_HTTPHEADER, headers_.get());
    set(CURLOPT_ERRORBUFFER, error_.data());
    set(CURLOPT_WRITEFUNCTION, append);
    set(CURLOPT_XFERINFOFUNCTION, abortIfInterrupted);
    set(CURLOPT_XFERINFODATA, &isInterrupted);
    set(CURLOPT_NOPROGRESS, 0L);
    set(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
    set(CURLOPT_UPLOAD_BUFFERSIZE, 1L << 20);
    if (const char* const authorities = std::getenv("SSL_CERT_FILE")) {
      set(CURLOPT_CAINFO, authorities);
    }
  }

  template <typename Value>
  void set(CURLoption option, Value value) const {
    if (curl_easy_setopt(handle_.get(), option, value) != CURLE_OK) {
      throw StoreError("libcurl lacks an option");
    }
  }

  /// Returns the reason of a failure; empty for success.
  std::string perform() {
    error_.front() = '\0';
    const CURLcode result = curl_easy_perform(handle_.get());
    if (result == CURLE_OK) {
      return {};
    }
    if (result == CURLE_WRITE_ERROR) {
      return "the answer is too large";
    }
    return error_.front() != '\0' ? error_.data() : curl_easy_strerror(result);
  }

  long status() const {
    long status = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
    return status;
  }

 private:
  void addHeader(const std::string& line) {
    if (curl_slist* const longer = curl_slist_append(headers_.get(), line.c_str())) {
      static_cast<void>(headers_.release());
      headers_.reset(longer);
    } else {
      throw std::bad_alloc();
    }
  }

  std::array<char, CURL_ERROR_SIZE> error_{};
  std::unique_ptr<curl_slist, CurlEnd> headers_;
  std::unique_ptr<CURL, CurlEnd> handle_;
};

ClickHouseConnection::ClickHouseConnection(ClickHouseAccess access)
    : access_(std::move(access)), transfer_(std::make_unique<Transfer>(access_, isInterrupted_)) {}

ClickHouseConnection::~ClickHouseConnection() = default;

std::string ClickHouseConnection::run(const std::string& statement, Deadline deadline) {
  return result("database=" + access_.database, statement, deadline);
}

std::string ClickHouseConnection::runOutside(const std::string& statement, Deadline deadline) {
  return result("database=system", statement, deadline);
}

std::string ClickHouseConnection::result(const std::string& parameters,
                                         const std::string& statement, Deadline deadline) {
  // ClickHouse begins its answer only after the whole result is known, so the status is right.
  std::string answer =
      exchange(parameters + "&wait_end_of_query=1&output_format_json_quote_64bit_integers=0",
               statement, deadline);
  if (transfer_->status() != 200) {
    fail(shortenedError(answer));
  }
  return answer;
}

void ClickHouseConnection::insert(const std::string& statement, std::string_view rows,
                                  Deadline deadline) {
  const std::string parameters =
      "database=" + access_.database + "&query=" + encodedForUrl(statement);
  std::string answer = exchange(parameters, rows, deadline);
  while (answer.starts_with(waitsForQuorum) && steady_clock::now() + pause < deadline) {
    std::this_thread::sleep_for(pause);
    answer = exchange(parameters, rows, deadline);
  }
  if (!answer.empty()) {
    fail(shortenedError(answer));
  }
}

void ClickHouseConnection::fail(const std::string& reason) const {
  throw StoreError("cannot use the store " + toText(access_) + ": " + reason);
}

std::string ClickHouseConnection::exchange(const std::string& parameters, std::string_view body,
                                           Deadline deadline) {
  const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
  if (left <= left.zero()) {
    fail("the time is over");
  }
  const std::string url = std::string(access_.isEncrypted ? "https://" : "http://") +
                          tools::toText(access_.server) + "/?" + parameters + settingsOf(left);
  std::string answer;
  transfer_->set(CURLOPT_URL, url.c_str());
  transfer_->set(CURLOPT_POSTFIELDS, body.data());
  transfer_->set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  transfer_->set(CURLOPT_WRITEDATA, &answer);
  transfer_->set(CURLOPT_CONNECTTIMEOUT_MS,
                 static_cast<long>(std::min(left, longestConnecting).count()));
  transfer_->set(CURLOPT_TIMEOUT_MS, static_cast<long>(left.count()));
  if (const std::string failure = transfer_->perform(); !failure.empty()) {
    fail(failure);
  }
  if (transfer_->status() != 200 && answer.empty()) {
    fail("status " + std::to_string(transfer_->status()));
  }
  return answer;
}

}  // namespace qel::collector
