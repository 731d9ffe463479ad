#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "tools/collector/AdminPage.h"
#include "tools/collector/FailedLogIns.h"
#include "tools/collector/LogIn.h"
#include "tools/collector/Page.h"
#include "tools/collector/Replaceable.h"
#include "tools/collector/Strangers.h"
#include "tools/collector/TlsSettings.h"

namespace qel::collector {

/// The limits of the admin server's connections. Sizes are in bytes.
struct AdminLimits {
  std::size_t readers = 256;  ///< connections of readers; `Strangers` limits the others
  std::uint32_t head = 8 * 1024;
  std::chrono::seconds headTime{5};     ///< from the start to the end of the first head
  std::chrono::seconds idleTime{30};    ///< from a reader's answer to the end of the next head
  std::chrono::seconds answerTime{10};  ///< to send an answer
};

/// The page for readers, and what protects it.
struct ReaderAccess {
  ReaderAccess(std::unique_ptr<Page> thePage, std::shared_ptr<Users> readers, TlsContext context)
      : page(std::move(thePage)), logIn(std::move(readers)), tls(std::move(context)) {}

  const std::unique_ptr<Page> page;
  LogIn logIn;
  Replaceable<TlsContext> tls;
};

/// What all connections of the admin server share. Used only on the server's thread, except the
/// thread-safe members of `readers`.
struct AdminService {
  const AdminLimits limits = {};
  const AdminPages pages;
  const std::unique_ptr<ReaderAccess> readers;  ///< null: only `pages` are served
  FailedLogIns failedLogIns = {};
  Strangers strangers = {};
  std::size_t readersNow = 0;
};

}  // namespace qel::collector
