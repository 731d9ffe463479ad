#include "tools/collector/Server.h"

#include <algorithm>
#include <exception>
#include <list>
#include <sstream>
#include <thread>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <sys/resource.h>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/ScopeGuard.h"
#include "tools/collector/Answer.h"
#include "tools/collector/Connection.h"
#include "tools/collector/CrowdLog.h"
#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;

constexpr int waitingConnections = 4096;
/// Files of the store and the log, and other listeners.
constexpr std::size_t otherDescriptors = 36;
/// The connections beyond the limit that may wait until others are cut.
constexpr std::size_t connectionsToCut = 64;
constexpr std::chrono::milliseconds acceptPause{100};

/// Raises the number of descriptors as far as allowed. Returns how many connections that permits.
std::size_t permittedConnections() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
  ::getrlimit(RLIMIT_NOFILE, &limit);
  return limit.rlim_cur -
         std::min<std::size_t>(limit.rlim_cur, otherDescriptors + connectionsToCut);
}

Limits withinPermission(Limits limits) {
  limits.connections = std::min(limits.connections, permittedConnections());
  return limits;
}

/// The address of an IPv4 client is the same, whether or not the server listens on IPv6.
asio::ip::address plain(const asio::ip::address& address) {
  return address.is_v6() && address.to_v6().is_v4_mapped()
             ? asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6())
             : address;
}

std::vector<asio::ip::address> parseAddresses(const std::vector<std::string>& texts) {
  std::vector<asio::ip::address> addresses;
  for (const std::string& text : texts) {
    boost::system::error_code error;
    addresses.push_back(plain(asio::ip::make_address(text, error)));
    if (error) {
      throw tools::InputError("--behind: \"" + text + "\" is not an address");
    }
  }
  return addresses;
}

/// For the ends of coroutines that must not end: the process ends instead, so that its supervisor
/// starts it again.
void rethrow(const std::exception_ptr& failure) {
  if (failure) {
    std::rethrow_exception(failure);
  }
}

/// A thread that serves some of the connections. Only this thread uses `connections`, which are in
/// the order of their arrival.
struct Loop {
  asio::io_context io{1};
  std::list<Connection*> connections;
  asio::executor_work_guard<asio::io_context::executor_type> work{io.get_executor()};
  std::thread thread;
};

/// Cuts the oldest connection without accepted credentials, so that strangers cannot keep customers
/// out.
void makeRoom(const Loop& loop) {
  const auto stranger = std::find_if(loop.connections.begin(), loop.connections.end(),
                                     [](const Connection* each) { return each->isStranger(); });
  if (stranger != loop.connections.end()) {
    (*stranger)->cut();
  }
}

/// The caller has counted the connection.
asio::awaitable<void> serve(Service& service, Loop& loop, tcp::socket socket, std::string peer,
                            bool isBehindProxy) {
  const ScopeGuard end([&] { --service.connections; });
  Connection connection(service, std::move(socket), std::move(peer), isBehindProxy);
  const auto place = loop.connections.insert(loop.connections.end(), &connection);
  const ScopeGuard remove([&] { loop.connections.erase(place); });
  if (service.connections > service.limits.connections) {
    makeRoom(loop);
  }
  if (service.isStopping) {
    connection.stop();
  }
  co_await connection.run();
}

}  // namespace

class Server::Implementation {
 public:
  Implementation(const ServerSettings& settings, std::shared_ptr<Users> users, TlsContext tls,
                 StoreWriter& writer, Metrics& metrics)
      : service(withinPermission(settings.limits), writer, metrics, std::move(users),
                std::move(tls)),
        behind_(parseAddresses(settings.behind)),
        loops_(std::max(1U, std::thread::hardware_concurrency())) {
    listen(settings.listen);
    asio::co_spawn(loops_.front().io, accept(), rethrow);
    for (Loop& loop : loops_) {
      loop.thread = std::thread([&loop] { loop.io.run(); });
    }
  }

  std::uint16_t port() const { return port_; }
  void stop();

  Service service;

 private:
  void listen(const tools::Endpoint& endpoint);
  asio::awaitable<void> accept();
  void admit(Loop& loop, tcp::socket socket);

  const std::vector<asio::ip::address> behind_;
  std::vector<Loop> loops_;
  tcp::acceptor acceptor_{loops_.front().io};
  std::uint16_t port_ = 0;
  /// @{
  /// Used only on the first loop's thread.
  CrowdLog crowdLog_;
  /// @}
};

void Server::Implementation::listen(const tools::Endpoint& endpoint) {
  try {
    const auto found = tcp::resolver(loops_.front().io)
                           .resolve(endpoint.host, std::to_string(endpoint.port),
                                    tcp::resolver::passive | tcp::resolver::numeric_service);
    const tcp::endpoint address = *found.begin();
    acceptor_.open(address.protocol());
    acceptor_.set_option(tcp::acceptor::reuse_address(true));
    acceptor_.bind(address);
    acceptor_.listen(waitingConnections);
    port_ = acceptor_.local_endpoint().port();
  } catch (const boost::system::system_error& error) {
    throw qel::exception("cannot listen on " + tools::toText(endpoint) + ": " +
                         error.code().message());
  }
}

asio::awaitable<void> Server::Implementation::accept() {
  asio::steady_timer pause(loops_.front().io);
  for (std::size_t next = 0; acceptor_.is_open(); next = (next + 1) % loops_.size()) {
    Loop& loop = loops_[next];
    boost::system::error_code error;
    tcp::socket socket =
        co_await acceptor_.async_accept(loop.io, asio::redirect_error(asio::use_awaitable, error));
    if (!error) {
      admit(loop, std::move(socket));
    } else if (acceptor_.is_open()) {
      pause.expires_after(acceptPause);
      co_await pause.async_wait(asio::use_awaitable);
    }
  }
}

void Server::Implementation::admit(Loop& loop, tcp::socket socket) {
  boost::system::error_code error;
  tcp::endpoint peer = socket.remote_endpoint(error);
  if (error) {
    return;  // closes the socket
  }
  peer.address(plain(peer.address()));
  if (service.connections >= service.limits.connections) {
    crowdLog_.add(peer);
  }
  if (service.connections >= service.limits.connections + connectionsToCut) {
    return;
  }
  socket.set_option(tcp::no_delay(true), error);
  const bool isBehindProxy = std::count(behind_.begin(), behind_.end(), peer.address()) > 0;
  std::ostringstream text;
  text << peer;
  ++service.connections;
  asio::co_spawn(loop.io, serve(service, loop, std::move(socket), text.str(), isBehindProxy),
                 asio::detached);
}

void Server::Implementation::stop() {
  service.isStopping = true;
  asio::post(loops_.front().io, [this] { acceptor_.close(); });
  for (Loop& loop : loops_) {
    asio::post(loop.io, [&loop] {
      for (Connection* const connection : loop.connections) {
        connection->stop();
      }
    });
    loop.work.reset();
  }
  for (Loop& loop : loops_) {
    if (loop.thread.joinable()) {
      loop.thread.join();
    }
  }
}

Server::Server(const ServerSettings& settings, std::shared_ptr<Users> users, TlsContext tls,
               StoreWriter& writer, Metrics& metrics)
    : implementation_(std::make_unique<Implementation>(settings, std::move(users), std::move(tls),
                                                       writer, metrics)) {}

Server::~Server() { stop(); }

std::uint16_t Server::port() const { return implementation_->port(); }

void Server::use(std::shared_ptr<Users> users) {
  implementation_->service.logIn.users.replace(std::move(users));
}

void Server::use(TlsContext tls) { implementation_->service.tls.replace(std::move(tls)); }

std::size_t Server::connections() const { return implementation_->service.connections; }

std::uint64_t Server::bytesInFlight() const { return implementation_->service.bytesInFlight; }

void Server::stop() { implementation_->stop(); }

}  // namespace qel::collector
