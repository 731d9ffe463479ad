// Runs one code path of the client repeatedly, for a tool that counts the instructions inside
// `measured`. Prints nothing.

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "Application/Log/Analytics/Database/AccumulatingDispatcher.h"
#include "Application/Log/Analytics/Items/ItemWrapper.h"
#include "benchmarks/Workload.h"

namespace {

using namespace qel::log::analytics;
using qel::benchmarks::makeItem;

constexpr auto Items = CipDatabaseClientInterface::Items;

/// The part that is counted. The tool finds this function by its name, so no other function may
/// have the same name.
template <typename Path>
[[gnu::noinline]] void measured(Path path) {
  path();
}

void insert(int count) {
  AccumulatingDispatcher dispatcher([](const auto&) {}, std::chrono::seconds(1),
                                    static_cast<unsigned>(count));
  measured([&] {
    for (int number = 0; number < count; ++number) {
      dispatcher.add(makeItem(number), Items);
    }
  });
}

/// Renders `count` items and returns their total size in bytes.
std::size_t render(int count) {
  const auto item = makeItem(0);
  std::size_t size = 0;
  measured([&] {
    for (int number = 0; number < count; ++number) {
      size += item->toJson().size();
    }
  });
  return size;
}

/// Packs `count` rows into one package and returns its size.
std::size_t pack(int count) {
  const std::vector<std::string> rows(static_cast<std::size_t>(count), makeItem(0)->toJson());
  std::vector<const std::string*> texts;
  texts.reserve(rows.size());
  for (const auto& row : rows) {
    texts.push_back(&row);
  }
  std::size_t size = 0;
  measured([&] { size = items::ItemWrapper(texts, Items).toJson().size(); });
  return size;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::string_view path = argumentCount == 3 ? arguments[1] : "";
  const int count = argumentCount == 3 ? std::atoi(arguments[2]) : 0;
  qel::benchmarks::identifyProcess();
  if (path == "insert") {
    insert(count);
  } else if (path == "render") {
    return render(count) > 0 ? 0 : 1;
  } else if (path == "pack") {
    return pack(count) > 0 ? 0 : 1;
  } else {
    std::cerr << "Usage: QelInstructions insert|render|pack COUNT\n";
    return 2;
  }
  return 0;
}
