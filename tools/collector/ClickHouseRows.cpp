#include "tools/collector/ClickHouseRows.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "tools/collector/ClickHouseSchema.h"
#include "tools/collector/JsonMembers.h"
#include "tools/collector/RowKey.h"
#include "tools/records/Moment.h"

namespace qel::collector {
namespace {

using std::chrono::milliseconds;

constexpr std::int64_t millisecondsOfDay = 24LL * 60 * 60 * 1000;
constexpr std::int64_t lastSecond = std::numeric_limits<std::uint32_t>::max();

/// The members of `tools::Columns`.
enum Member : std::size_t { Session, Installation, Time, Category, Subcategory, Event };

/// Appends a number in `Size` bytes, the lowest first.
template <std::size_t Size>
void appendNumber(std::string& rows, std::uint64_t number) {
  for (std::size_t byte = 0; byte < Size; ++byte) {
    rows += static_cast<char>(number >> (8 * byte) & 0xff);
  }
}

/// Appends a length in groups of seven bits, the lowest first.
void appendLength(std::string& rows, std::size_t length) {
  for (; length > 127; length >>= 7) {
    rows += static_cast<char>(length | 128);
  }
  rows += static_cast<char>(length);
}

void appendText(std::string& rows, std::string_view text) {
  appendLength(rows, text.size());
  rows.append(text);
}

void appendMember(std::string& rows, const Row& row, Member member) {
  const auto& value = row.columns[member];
  appendText(rows, value ? std::string_view(*value) : std::string_view());
}

/// Appends a time in whole seconds, and the rest in milliseconds.
void appendTime(std::string& rows, std::int64_t time) {
  appendNumber<4>(rows, static_cast<std::uint64_t>(time / 1000));
  appendNumber<2>(rows, static_cast<std::uint64_t>(time % 1000));
}

/// A time as ClickHouse can store it. It has no time before 1970 or after 2106.
std::int64_t limited(std::int64_t time) {
  return std::clamp<std::int64_t>(time, 0, lastSecond * 1000);
}

/// The columns that all tables have.
void appendCommon(std::string& rows, const Sha256& key, std::string_view text, std::size_t count,
                  const Origin& origin, std::uint32_t place) {
  const auto received =
      limited(std::chrono::floor<milliseconds>(origin.received.time_since_epoch()).count());
  rows.append(bytesOf(key).substr(0, clickHouseKeySize));
  appendTime(rows, received);
  appendNumber<4>(rows, place);
  appendText(rows, origin.user);
  appendNumber<4>(rows, count);
  appendNumber<8>(rows, static_cast<std::uint64_t>(count) << 32 |
                            static_cast<std::uint64_t>(lastSecond - received / 1000));
  appendText(rows, text);
}

/// The columns that events and environments have. Dates that no client can mean would fill foreign
/// partitions, so they count as none.
void appendRecord(std::string& rows, const Row& row, const Origin& origin, std::uint32_t place) {
  const auto& session = row.columns[Session];
  const auto name = session ? std::optional<std::string_view>(*session) : std::nullopt;
  appendCommon(rows, keyOf(name, sha256(row.text)), row.text, row.count, origin, place);
  appendMember(rows, row, Session);
  appendMember(rows, row, Installation);
  const auto time = records::millisecondsOf(row.columns[Time].value_or(""));
  const std::int64_t storable = time && *time == limited(*time) ? *time : 0;
  appendNumber<2>(rows, static_cast<std::uint64_t>(storable / millisecondsOfDay));
  appendTime(rows, storable);
}

}  // namespace

void ClickHouseRows::addEvent(const Row& row, const Origin& origin) {
  appendRecord(events_, row, origin, place_++);
  appendMember(events_, row, Category);
  appendMember(events_, row, Subcategory);
  appendMember(events_, row, Event);
  addDetails(row.text);
}

void ClickHouseRows::addDetails(std::string_view text) {
  std::size_t count = 0;
  keys_.clear();
  values_.clear();
  if (const auto details = findMember(text, "\"Details\"", '{')) {
    for (JsonMembers members(*details); members.next(); ++count) {
      appendText(keys_, textOf(members.name(), storage_));
      appendText(values_, textOf(members.value(), storage_));
    }
  }
  for (const auto* const texts : {&keys_, &values_}) {
    appendLength(events_, count);
    events_ += *texts;
  }
}

void ClickHouseRows::addEnvironment(const Row& row, const Origin& origin) {
  appendRecord(environments_, row, origin, place_++);
  const auto program = findMember(row.text, "\"CurrentActiveApplication\"", '{');
  const auto version = program ? findMember(*program, "\"Version\"", '"') : std::nullopt;
  appendText(environments_, version ? textOf(*version, storage_) : std::string_view());
}

void ClickHouseRows::addRefused(const RefusedText& text, const Origin& origin) {
  appendCommon(refused_, sha256(text.text), text.text, text.count, origin, place_++);
  appendText(refused_, text.reason);
}

void ClickHouseRows::clear() {
  events_.clear();
  environments_.clear();
  refused_.clear();
}

}  // namespace qel::collector
