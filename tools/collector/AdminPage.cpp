#include "tools/collector/AdminPage.h"

namespace qel::collector {

AdminPages adminPages(std::function<std::string()> obstacle, std::function<std::string()> metrics) {
  return {
      {"/health", [] { return AdminPage{"ok\n"}; }},
      {"/ready",
       [obstacle = std::move(obstacle)] {
         const std::string word = obstacle();
         return word.empty() ? AdminPage{"ready\n"} : AdminPage{word + '\n', 503};
       }},
      {"/metrics",
       [metrics = std::move(metrics)] {
         return AdminPage{metrics(), 200, "text/plain; version=0.0.4; charset=utf-8"};
       }},
  };
}

}  // namespace qel::collector
