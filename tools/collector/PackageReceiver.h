#pragma once

#include <cstddef>
#include <string>

#include <httplib.h>

#include "host/QelUtilities/Mutex.h"
#include "tools/collector/Answer.h"
#include "tools/collector/ConnectionWatch.h"
#include "tools/collector/Credentials.h"
#include "tools/collector/StoreWriter.h"

namespace qel::collector {

/// Answers requests: checks them, stores their packages, and logs one line for each. Thread-safe.
class PackageReceiver {
 public:
  /// `store` and `watch` must outlive this object.
  PackageReceiver(std::size_t largestBody, Credentials credentials, StoreWriter& store,
                  ConnectionWatch& watch);

  /// Answers a request whose method is not POST.
  void refuse(const httplib::Request& request, httplib::Response& response);

  /// Answers a POST request. `reader` reads its body.
  void receive(const httplib::Request& request, httplib::Response& response,
               const httplib::ContentReader& reader);

 private:
  bool read(const httplib::ContentReader& reader, std::string* body) const;
  Answer store(std::string body);
  Answer storeNow(std::string body);

  const std::size_t largestBody_;
  const Credentials credentials_;
  StoreWriter& store_;
  ConnectionWatch& watch_;
  utilities::Mutex largeBodies_;  ///< held while a large body is parsed and stored
};

}  // namespace qel::collector
