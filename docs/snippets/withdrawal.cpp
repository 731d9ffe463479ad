#include <iostream>
#include <string>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/ServerConnection/ConnectionCheck.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"

using namespace qel::log::analytics;

void withdraw(Client& client) {
  try {
    for (const auto& [file, size, error] : client.withdraw()) {
      if (error) {
        std::cerr << qel::utilities::utf8FromPath(file) << " was not removed\n";
      }
    }
  } catch (const qel::exception& failure) {
    std::cerr << "nothing was removed: " << failure.what() << '\n';
  }
}

bool canSend(const parameters::ActivateParameter& parameter) {
  const auto check = serverconnection::tryConnection(parameter);
  std::cout << check.text << '\n';
  return check.result == serverconnection::ConnectionCheck::Result::Accepted;
}
