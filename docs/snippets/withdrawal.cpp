#include <iostream>
#include <string>
#include <string_view>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/ServerConnection/ConnectionCheck.h"
#include "host/QelLog/LogManager.h"
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

void withdrawWithLog(Client& client) {
  qel::log::LogManager::instance().configure({});  // standard error only: closes the log file
  client.withdraw([](std::string_view name) { return name == "consumer.log"; });
}

bool canSend(const parameters::ActivateParameter& parameter) {
  const auto check = serverconnection::tryConnection(parameter);
  std::cout << check.text << '\n';
  return check.result == serverconnection::ConnectionCheck::Result::Accepted;
}
