#include "tools/collector/AdminServer.h"

#include <chrono>
#include <thread>
#include <utility>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>

#include "host/QelUtilities/Exception.h"
#include "tools/collector/AdminConnection.h"
#include "tools/collector/CrowdLog.h"

namespace qel::collector {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;

constexpr std::chrono::milliseconds pauseAfterFailure{100};

/// Ends with an exception, which nobody receives, if the connection fails or takes too long.
asio::awaitable<void> serve(AdminService& service, tcp::socket socket) {
  AdminConnection connection(service, std::move(socket));
  co_await connection.run();
}

}  // namespace

class AdminServer::Implementation {
 public:
  Implementation(const tools::Endpoint& listen, AdminPages pages,
                 std::unique_ptr<ReaderAccess> readers)
      : service{.pages = std::move(pages), .readers = std::move(readers)},
        acceptor_(listenOn(listen)),
        host_(listen.host) {
    asio::co_spawn(io_, accept(), [](const std::exception_ptr& failure) {
      if (failure) {  // ends the process, so that its supervisor starts it again
        std::rethrow_exception(failure);
      }
    });
    thread_ = std::thread([this] { io_.run(); });
  }

  ~Implementation() {
    io_.stop();
    thread_.join();
    if (service.readers) {
      // Their threads use the loop.
      service.readers->page->stop();
      service.readers->logIn.stop();
    }
  }

  tools::Endpoint endpoint() const { return {host_, acceptor_.local_endpoint().port()}; }

  AdminService service;

 private:
  tcp::acceptor listenOn(const tools::Endpoint& listen) {
    try {
      const auto found = tcp::resolver(io_).resolve(listen.host, std::to_string(listen.port),
                                                    tcp::resolver::passive);
      return {io_, *found.begin()};
    } catch (const boost::system::system_error& error) {
      throw qel::exception("cannot listen on " + tools::toText(listen) + ": " +
                           error.code().message());
    }
  }

  asio::awaitable<void> accept() {
    asio::steady_timer pause(io_);
    for (;;) {
      boost::system::error_code failed;
      tcp::socket socket =
          co_await acceptor_.async_accept(asio::redirect_error(asio::use_awaitable, failed));
      if (failed) {  // for example, no descriptor is free
        pause.expires_after(pauseAfterFailure);
        co_await pause.async_wait(asio::use_awaitable);
        continue;
      }
      const tcp::endpoint peer = socket.remote_endpoint(failed);
      if (service.strangers.hasPlaceFor(peer.address())) {
        asio::co_spawn(io_, serve(service, std::move(socket)), asio::detached);
      } else {
        crowdLog_.add(peer);
      }
    }
  }

  asio::io_context io_{1};
  tcp::acceptor acceptor_;
  const std::string host_;
  CrowdLog crowdLog_{"admin: "};
  std::thread thread_;
};

AdminServer::AdminServer(const tools::Endpoint& listen, AdminPages pages,
                         std::unique_ptr<ReaderAccess> readers)
    : implementation_(
          std::make_unique<Implementation>(listen, std::move(pages), std::move(readers))) {}

AdminServer::~AdminServer() = default;

tools::Endpoint AdminServer::endpoint() const { return implementation_->endpoint(); }

void AdminServer::use(std::shared_ptr<Users> readers) {
  if (auto& access = implementation_->service.readers) {
    access->logIn.users.replace(std::move(readers));
  }
}

void AdminServer::use(TlsContext tls) {
  if (auto& access = implementation_->service.readers) {
    access->tls.replace(std::move(tls));
  }
}

}  // namespace qel::collector
