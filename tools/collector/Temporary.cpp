// Stands in for the store's thread, the users and the metrics until they exist.
#include <algorithm>
#include <fstream>
#include <map>

#include <openssl/evp.h>

#include "tools/collector/Credentials.h"
#include "tools/collector/Metrics.h"
#include "tools/collector/StoreWriter.h"
#include "tools/collector/Users.h"

namespace qel::collector {
namespace {

Store* theStore = nullptr;
std::unique_ptr<Credentials> theCredentials;

}  // namespace

StoreWriter::StoreWriter(Store& store, const WriterSettings& /*settings*/) { theStore = &store; }
StoreWriter::~StoreWriter() = default;
void StoreWriter::add(std::shared_ptr<const Upload> upload, Done done) {
  std::exception_ptr failure;
  try {
    theStore->add({std::move(upload)}, {});
  } catch (const std::exception&) {
    failure = std::current_exception();
  }
  done(failure);
}

Users::Users(std::istream& lines, const std::string& name, const UserLimits& /*limits*/) {
  theCredentials = std::make_unique<Credentials>(lines, name);
}
Users::~Users() = default;
std::shared_ptr<Users> Users::fromFile(const std::filesystem::path& file,
                                       const UserLimits& limits) {
  theCredentials = std::make_unique<Credentials>(Credentials::fromFile(file));
  std::ifstream lines(file);
  return std::make_shared<Users>(lines, file.string(), limits);
}
std::optional<Users::Identity> Users::checkAtOnce(std::string_view authorization) const {
  const std::string token =
      "Basic" + std::string(authorization.substr(std::min<std::size_t>(5, authorization.size())));
  return theCredentials->accept(authorization.starts_with("Bearer") ? authorization : token)
             ? Identity("user")
             : Identity();
}
Users::Identity Users::checkHash(std::string_view /*authorization*/) { return {}; }
std::chrono::seconds Users::admit(const std::string& /*user*/, std::uint64_t /*bytes*/,
                                  std::chrono::steady_clock::time_point /*now*/) {
  return {};
}

void Metrics::countAnswer(int /*status*/, std::chrono::steady_clock::duration /*time*/) {}
void Metrics::countStored(const Package& /*package*/, std::size_t /*bytes*/) {}

}  // namespace qel::collector
