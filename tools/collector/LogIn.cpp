#include "tools/collector/LogIn.h"

#include <chrono>
#include <thread>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/use_awaitable.hpp>

#include "host/QelUtilities/ScopeGuard.h"

namespace qel::collector {
namespace {

namespace asio = boost::asio;

using std::chrono::steady_clock;

/// Takes twice the time of the check, so that checks use at most half a processor.
asio::awaitable<Users::Identity> checkHash(std::shared_ptr<Users> users,
                                           std::string authorization) {
  const auto begin = steady_clock::now();
  auto identity = users->checkHash(authorization);
  std::this_thread::sleep_for(steady_clock::now() - begin);
  co_return identity;
}

}  // namespace

asio::awaitable<std::optional<Users::Identity>> LogIn::check(std::string authorization,
                                                             std::string address) {
  const auto current = users.get();
  const auto decided = current->checkAtOnce(authorization);
  if (decided) {
    co_return decided;
  }
  if (!checks_.begin(address)) {
    co_return std::nullopt;
  }
  const ScopeGuard end([&] { checks_.end(address); });
  auto checking = checkHash(current, std::move(authorization));
  co_return co_await asio::co_spawn(checker_.get_executor(), std::move(checking),
                                    asio::use_awaitable);
}

}  // namespace qel::collector
