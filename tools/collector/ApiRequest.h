#pragma once

#include <string>
#include <string_view>

#include "host/QelUtilities/Exception.h"
#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// What a request of the page's interface asks for.
struct ApiRequest {
  std::string figure;
  bool isCsv = false;
  Filter filter;
  std::string id;  ///< of the session; only for the figure "session"
};

/// The request is not acceptable. The message names the reason.
class ApiError : public qel::exception {
 public:
  ApiError(int httpStatus, const std::string& reason) : exception(reason), status(httpStatus) {}

  const int status;
};

/// Parses a request. `figure` is the path after "/api/", and `query` is what follows "?". Throws
/// `ApiError`.
ApiRequest parseApiRequest(std::string_view figure, std::string_view query);

/// The text of a part of an address in which "%20" stands for a blank. Throws `ApiError` if an
/// escape is malformed, or the text has a NUL or is not UTF-8.
std::string decodedPart(std::string_view part);

}  // namespace qel::collector
