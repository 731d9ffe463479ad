#include "host/QelHttp/Connection.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <new>
#include <utility>

#include <curl/curl.h>
#ifndef _WIN32
#include <openssl/crypto.h>
#endif

#include "host/QelHttp/Client.h"
#include "host/QelHttp/SettingsInForce.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/Patience.h"
#include "host/QelUtilities/ScopeGuard.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::protocol::https {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

template <auto end>
struct EndBy {
  template <typename Handle>
  void operator()(Handle* handle) const {
    end(handle);
  }
};
using Easy = std::unique_ptr<CURL, EndBy<curl_easy_cleanup>>;
using Multi = std::unique_ptr<CURLM, EndBy<curl_multi_cleanup>>;
using Lines = std::unique_ptr<curl_slist, EndBy<curl_slist_free_all>>;

template <typename Handle>
Handle existing(Handle handle) {
  if (!handle) {
    throw std::bad_alloc();
  }
  return handle;
}

void append(Lines& lines, const std::string& line) {
  curl_slist* const longer = existing(curl_slist_append(lines.get(), line.c_str()));
  static_cast<void>(lines.release());
  lines.reset(longer);
}

/// A time limit in milliseconds for libcurl. It is at least 1, because libcurl takes 0 for no limit
/// or for its default.
long limitOf(milliseconds limit) {
  constexpr milliseconds::rep longest = std::numeric_limits<int>::max();
  return static_cast<long>(std::clamp<milliseconds::rep>(limit.count(), 1, longest));
}

/// One request and its response.
class Transfer {
 public:
  Transfer(const Settings& settings, const Message& message)
      : message_(message), room_(settings.largestResponse) {
    set(CURLOPT_ERRORBUFFER, errorText_.data());
    // With this option libcurl does not ignore SIGPIPE during the transfer. It need not, because
    // libcurl and the TLS library send without raising this signal.
    set(CURLOPT_NOSIGNAL, 1L);
    reachServer(settings);
    trust(settings);
    limit(settings);
    describeRequest();
    countAnswer();
  }

  CURL* handle() const { return easy_.get(); }
  /// The first error from setting an option; `CURLE_OK` if there was none.
  CURLcode setUp() const { return setUp_; }

  Outcome outcome(std::string failure) const {
    long status = 0;
    curl_off_t sent = 0;
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(handle(), CURLINFO_SIZE_UPLOAD_T, &sent);
    return {static_cast<int>(status), std::cmp_equal(sent, message_.body.size()),
            std::move(failure)};
  }

  /// The error text for a result; empty for success.
  std::string reasonOf(CURLcode result) const {
    if (result == CURLE_OK) {
      return {};
    }
    if (result == CURLE_WRITE_ERROR) {
      return "the answer is larger than allowed";
    }
    if (result == CURLE_OUT_OF_MEMORY) {  // also if a line exceeds libcurl's own limit
      return "out of memory, or a header line of the answer is too long";
    }
    return errorText_.front() != '\0' ? utilities::utf8FromMessage(errorText_.data())
                                      : curl_easy_strerror(result);
  }

 private:
  template <typename Value>
  void set(CURLoption option, Value value) {
    const CURLcode result = curl_easy_setopt(handle(), option, value);
    if (setUp_ == CURLE_OK) {
      setUp_ = result;
    }
  }

  void reachServer(const Settings& settings) {
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_URL, ("https://" + message_.host + message_.path).c_str());
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_FORBID_REUSE, message_.closeConnection ? 1L : 0L);
    // If these strings are empty, libcurl ignores the environment variables.
    set(CURLOPT_PROXY, settings.proxy.c_str());
    set(CURLOPT_NOPROXY, "");
    if (connectsElsewhere(settings, message_.host)) {
      append(connectTo_, settings.connectFor + "::" + settings.connectTo);
      set(CURLOPT_CONNECT_TO, connectTo_.get());
    }
  }

  void trust(const Settings& settings) {
    set(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    const char* systemBundle = nullptr;
    curl_easy_getinfo(handle(), CURLINFO_CAINFO, &systemBundle);
    if (!settings.caBundle.empty()) {
      set(CURLOPT_CAINFO, settings.caBundle.c_str());
    }
    if (!settings.caBundle.empty() || systemBundle != nullptr) {
      // Without this, the system's certificate directory is trusted too. Certificates are cached in
      // memory only if they all come from a file. The result does not matter, because it is an
      // error only where directories are not supported.
      static_cast<void>(curl_easy_setopt(handle(), CURLOPT_CAPATH, nullptr));
    }
#ifdef _WIN32
    // A revoked certificate is rejected. But many private authorities publish no revocation list,
    // and many networks block its download. Without the option, every upload would fail there.
    long options = CURLSSLOPT_REVOKE_BEST_EFFORT;
    if (settings.caBundle.empty()) {
      options |= CURLSSLOPT_NATIVE_CA;
    }
    set(CURLOPT_SSL_OPTIONS, options);
#endif
  }

  void limit(const Settings& settings) {
    set(CURLOPT_CONNECTTIMEOUT_MS, limitOf(settings.connectTimeout));
    set(CURLOPT_TIMEOUT_MS, limitOf(settings.totalTimeout));
    set(CURLOPT_LOW_SPEED_LIMIT, settings.lowSpeedBytesPerSecond);
    set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(settings.lowSpeedTime.count()));
    // With this option, ending a transfer does not wait for a name server.
    set(CURLOPT_QUICK_EXIT, 1L);
  }

  void describeRequest() {
    set(CURLOPT_POST, 1L);
    set(CURLOPT_POSTFIELDS, message_.body.data());
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(message_.body.size()));
    append(headers_, "Content-Type: " + message_.contentType);
    append(headers_, "Expect:");
    set(CURLOPT_HTTPHEADER, headers_.get());
    if (!message_.user.empty() || !message_.secret.empty()) {
      set(CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
      set(CURLOPT_USERNAME, message_.user.c_str());
      set(CURLOPT_PASSWORD, message_.secret.c_str());
    }
  }

  void countAnswer() {
    set(CURLOPT_HEADERFUNCTION, &Transfer::take);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_WRITEFUNCTION, &Transfer::take);
    set(CURLOPT_WRITEDATA, this);
  }

  /// libcurl calls this with each part of the response. Accepting less than the whole part ends the
  /// transfer.
  static std::size_t take(const char*, std::size_t size, std::size_t count, void* transfer) {
    auto& room = static_cast<Transfer*>(transfer)->room_;
    const std::size_t taken = std::min(size * count, room);
    room -= taken;
    return taken;
  }

  const Message& message_;
  std::size_t room_;  ///< how many bytes of the response may still arrive
  std::array<char, CURL_ERROR_SIZE> errorText_{};
  CURLcode setUp_ = CURLE_OK;
  Lines headers_;
  Lines connectTo_;
  Easy easy_{existing(curl_easy_init())};  ///< refers to all members above
};

/// Initializes libcurl once in this process.
void setUpLibrary() {
  static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (result != CURLE_OK) {
    throw Error(std::string("cannot set up HTTPS: ") + curl_easy_strerror(result));
  }
}

}  // namespace

class Connection::Implementation {
 public:
  Outcome exchange(const Settings& settings, const Message& message) {
    const Transfer transfer(settings, message);
    if (transfer.setUp() != CURLE_OK) {
      return {0, false, curl_easy_strerror(transfer.setUp())};
    }
    if (const auto result = curl_multi_add_handle(multi_.get(), transfer.handle());
        result != CURLM_OK) {
      return {0, false, curl_multi_strerror(result)};
    }
    const ScopeGuard removing([&] { curl_multi_remove_handle(multi_.get(), transfer.handle()); });
    return run(transfer);
  }

 private:
  /// Runs the transfer until it ends.
  Outcome run(const Transfer& transfer) {
    int running = 1;
    while (running > 0) {
      const auto left = utilities::exitDeadline() - steady_clock::now();
      if (left <= steady_clock::duration::zero()) {
        return transfer.outcome("the exit deadline has passed");
      }
      if (utilities::Patience::mustStop()) {
        return transfer.outcome("this thread must stop");
      }
      CURLMcode result = curl_multi_perform(multi_.get(), &running);
      if (result == CURLM_OK && running > 0) {
        result = curl_multi_poll(multi_.get(), nullptr, 0, pauseWithin(left), nullptr);
      }
      if (result != CURLM_OK) {
        return transfer.outcome(curl_multi_strerror(result));
      }
    }
    int others = 0;
    const CURLcode result = curl_multi_info_read(multi_.get(), &others)->data.result;
    Outcome outcome = transfer.outcome(transfer.reasonOf(result));
    outcome.isCertificateRejected = result == CURLE_PEER_FAILED_VERIFICATION;
    return outcome;
  }

  /// How many milliseconds to wait for the network. The wait is short, because an exit deadline or
  /// a stop time may be set during the wait.
  static int pauseWithin(steady_clock::duration left) {
    constexpr milliseconds longest{100};
    const auto pause = std::min<steady_clock::duration>(left, longest);
    return static_cast<int>(std::chrono::ceil<milliseconds>(pause).count());
  }

  Multi multi_{existing(curl_multi_init())};
};

Connection::Connection(std::shared_ptr<const Settings> settings) : settings_(std::move(settings)) {
  setUpLibrary();
  implementation_ = std::make_unique<Implementation>();
}

Connection::~Connection() = default;

Outcome Connection::exchange(const Message& message) {
  return implementation_->exchange(*settings_, message);
}

void Connection::leaveThread() {
#ifndef _WIN32
  OPENSSL_thread_stop();
#endif
}

}  // namespace qel::protocol::https
