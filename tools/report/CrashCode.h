#pragma once

#include <string>
#include <string_view>

namespace qel::report {

/// A recorded exception code in hexadecimal, with the common name of a Windows code or of a POSIX
/// signal: "0xC0000005, access violation". A text that is no code is returned unchanged. The result
/// is empty for 0, which means that no code was recorded.
std::string crashCodeText(std::string_view code);

}  // namespace qel::report
