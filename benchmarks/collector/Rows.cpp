#include "benchmarks/collector/Rows.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <string_view>

namespace qel::benchmarks {
namespace {

constexpr std::size_t rowsOfSession = 200;
constexpr std::size_t rowsOfDay = 250'000;  ///< of all customers
constexpr std::uint64_t installations = 10'000;

/// A kind of row and how often it occurs among all kinds. `%` stands for a number in the event and
/// in the details.
struct Kind {
  unsigned weight;
  std::string_view category;
  std::string_view subcategory;
  std::string_view event;
  std::string_view details;
};

constexpr std::array kinds{
    Kind{30, "Command", "Started", "Draw duct", R"("ID": "duct.draw", "Location": "toolbar %")"},
    Kind{24, "Command", "Accepted", "Copy", R"("ID": "edit.copy", "Objects": "%")"},
    Kind{6, "Command", "Cancelled", "Insert branch piece", R"("ID": "duct.branch.%")"},
    Kind{10, "MemoryUsage", "Application", "Runtime", R"("Max": "4%28", "Min": "4%04")"},
    Kind{8, "Graphic", "Action", "ViewOpened",
         R"("Scale": "1:%", "Storey": "All", "View": "Schematic")"},
    Kind{6, "IssueListStorage", "Issue", "Added",
         R"("Description": "The pipe touches the cable tray", "Id": "issue-%", )"
         R"("MessageAction": "Keep a distance of % mm", "MessageCategory": "Warning", )"
         R"("MessageObject": "Pipe DN %", "ModelName": "Ground floor, ventilation %", )"
         R"("Severity": "2", "Trade": "Heating", "Type": "Collision", "State": "Open")"},
    Kind{6, "IssueListAction", "Issue", "ContextMenu",
         R"("Action": "Collapse all", "Source": "TreeControl %")"},
    Kind{5, "Save", "SaveProject", "AutoSave",
         R"("ProjectFilePath": "P:/School extension %/School.project", "Succeeded": "True")"},
    Kind{4, "Presentation", "Focused", "Floor %, ventilation", R"("Count": "1")"},
    Kind{1, "Application", "Asserted", "Floor plan",
         R"("Filename": "Application/Ventilation/DuctNetwork", "Line Number": "%")"},
};

void appendWithNumbers(std::string& text, std::string_view pattern, std::mt19937_64& random) {
  for (const char character : pattern) {
    if (character == '%') {
      text += std::to_string(random() % 10'000);
    } else {
      text += character;
    }
  }
}

const Kind& anyKind(std::mt19937_64& random) {
  auto weight = static_cast<unsigned>(random() % 100);
  const Kind* kind = kinds.data();
  while (weight >= kind->weight) {
    weight -= kind->weight;
    ++kind;
  }
  return *kind;
}

std::string guid(std::mt19937_64 random) {
  std::array<char, 40> text{};
  const std::uint64_t first = random();
  const std::uint64_t second = random();
  std::snprintf(text.data(), text.size(), "%08X-%04X-%04X-%04X-%012llX",
                static_cast<unsigned>(first >> 32U), static_cast<unsigned>(first >> 16U & 0xffffU),
                static_cast<unsigned>(first & 0xffffU), static_cast<unsigned>(second >> 48U),
                static_cast<unsigned long long>(second & 0xffffffffffffU));
  return text.data();
}

/// The members of a row that depend on its session. All identities have the same size.
std::string identity(const std::string& installation, const std::string& session, std::size_t day) {
  using namespace std::chrono;
  const year_month_day date(sys_days(2026y / July / 1) + days(day));
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", int(date.year()),
                unsigned(date.month()), unsigned(date.day()));
  return R"("InstallationId": ")" + installation + R"(", "SessionId": ")" + session +
         R"(", "Timestamp": ")" + text.data();
}

void appendRow(std::string& body, std::size_t number, std::mt19937_64& random) {
  const Kind& kind = anyKind(random);
  body.append(R"({"Category": ")").append(kind.category);
  body.append(R"(", "Subcategory": ")").append(kind.subcategory).append(R"(", "Event": ")");
  appendWithNumbers(body, kind.event, random);
  body += "\", ";
  body += identity(guid(random), guid(random), 0);
  std::array<char, 32> time{};
  std::snprintf(time.data(), time.size(), "T%02zu:%02zu:%02zu.%03zuZ\"", 7 + number / 3600 % 12,
                number / 60 % 60, number % 60, number % 1000);
  body.append(time.data()).append(R"(, "Details": {)");
  appendWithNumbers(body, kind.details, random);
  body += "}}";
}

}  // namespace

PackageTemplates::PackageTemplates(std::size_t rowsOfPackage, std::size_t earlierRows)
    : rows(rowsOfPackage), begunRows_(earlierRows) {
  std::mt19937_64 random(rowsOfPackage);  // always the same rows
  std::size_t number = 0;
  do {
    Template package{R"({"version": "3.1", "events": [)", {}};
    for (std::size_t row = 0; row < rows; ++row) {
      package.body += row == 0 ? "" : ",";
      const std::size_t begin = package.body.size();
      appendRow(package.body, number++, random);
      package.identities.push_back(package.body.find(R"("InstallationId")", begin));
    }
    package.body += "]}";
    templates_.push_back(std::move(package));
  } while (number < rowsOfSession);
}

Session::Session(const PackageTemplates& templates, std::uint64_t seed)
    : templates_(templates), random_(seed) {
  begin();
}

void Session::begin() {
  next_ = 0;
  const std::mt19937_64 installation(random_() % installations);
  const std::size_t day = templates_.begunRows_ / rowsOfDay;
  templates_.begunRows_ += templates_.templates_.size() * templates_.rows;
  identity_ = identity(guid(installation), guid(std::mt19937_64(random_())), day);
}

std::size_t Session::nextSize() const { return templates_.templates_[next_].body.size(); }

void Session::appendNext(std::string& text) {
  const auto& package = templates_.templates_[next_];
  const std::size_t start = text.size();
  text += package.body;
  for (const std::size_t position : package.identities) {
    text.replace(start + position, identity_.size(), identity_);
  }
  if (++next_ == templates_.templates_.size()) {
    begin();
  }
}

}  // namespace qel::benchmarks
