#include "tools/collector/PackageSplitter.h"

namespace qel::collector {
namespace {

std::string_view withoutBlanks(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

class Splitter {
 public:
  Splitter(std::string_view body, std::size_t mostRows) : body_(body), rowsLeft_(mostRows) {}

  std::optional<SplitPackage> split() {
    for (; position_ < body_.size(); ++position_) {
      if (!step(body_[position_])) {
        return std::nullopt;
      }
    }
    if (depth_ != 0) {
      return std::nullopt;
    }
    result_.frame += body_.substr(frameBegin_);
    return std::move(result_);
  }

 private:
  bool step(char character) {
    switch (character) {
      case '"':
        return skipString();
      case '{':
      case '[':
        if (depth_ == 1 && character == '[') {
          beginList();
        }
        ++depth_;
        return true;
      case '}':
      case ']':
        if (depth_ == 0) {
          return false;
        }
        --depth_;
        return depth_ != 1 || !inList_ || (character == ']' && endList());
      case ',':
        return depth_ != 2 || !inList_ || endRow();
      default:
        return true;
    }
  }

  bool skipString() {
    for (++position_; position_ < body_.size() && body_[position_] != '"'; ++position_) {
      if (body_[position_] == '\\') {
        ++position_;
      }
    }
    return position_ < body_.size();
  }

  void beginList() {
    result_.lists.emplace_back();
    result_.frame += body_.substr(frameBegin_, position_ + 1 - frameBegin_);
    rowBegin_ = position_ + 1;
    inList_ = true;
  }

  bool endList() {
    inList_ = false;
    frameBegin_ = position_;
    return endRow();
  }

  bool endRow() {
    const auto row = withoutBlanks(body_.substr(rowBegin_, position_ - rowBegin_));
    rowBegin_ = position_ + 1;
    if (row.empty()) {
      return true;
    }
    if (rowsLeft_ == 0) {
      return false;
    }
    --rowsLeft_;
    result_.lists.back().push_back(row);
    return true;
  }

  const std::string_view body_;
  std::size_t rowsLeft_;
  std::size_t position_ = 0;
  std::size_t depth_ = 0;
  bool inList_ = false;
  std::size_t frameBegin_ = 0;
  std::size_t rowBegin_ = 0;
  SplitPackage result_;
};

}  // namespace

std::optional<SplitPackage> splitPackage(std::string_view body, std::size_t mostRows) {
  return Splitter(body, mostRows).split();
}

}  // namespace qel::collector
