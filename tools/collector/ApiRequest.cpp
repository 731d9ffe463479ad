#include "tools/collector/ApiRequest.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <set>

#include <nlohmann/json.hpp>

namespace qel::collector {
namespace {

/// Groups of parameters. A figure has a sum of them.
enum Parameters : unsigned {
  None = 0,
  Days = 1,
  Client = 2,
  Sessions = 4,
  After = 8,
  Limit = 16,
  Id = 32
};

struct Figure {
  std::string_view name;
  unsigned parameters;
};

constexpr std::array figures{
    Figure{"events-by-day", Days | Client},
    Figure{"installations-by-day", Days | Client},
    Figure{"installations-by-week", Days | Client},
    Figure{"versions", Days | Client},
    Figure{"crashes", Days | Client},
    Figure{"commands", Days | Client},
    Figure{"memory", Days | Client},
    Figure{"sessions", Days | Client | Sessions | Limit},
    Figure{"live", Days | Client | After | Limit},
    Figure{"refused", Days | Limit},
    Figure{"filters", None},
    Figure{"system", None},
    Figure{"session", Id},
};

struct Parameter {
  std::string_view name;
  unsigned group;
  std::string Filter::*member;
};

constexpr std::array textParameters{
    Parameter{"from", Days, &Filter::from},
    Parameter{"until", Days, &Filter::until},
    Parameter{"version", Client, &Filter::version},
    Parameter{"installation", Client, &Filter::installation},
    Parameter{"session", Sessions, &Filter::session},
    Parameter{"end", Sessions, &Filter::end},
    Parameter{"after", After, &Filter::after},
};

[[noreturn]] void reject(const std::string& name, const std::string& reason) {
  throw ApiError(400, name + ' ' + reason);
}

/// The value of a text that is a number as a whole; -1 for any other text.
int numberIn(std::string_view text) {
  int number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : -1;
}

void checkDay(const std::string& name, const std::string& text) {
  constexpr std::size_t length = 10;  // of YYYY-MM-DD
  const std::string_view view = text;
  const bool hasForm = text.size() == length && text[4] == '-' && text[7] == '-';
  const int year = hasForm ? numberIn(view.substr(0, 4)) : -1;
  const int month = hasForm ? numberIn(view.substr(5, 2)) : -1;
  const int day = hasForm ? numberIn(view.substr(8, 2)) : -1;
  if (year < 1 || month < 1 || day < 1 ||
      !std::chrono::year_month_day(std::chrono::year(year),
                                   std::chrono::month(static_cast<unsigned>(month)),
                                   std::chrono::day(static_cast<unsigned>(day)))
           .ok()) {
    reject(name, "is not a day of the form YYYY-MM-DD");
  }
}

void check(const std::string& name, const std::string& value) {
  if (name == "from" || name == "until") {
    checkDay(name, value);
  } else if (name == "end" && value != "crashed" && value != "stopped" && value != "unknown") {
    reject(name, "is neither crashed, stopped nor unknown");
  }
}

std::size_t limitIn(const std::string& text) {
  constexpr int most = 1000;
  const int number = numberIn(text);
  if (number < 1 || number > most) {
    reject("limit", "is not a number from 1 to 1000");
  }
  return static_cast<std::size_t>(number);
}

void setParameter(ApiRequest& request, unsigned groups, const std::string& name,
                  const std::string& value) {
  const auto* const found =
      std::find_if(textParameters.begin(), textParameters.end(), [&](const Parameter& parameter) {
        return parameter.name == name && (parameter.group & groups) != 0;
      });
  if (found != textParameters.end()) {
    if (!value.empty()) {
      check(name, value);
    }
    request.filter.*(found->member) = value;
  } else if (name == "limit" && (groups & Limit) != 0) {
    request.filter.limit = limitIn(value);
  } else if (name == "id" && (groups & Id) != 0) {
    request.id = value;
  } else {
    throw ApiError(400, request.figure + " has no parameter \"" + name + '"');
  }
}

/// Splits the text at the first occurrence of the letter. The second part is empty without it.
std::pair<std::string_view, std::string_view> split(std::string_view text, char letter) {
  const auto place = std::min(text.find(letter), text.size());
  return {text.substr(0, place), text.substr(std::min(place + 1, text.size()))};
}

int hexadecimalDigit(char letter) {
  constexpr std::string_view digits = "0123456789abcdef";
  const bool isUpper = letter >= 'A' && letter <= 'F';
  const auto place = digits.find(isUpper ? static_cast<char>(letter - 'A' + 'a') : letter);
  return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

/// A value of a query, in which "+" also stands for a blank.
std::string decodedValue(std::string_view part) {
  std::string text(part);
  std::replace(text.begin(), text.end(), '+', ' ');
  return decodedPart(text);
}

}  // namespace

std::string decodedPart(std::string_view part) {
  std::string text;
  for (std::size_t place = 0; place < part.size(); ++place) {
    if (part[place] != '%') {
      text += part[place];
      continue;
    }
    const int high = place + 2 < part.size() ? hexadecimalDigit(part[place + 1]) : -1;
    const int low = high < 0 ? -1 : hexadecimalDigit(part[place + 2]);
    if (low < 0) {
      throw ApiError(400, "the address has a malformed escape");
    }
    text += static_cast<char>(high * 16 + low);
    place += 2;
  }
  const nlohmann::json value = text;
  try {
    value.dump();  // checks the encoding
  } catch (const nlohmann::json::exception&) {
    throw ApiError(400, "the address is not UTF-8");
  }
  if (text.find('\0') != std::string::npos) {
    throw ApiError(400, "the address has a NUL");
  }
  return text;
}

ApiRequest parseApiRequest(std::string_view figure, std::string_view query) {
  constexpr std::string_view csv = ".csv";
  ApiRequest request;
  request.isCsv = figure.ends_with(csv);
  figure.remove_suffix(request.isCsv ? csv.size() : 0);
  const auto* const known =
      std::find_if(figures.begin(), figures.end(),
                   [&](const Figure& candidate) { return candidate.name == figure; });
  if (known == figures.end()) {
    throw ApiError(404, "there is no such figure");
  }
  request.figure = figure;
  std::set<std::string> names;
  for (auto rest = query; !rest.empty();) {
    const auto [part, others] = split(rest, '&');
    rest = others;
    const auto [name, value] = split(part, '=');
    const auto decodedName = decodedValue(name);
    if (!names.insert(decodedName).second) {
      reject(decodedName, "is given twice");
    }
    setParameter(request, known->parameters, decodedName, decodedValue(value));
  }
  if (!request.filter.until.empty() && request.filter.until < request.filter.from) {
    reject("until", "is before from");
  }
  if (known->parameters == Id && request.id.empty()) {
    reject("id", "is missing");
  }
  return request;
}

}  // namespace qel::collector
