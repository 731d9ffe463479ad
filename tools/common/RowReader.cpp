#include "tools/common/RowReader.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

namespace qel::tools {
namespace {

using nlohmann::json;

/// Collects the row's top-level members from the parser's events, without building a tree.
class ColumnReader : public json::json_sax_t {
 public:
  RowReading finish(bool parsed) {
    if (parsed) {
      reading_.verdict = RowVerdict::Sound;
      return std::move(reading_);
    }
    return {tooDeep_ ? RowVerdict::NestedTooDeeply : RowVerdict::NoJsonObject, {}};
  }

  bool null() override { return true; }
  bool boolean(bool /*value*/) override { return true; }
  bool number_integer(number_integer_t /*value*/) override { return true; }
  bool number_unsigned(number_unsigned_t /*value*/) override { return true; }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return true; }
  bool binary(binary_t& /*value*/) override { return true; }
  bool start_object(std::size_t /*size*/) override { return enter(); }
  bool end_object() override { return leave(); }
  bool start_array(std::size_t /*size*/) override { return enter(); }
  bool end_array() override { return leave(); }

  bool key(string_t& name) override {
    const auto* const found = std::find(columnMembers.begin(), columnMembers.end(), name);
    column_ = static_cast<std::size_t>(found - columnMembers.begin());
    return true;
  }

  bool string(string_t& value) override {
    if (depth_ == 1 && column_ < columnMembers.size() && !reading_.columns[column_]) {
      reading_.columns[column_] = std::move(value);
    }
    return true;
  }

  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const nlohmann::detail::exception& /*error*/) override {
    return false;
  }

 private:
  bool enter() {
    tooDeep_ = ++depth_ > deepestNesting;
    return !tooDeep_;
  }

  bool leave() {
    --depth_;
    return true;
  }

  RowReading reading_;
  std::size_t depth_ = 0;
  bool tooDeep_ = false;
  std::size_t column_ = columnMembers.size();
};

}  // namespace

RowReading readRow(std::string_view text) {
  // The parser would skip a byte order mark and treat a NUL as the end of its input.
  if (text.substr(0, 1) != "{" || text.find('\0') != std::string_view::npos) {
    return {};
  }
  ColumnReader reader;
  const bool parsed = json::sax_parse(text, &reader);
  return reader.finish(parsed);
}

}  // namespace qel::tools
