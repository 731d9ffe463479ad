#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include <curl/curl.h>

#include "host/QelHttp/Client.h"
#include "host/QelHttp/Settings.h"
#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/Patience.h"

// The embedding program's own implementation of host/QelHttp, on the libcurl that it uses anyway.
namespace qel::protocol::https {
namespace {

struct ProcessState {
  std::mutex mutex;
  Settings settings;  // guarded by the mutex
};

ProcessState& processState() {
  static auto* const state = new ProcessState;  // threads may post while the process exits
  return *state;
}

template <auto end>
struct EndBy {
  template <typename Handle>
  void operator()(Handle* handle) const {
    end(handle);
  }
};
using Transfer = std::unique_ptr<CURL, EndBy<curl_easy_cleanup>>;
using Transfers = std::unique_ptr<CURLM, EndBy<curl_multi_cleanup>>;
using Lines = std::unique_ptr<curl_slist, EndBy<curl_slist_free_all>>;

/// Takes part of a response. libcurl ends the transfer if the response exceeds its limit.
std::size_t take(const char*, std::size_t size, std::size_t count, void* room) {
  auto& left = *static_cast<std::size_t*>(room);
  const std::size_t taken = std::min(size * count, left);
  left -= taken;
  return taken;
}

void reachServer(CURL* transfer, const Message& message, const Settings& settings,
                 Lines& connectTo) {
  curl_easy_setopt(transfer, CURLOPT_PROTOCOLS_STR, "https");
  curl_easy_setopt(transfer, CURLOPT_URL, ("https://" + message.host + message.path).c_str());
  curl_easy_setopt(transfer, CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
  curl_easy_setopt(transfer, CURLOPT_PROXY, settings.proxy.c_str());
  curl_easy_setopt(transfer, CURLOPT_NOPROXY, "");
  if (!settings.caBundle.empty()) {
    curl_easy_setopt(transfer, CURLOPT_CAINFO, settings.caBundle.c_str());
    curl_easy_setopt(transfer, CURLOPT_CAPATH, nullptr);
  }
  if (!settings.connectTo.empty()) {
    connectTo.reset(
        curl_slist_append(nullptr, (settings.connectFor + "::" + settings.connectTo).c_str()));
    curl_easy_setopt(transfer, CURLOPT_CONNECT_TO, connectTo.get());
  }
}

void describe(CURL* transfer, const Message& message, Lines& headers) {
  headers.reset(curl_slist_append(nullptr, ("Content-Type: " + message.contentType).c_str()));
  curl_easy_setopt(transfer, CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(transfer, CURLOPT_POSTFIELDS, message.body.data());
  curl_easy_setopt(transfer, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(message.body.size()));
  if (!message.user.empty() || !message.secret.empty()) {
    curl_easy_setopt(transfer, CURLOPT_HTTPAUTH, long{CURLAUTH_BASIC});
    curl_easy_setopt(transfer, CURLOPT_USERNAME, message.user.c_str());
    curl_easy_setopt(transfer, CURLOPT_PASSWORD, message.secret.c_str());
  }
}

void limit(CURL* transfer, const Settings& settings, std::size_t& room) {
  curl_easy_setopt(transfer, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(transfer, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(transfer, CURLOPT_CONNECTTIMEOUT_MS, long(settings.connectTimeout.count()));
  curl_easy_setopt(transfer, CURLOPT_TIMEOUT_MS, long(settings.totalTimeout.count()));
  curl_easy_setopt(transfer, CURLOPT_LOW_SPEED_LIMIT, settings.lowSpeedBytesPerSecond);
  curl_easy_setopt(transfer, CURLOPT_LOW_SPEED_TIME, long(settings.lowSpeedTime.count()));
  for (const auto option : {CURLOPT_HEADERFUNCTION, CURLOPT_WRITEFUNCTION}) {
    curl_easy_setopt(transfer, option, &take);
  }
  for (const auto option : {CURLOPT_HEADERDATA, CURLOPT_WRITEDATA}) {
    curl_easy_setopt(transfer, option, &room);
  }
}

bool mustEnd() {
  return utilities::Patience::mustStop() ||
         std::chrono::steady_clock::now() >= utilities::exitDeadline();
}

/// Returns why the transfer was not completed, or `CURLE_OK`. Checks ten times a second whether it
/// must end, because another thread may set the exit deadline or the stop time meanwhile.
CURLcode perform(CURL* transfer) {
  const Transfers transfers(curl_multi_init());
  if (curl_multi_add_handle(transfers.get(), transfer) != CURLM_OK) {
    throw std::bad_alloc();
  }
  int running = 1;
  while (running > 0 && !mustEnd()) {
    curl_multi_perform(transfers.get(), &running);
    if (running > 0) {
      curl_multi_poll(transfers.get(), nullptr, 0, 100, nullptr);
    }
  }
  int others = 0;
  const auto* const end = curl_multi_info_read(transfers.get(), &others);
  const auto result = end == nullptr ? CURLE_ABORTED_BY_CALLBACK : end->data.result;
  curl_multi_remove_handle(transfers.get(), transfer);
  return result;
}

void check(const Message& message) {
  for (const std::string& field :
       {message.host, message.path, message.contentType, message.user, message.secret}) {
    if (field.find_first_of(std::string("\r\n\0", 3)) != std::string::npos) {
      throw Error("not posted: a field has CR, LF or NUL");
    }
  }
  if (message.user.find(':') != std::string::npos) {
    throw Error("not posted: the user's name has a colon");
  }
}

}  // namespace

void setSettings(const Settings& settings) {
  const std::lock_guard lock(processState().mutex);
  processState().settings = settings;
}

Settings getSettings() {
  const std::lock_guard lock(processState().mutex);
  return processState().settings;
}

http::Response Client::post(const Message& message) {
  check(message);
  const Settings settings = getSettings();
  std::size_t room = settings.largestResponse;
  Lines connectTo;
  Lines headers;
  const Transfer transfer(curl_easy_init());
  if (!transfer) {
    throw std::bad_alloc();
  }
  reachServer(transfer.get(), message, settings, connectTo);
  describe(transfer.get(), message, headers);
  limit(transfer.get(), settings, room);
  const CURLcode result = perform(transfer.get());

  long status = 0;
  curl_off_t sent = 0;
  curl_easy_getinfo(transfer.get(), CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(transfer.get(), CURLINFO_SIZE_UPLOAD_T, &sent);
  const std::string answer = message.host + " answered with status " + std::to_string(status);
  if (status >= 400) {
    log::LogManager::instance().getLogger("OwnHttps")->log(log::Level::Warning, answer);
  } else if (result != CURLE_OK) {
    throw Error(
        "posting to " + message.host + " failed: " + curl_easy_strerror(result),
        result == CURLE_PEER_FAILED_VERIFICATION ? Error::Cause::Certificate : Error::Cause::Other);
  } else if (status < 200 || !std::cmp_equal(sent, message.body.size())) {
    throw Error(answer + " before the whole body was sent");
  }
  return {static_cast<int>(status)};
}

}  // namespace qel::protocol::https
