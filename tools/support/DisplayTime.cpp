#include "tools/support/DisplayTime.h"

namespace qel::support {
namespace {

std::string twoDigits(std::int64_t number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

std::string readableTime(std::string_view text) {
  std::string readable(text.substr(0, 19));
  if (readable.size() > 10 && readable[10] == 'T') {
    readable[10] = ' ';
  }
  return readable;
}

std::string readableLength(std::int64_t milliseconds) {
  if (milliseconds < 60'000) {
    return std::to_string(milliseconds / 1000) + '.' + std::to_string(milliseconds % 1000 / 100) +
           " s";
  }
  const auto minutes = milliseconds / 60'000;
  if (minutes < 60) {
    return std::to_string(minutes) + " min " + twoDigits(milliseconds / 1000 % 60) + " s";
  }
  constexpr std::int64_t minutesOfDay = 1440;
  if (minutes < minutesOfDay) {
    return std::to_string(minutes / 60) + " h " + twoDigits(minutes % 60) + " min";
  }
  return std::to_string(minutes / minutesOfDay) + " d " + twoDigits(minutes / 60 % 24) + " h";
}

}  // namespace qel::support
