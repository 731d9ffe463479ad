#include "Application/Log/Analytics/Items/CrashReportItem.h"

#include <utility>

namespace qel::log::analytics::items {

CrashReportItem::CrashReportItem(std::string text) : text_(std::move(text)) {}

std::string CrashReportItem::getCategory() const { return "Application"; }

std::string CrashReportItem::getSubCategory() const { return "Crash Report"; }

std::string CrashReportItem::getEvent() const { return text_; }

std::map<std::string, std::string> CrashReportItem::getDetails() const { return {}; }

}  // namespace qel::log::analytics::items
