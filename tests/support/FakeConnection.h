#pragma once

#include <functional>

#include "Application/Log/Analytics/Items/ItemWrapper.h"
#include "Application/Log/Analytics/ServerConnection/DbToServerConnectionInterface.h"

namespace qel::test {

/// A server connection that keeps the packages and accepts as many as a test sets.
class FakeConnection : public log::analytics::serverconnection::DbToServerConnectionInterface {
 public:
  void initalize(const log::analytics::parameters::ActivateParameter&) override {}
  bool send(log::analytics::items::ItemWrapper& package) override {
    packages.push_back(package.toJson());
    failure();
    return accepted-- > 0;
  }

  int accepted = 1000;
  std::function<void()> failure = [] {};
  std::vector<std::string> packages;
};

}  // namespace qel::test
