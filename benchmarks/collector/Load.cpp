#include "benchmarks/collector/Load.h"

#include <iostream>
#include <memory>
#include <random>
#include <utility>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <openssl/evp.h>

#include "benchmarks/collector/Connection.h"
#include "benchmarks/collector/Rows.h"

namespace qel::benchmarks {
namespace {

namespace asio = boost::asio;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

template <typename Result>
using Task = asio::awaitable<Result>;

/// New connections are opened at this rate, so that the system's queue of the server holds them.
constexpr double connectionsPerSecond = 2000;
constexpr Seconds pauseAfterFailure{0.2};

Clock::duration ticks(Seconds seconds) {
  return std::chrono::duration_cast<Clock::duration>(seconds);
}

std::string base64(const std::string& text) {
  std::string encoded(text.size() / 3 * 4 + 5, '\0');
  const int size = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                                   reinterpret_cast<const unsigned char*>(text.data()),
                                   static_cast<int>(text.size()));
  encoded.resize(static_cast<std::size_t>(size));
  return encoded;
}

/// Does not check the server's certificate, which would cost more than the server's handshake does.
asio::ssl::context makeTls() {
  asio::ssl::context tls(asio::ssl::context::tls_client);
  tls.set_verify_mode(asio::ssl::verify_none);
  SSL_CTX_set_mode(tls.native_handle(), SSL_MODE_RELEASE_BUFFERS);
  return tls;
}

Task<void> waitUntil(Clock::time_point time) {
  if (time > Clock::now()) {
    asio::steady_timer timer(co_await asio::this_coro::executor, time);
    co_await timer.async_wait(asio::use_awaitable);
  }
}

struct Run {
  const LoadSettings& settings;
  const PackageTemplates templates{settings.rows, settings.earlierRows};
  const Clock::time_point start = Clock::now();
  const Clock::time_point warm = start + ticks(settings.warmUp);
  const Clock::time_point end = warm + ticks(settings.duration);
  LoadResult result{};
};

/// A client that sends one package after the other.
class Client {
 public:
  Client(Run& run, asio::io_context& loop, asio::ssl::context& tls, std::size_t number)
      : run_(run),
        connection_(loop, tls, run.settings),
        session_(run.templates, std::random_device{}()),
        firstDue_(run.start + firstDelay(run.settings, number)),
        head_(requestHead(run.settings, number)) {}

  Task<void> send() {
    const auto& interval = run_.settings.interval;
    for (Clock::time_point due = firstDue_; due < run_.end;) {
      co_await waitUntil(due);
      const Clock::time_point begin = interval ? due : Clock::now();
      prepareNext();
      bool stored = false;
      do {
        const Outcome outcome = co_await deliver();
        stored = outcome.status / 100 == 2;
        note(outcome, stored, begin);
        if (!stored && run_.settings.resend) {
          co_await waitUntil(Clock::now() + ticks(pauseAfterFailure));
        }
      } while (!stored && run_.settings.resend);
      due = interval ? due + ticks(*interval)
                     : Clock::now() + ticks(stored ? Seconds{0} : pauseAfterFailure);
    }
  }

 private:
  static Clock::duration firstDelay(const LoadSettings& settings, std::size_t number) {
    const Seconds opening{static_cast<double>(settings.connections) / connectionsPerSecond};
    const Seconds period =
        settings.warmUp.count() > 0 ? settings.warmUp : settings.interval.value_or(opening);
    return ticks(period * number / settings.connections);
  }

  static std::string requestHead(const LoadSettings& settings, std::size_t number) {
    const std::string user =
        settings.user + (settings.users > 0 ? std::to_string(number % settings.users) : "");
    return "POST /authenticated/customer-care.php HTTP/1.1\r\nHost: " + settings.host +
           "\r\nAuthorization: Basic " + base64(user + ":" + settings.secret) +
           "\r\nAccept: */*\r\nContent-Type: application/json\r\nContent-Length: ";
  }

  void prepareNext() {
    request_ = head_ + std::to_string(session_.nextSize()) + "\r\n\r\n";
    session_.appendNext(request_);
  }

  Task<Outcome> deliver() {
    if (run_.settings.fresh) {
      connection_.close();
    }
    const bool used = connection_.isOpen();
    Outcome outcome = co_await connection_.exchange(request_);
    if (used && outcome.status == 0 && outcome.error != "timeout") {
      outcome =
          co_await connection_.exchange(request_);  // the server had closed the idle connection
    }
    co_return outcome;
  }

  void note(const Outcome& outcome, bool stored, Clock::time_point begin) {
    const auto now = Clock::now();
    if (!stored) {
      ++run_.result.failures[outcome.status == 0 ? outcome.error : std::to_string(outcome.status)];
      return;
    }
    ++run_.result.stored;
    if (now >= run_.warm && now < run_.end) {
      ++run_.result.answeredInTime;
      run_.result.bytesInTime += request_.size() - head_.size();
    }
    if (begin >= run_.warm) {
      run_.result.milliseconds.push_back(
          std::chrono::duration<float, std::milli>(now - begin).count());
    }
  }

  Run& run_;
  Connection connection_;
  Session session_;
  const Clock::time_point firstDue_;
  const std::string head_;
  std::string request_;
};

Task<void> stayConnected(Connection& connection, Clock::time_point begin, std::size_t& open) {
  co_await waitUntil(begin);
  for (;;) {
    const bool opened = co_await connection.open();
    if (opened) {
      ++open;
      co_await connection.awaitEnd();
      --open;
    }
    co_await waitUntil(Clock::now() + ticks(Seconds{1}));
  }
}

Task<void> printOpen(const std::size_t& open) {
  for (;;) {
    co_await waitUntil(Clock::now() + ticks(Seconds{1}));
    std::cout << open << std::endl;
  }
}

}  // namespace

LoadResult load(const LoadSettings& settings) {
  asio::io_context loop(1);
  asio::ssl::context tls = makeTls();
  Run run{settings};
  std::vector<std::unique_ptr<Client>> clients;
  for (std::size_t number = 0; number < settings.connections; ++number) {
    clients.push_back(std::make_unique<Client>(run, loop, tls, number));
    asio::co_spawn(loop, clients.back()->send(), asio::detached);
  }
  loop.run();
  return std::move(run.result);
}

void keepSilent(const LoadSettings& settings) {
  asio::io_context loop(1);
  asio::ssl::context tls = makeTls();
  std::vector<std::unique_ptr<Connection>> connections;
  std::size_t open = 0;
  const auto start = Clock::now();
  for (std::size_t number = 0; number < settings.connections; ++number) {
    connections.push_back(std::make_unique<Connection>(loop, tls, settings));
    const Seconds delay{static_cast<double>(number) / connectionsPerSecond};
    asio::co_spawn(loop, stayConnected(*connections.back(), start + ticks(delay), open),
                   asio::detached);
  }
  asio::co_spawn(loop, printOpen(open), asio::detached);
  loop.run_for(ticks(settings.duration));
}

}  // namespace qel::benchmarks
